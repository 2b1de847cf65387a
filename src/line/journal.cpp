#include "line/journal.h"

#include "files/disk.h"
#include "files/name.h"
#include "line/linefile.h"
#include "link/bytes.h"
#include "link/program_folder.h"
#include "protocol/meaning.h"

#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QJsonDocument>
#include <QJsonObject>
#include <QLockFile>

#include <ctime>

namespace quorvel::line {

namespace {

using protocol::CommandId;

constexpr int kLockPatience = 500; // ms
constexpr std::size_t kAddressAt = 1;
constexpr std::size_t kAddressDigits = 2;

/// What asks for a value, and what sets it.
struct Pair {
    CommandId set;
    CommandId query;
};
constexpr Pair kPairs[] = {
    {CommandId::SetClock, CommandId::QueryClock},
    {CommandId::SetInterval, CommandId::QueryMode},
    {CommandId::SetWire, CommandId::QueryWire},
    {CommandId::SetOffsetX, CommandId::QueryOffsetX},
    {CommandId::SetOffsetY, CommandId::QueryOffsetY},
    {CommandId::SetOffsetZ, CommandId::QueryOffsetZ},
    {CommandId::SetFeature, CommandId::QueryFeature},
    {CommandId::SetSwap, CommandId::QuerySwap},
    {CommandId::SetInvertX, CommandId::QueryInvertX},
    {CommandId::SetInvertY, CommandId::QueryInvertY},
    {CommandId::SetInvertZ, CommandId::QueryInvertZ},
    {CommandId::SetStitching, CommandId::QueryStitching},
    {CommandId::DeleteRecords, CommandId::QueryPointers},
};

/// The digits of the query for what a command changes; empty when there is none.
std::string queryFor(CommandId set)
{
    for (const auto& pair : kPairs) {
        if (pair.set == set) return std::string(protocol::command(pair.query).digits);
    }
    return {};
}

std::string addressDigits(const link::Exchange& exchange)
{
    const auto& frame = exchange.transaction.frame;
    return frame.size() > kAddressAt ? frame.substr(kAddressAt, kAddressDigits) : std::string();
}

QString isoTime(const QDateTime& time)
{
    return time.toOffsetFromUtc(time.offsetFromUtc()).toString(Qt::ISODateWithMs);
}

} // namespace

Journal::Journal(std::filesystem::path file, JournalWriter writer, QObject* parent)
    : QObject(parent), file_(std::move(file)), writer_(std::move(writer))
{}

void Journal::ended(const link::Exchange& exchange)
{
    const auto kind = exchange.transaction.kind;
    if (kind == link::Kind::Query) return learn(exchange);
    const bool changes = kind == link::Kind::Set || kind == link::Kind::Delete;
    if (changes && exchange.sent > 0) book(exchange);
}

void Journal::learn(const link::Exchange& exchange)
{
    if (!exchange.complete() || !link::isAnswered(exchange)) return;
    const auto* command = protocol::commandOf(exchange.reply);
    if (!command) return;
    known_[{addressDigits(exchange), std::string(command->digits)}] = protocol::parameterOf(exchange.reply);
}

void Journal::book(const link::Exchange& exchange)
{
    // null for a frame that somebody typed and nobody knows
    const auto* command = protocol::commandOf(exchange.transaction.frame);
    const auto kind = exchange.transaction.kind;
    const auto parameter = std::string(protocol::parameterOf(exchange.transaction.frame));
    const Known place{addressDigits(exchange), command ? queryFor(command->id) : std::string()};
    const auto known = known_.find(place);
    const bool confirmed = link::isConfirmed(exchange);
    const QJsonObject line{
        {"time", isoTime(exchange.begun)},
        {"port", writer_.port()},
        {"address", protocol::addressOf(exchange.transaction.frame)},
        {"kind", link::shown(protocol::nameOf(kind))},
        {"command", command ? link::shown(command->digits) : QString()},
        {"meaning", link::shown(protocol::meaningOf(exchange.transaction.frame))},
        {"old", known == known_.end() ? QJsonValue() : QJsonValue(link::shown(known->second))},
        {"new", link::shown(parameter)},
        {"frame", link::shown(exchange.transaction.frame)},
        {"reply", link::shown(exchange.reply)},
        {"outcome", link::shown(protocol::outcomeOf(exchange))},
        {"confirmed", confirmed},
        {"program", writer_.program},
        {"user", writer_.user},
    };
    // A reply that did not confirm leaves open which value holds now.
    if (confirmed && kind == link::Kind::Set && !place.second.empty()) {
        known_[place] = parameter;
    } else {
        known_.erase(place);
    }
    const auto reason = append(QJsonDocument(line).toJson(QJsonDocument::Compact) + '\n');
    const bool told = failing_;
    failing_ = !reason.isEmpty();
    if (failing_ && !told) Q_EMIT failed(reason);
}

/// One call to the system for the whole line, and a lock that all our programs ask for. It is on the disk afterwards.
QString Journal::append(const QByteArray& line)
{
    const QFileInfo place(file_);
    QDir().mkpath(place.path());
    QLockFile lock(place.filePath() + QStringLiteral(".lock"));
    const bool locked = lock.tryLock(kLockPatience);
    if (locked) setAsideWhenLong();
    QFile file(file_);
    const bool isNew = !file.exists();
    const bool written = openForLines(file) && file.write(line) == line.size();
    // What was set stays set when the power fails: so does its line.
    if (written && files::flushToDisk(file.handle())) {
        if (isNew) files::flushFolderOf(file_);
        return {};
    }
    return tr("The journal %1 cannot be written: %2. What is set is not booked.")
        .arg(place.filePath(), written ? qt_error_string() : file.errorString());
}

void Journal::setAsideWhenLong()
{
    if (QFileInfo(file_).size() < kLongest) return;
    std::error_code ignored;
    std::filesystem::rename(file_, files::freeName(file_, files::dateMark(std::time(nullptr))), ignored);
}

JournalLines readJournal(const std::filesystem::path& path)
{
    QFile file(path);
    if (!file.exists()) return {};
    QString failure;
    if (!QFileInfo(file).isFile()) {
        failure = Journal::tr("it is no file");
    } else if (file.size() > 10 * Journal::kLongest) {
        failure = Journal::tr("it is longer than any of ours");
    } else if (!file.open(QIODevice::ReadOnly)) {
        failure = file.errorString();
    }
    if (failure.isEmpty()) return readJournal(file);
    const auto reason = Journal::tr("The journal %1 cannot be read: %2.");
    return {{}, {}, reason.arg(QFileInfo(file).filePath(), failure)};
}

JournalLines readJournal(const std::filesystem::path& path, const QDateTime& since)
{
    const QFileInfo newest(path);
    const auto older = newest.completeBaseName() + QStringLiteral(".*.") + newest.suffix();
    auto files = newest.dir().entryInfoList({older}, QDir::Files, QDir::Time | QDir::Reversed);
    files.removeIf([&since](const QFileInfo& file) { return file.lastModified() < since; });
    files << newest;
    JournalLines all;
    for (const auto& file : files) {
        auto journal = readJournal(file.filesystemFilePath());
        if (!journal.failure.isEmpty()) return journal;
        for (const auto place : journal.unread)
            all.unread.push_back(all.lines.size() + place);
        all.lines.insert(all.lines.end(), journal.lines.begin(), journal.lines.end());
    }
    return all;
}

JournalLines readJournal(QIODevice& device)
{
    JournalLines journal;
    while (!device.atEnd()) {
        auto line = device.readLine(kLongestLine);
        if (line.isEmpty()) break; // the device failed
        const bool whole = line.endsWith('\n') || device.atEnd();
        while (!line.endsWith('\n') && !device.atEnd())
            line = device.readLine(kLongestLine);
        const auto json = whole ? QJsonDocument::fromJson(line) : QJsonDocument();
        if (json.isObject()) {
            journal.lines.push_back(json.object());
        } else {
            journal.unread.push_back(journal.lines.size());
        }
    }
    return journal;
}

std::filesystem::path journalFile() { return link::usersFolder() / "journal.jsonl"; }

QString userName()
{
    for (const auto* variable : {"USER", "USERNAME", "LOGNAME"}) {
        auto name = qEnvironmentVariable(variable);
        if (!name.isEmpty()) return name;
    }
    return {};
}

} // namespace quorvel::line
