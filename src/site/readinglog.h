#pragma once

#include "files/lines.h"
#include "files/result.h"

#include <QByteArray>
#include <QDate>

#include <deque>
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

    /// Appends lines of a day, behind what waits: a program that is killed afterwards leaves them. Fails with the reason;
    /// the lines then wait, and are written before the next ones as soon as the file takes them. Beyond kMostWaiting the
    /// oldest are lost.
    files::Status append(const QDate& day, const QByteArray& lines);
    /// Tries what waits once more, and returns when what was written is on the disk.
    files::Status flush();
    static constexpr qsizetype kMostWaiting = 4'000'000; ///< bytes

    /// The file of a day: the path itself, or for "site.csv" and daily files "site.2024-05-17.csv".
    std::filesystem::path fileOf(const QDate& day) const;

private:
    struct Lines {
        QDate day;
        QByteArray text;
    };

    files::Status writeWaiting();
    files::Status write(const Lines& lines);
    void keepWithinLimit();

    std::filesystem::path path_;
    Form form_;
    files::LineFile file_;
    std::deque<Lines> waiting_;
};

} // namespace quorvel::site
