#pragma once

#include "files/lines.h"
#include "files/result.h"

#include <QByteArray>
#include <QDate>

#include <filesystem>

namespace quorvel::site {

/// A file to which readings are appended as lines; with a header row when it is new. A kill at any moment leaves whole
/// lines, and what a crash of the machine cut off gets its end before the next line.
class ReadingLog {
public:
    struct Form {
        QByteArray header;  ///< row that a new file begins with, line end included; may be empty
        bool daily = false; ///< each local day has a file of its own, see fileOf()
    };

    ReadingLog(std::filesystem::path path, Form form) : path_(std::move(path)), form_(std::move(form)) {}

    /// Appends lines of a day, which are on the disk afterwards. Fails with the reason, and tries to open the file again
    /// at the next call.
    files::Status append(const QDate& day, const QByteArray& lines);

    /// The file of a day: the path itself, or for "site.csv" and daily files "site.2024-05-17.csv".
    std::filesystem::path fileOf(const QDate& day) const;

private:
    std::filesystem::path path_;
    Form form_;
    files::LineFile file_;
};

} // namespace quorvel::site
