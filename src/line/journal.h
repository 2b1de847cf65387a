#pragma once

#include "link/transaction.h"
#include "protocol/command.h"

#include <QJsonObject>
#include <QObject>
#include <QString>

#include <filesystem>
#include <functional>
#include <map>
#include <string>
#include <utility>
#include <vector>

class QDateTime;
class QIODevice;

namespace quorvel::line {

/// Who writes into a journal.
struct JournalWriter {
    QString program; ///< "quorvel", "quorvelctl" ...
    QString user;
    std::function<QString()> port; ///< the device that is open at the moment
};

/// The journal of writes: every frame that went out to set or delete something, as one JSON object a line. Nothing reads it
/// back to decide anything.
///
///     {"time":"2024-05-17T09:05:30.123+02:00","port":"/dev/ttyUSB0","address":5,"kind":"set","command":"71",
///      "meaning":"Set the offset of X to +1.50000","old":"+0.00000","new":"+1.50000","frame":":0571+1.50000FF\r\n",
///      "reply":":0571+1.50000FF\r\n","outcome":"complete","confirmed":true,"program":"quorvel","user":"anna"}
///
/// "old" is what the readout told when it was last asked in this run, or what was set and confirmed since; null when
/// neither is known or there is no question for it. Several programs may append at once: a line is never mixed with
/// another, not even with one that a crash cut off. A line is on the disk before the window goes on. A file that has grown to kLongest bytes gets a name with the day and is kept.
class Journal final : public QObject, public link::ExchangeObserver {
    Q_OBJECT
public:
    static constexpr qint64 kLongest = 10'000'000;

    /// @param file  is made, with its folder, at the first write.
    Journal(std::filesystem::path file, JournalWriter writer, QObject* parent = nullptr);

    const std::filesystem::path& file() const { return file_; }

    void sending(const link::Exchange& /*exchange*/) override {}
    void ended(const link::Exchange& exchange) override;

Q_SIGNALS:
    /// A line could not be written; told once until one could be again.
    void failed(const QString& reason);

private:
    using Known = std::pair<std::string, std::string>; ///< address digits, digits of the query

    void learn(const link::Exchange& exchange);
    void book(const link::Exchange& exchange);
    QString append(const QByteArray& line);
    void setAsideWhenLong();

    std::filesystem::path file_;
    JournalWriter writer_;
    std::map<Known, std::string> known_;
    bool failing_ = false;
};

/// What a journal holds. What another program or a hand has left there may be anything.
struct JournalLines {
    std::vector<QJsonObject> lines; ///< in the order of the file
    /// One for each line that is not an object, or longer than kLongestLine: how many were read before it.
    std::vector<std::size_t> unread;
    QString failure; ///< why the file could not be read; empty also when there is no such file
};
inline constexpr qint64 kLongestLine = 65'536; ///< bytes, the line feed included; ours have a few hundred

/// All lines of a file, or why there are none: no file of ours is longer than ten times Journal::kLongest, and only a file
/// is read, no device.
JournalLines readJournal(const std::filesystem::path& file);
/// The same with the lines of the files before it that have been set aside since a moment.
JournalLines readJournal(const std::filesystem::path& file, const QDateTime& since);
/// From where an open device stands to its end.
JournalLines readJournal(QIODevice& device);

/// Where the journal of this user is: in the folder that all our programs share.
std::filesystem::path journalFile();

/// The user who runs the program, as the system calls him.
QString userName();

} // namespace quorvel::line
