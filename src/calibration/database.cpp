#include "calibration/database.h"

#include "calibration/records.h"
#include "files/name.h"
#include "files/replace.h"

#include <algorithm>
#include <optional>

namespace quorvel::calibration {

namespace {

using jet::FieldDef;
using jet::FieldType;
using std::filesystem::path;

constexpr int kMostPoints = 32768;         // numbers from 0 on that an Integer holds
constexpr auto kUnreadable = "unreadable"; // mark of a working file that is kept although it cannot be read

/// The direction that a path names in the ten characters before its last four; null for none.
const DirectionRow* directionNamed(const path& file)
{
    const auto text = file.generic_string();
    constexpr std::size_t kName = 10;
    constexpr std::size_t kEndingLength = 4;
    if (text.size() < kName + kEndingLength) return nullptr;
    const auto name = text.substr(text.size() - kName - kEndingLength, kName);
    return name.ends_with("Direction") ? directionOf(QString(QLatin1Char(name.front()))) : nullptr;
}

/// @param direction  null: no columns of readings
jet::TableDef newTable(const DirectionRow* direction)
{
    auto table = jet::Database::CreateTableDef(std::string(kTable));
    table.Append(table.CreateField(std::string(kNumberName), FieldType::Integer));
    table.Append(table.CreateField(std::string(kDialName), FieldType::Single));
    if (direction) {
        for (const auto& reading : direction->readings) {
            table.Append(table.CreateField(std::string(reading.name), FieldType::Single));
        }
    }
    return table;
}

jet::Status addPoint(jet::Recordset& rows, int number)
{
    rows.AddNew();
    if (auto done = rows.Update(); !done) return done;
    if (auto done = rows.SetBookmark(rows.LastModified()); !done) return done;
    rows.Edit();
    rows.Fields(kNumberName).SetValue(static_cast<std::int16_t>(number));
    return rows.Update();
}

jet::Status createFile(const DirectionRow* direction, const path& file)
{
    auto database = jet::CreateDatabase(file, jet::kGeneralLocale);
    if (!database) return database.failure();
    if (auto done = database->Append(newTable(direction)); !done) return done;
    auto rows = database->OpenRecordset(kTable);
    if (!rows) return rows.failure();
    for (int number = 0; number < kPoints; ++number) {
        if (auto done = addPoint(*rows, number); !done) return done;
    }
    return database->Close();
}

bool isNumeric(FieldType type)
{
    constexpr FieldType kNumeric[] = {FieldType::Byte,   FieldType::Integer, FieldType::Long,
                                      FieldType::Single, FieldType::Double,  FieldType::Currency,
                                      FieldType::Numeric};
    return std::find(std::begin(kNumeric), std::end(kNumeric), type) != std::end(kNumeric);
}

bool isCalibration(const std::vector<FieldDef>& fields)
{
    return fields.size() > kReadingColumn && columnOf(fields, kNumberName) == kNumberColumn &&
           columnOf(fields, kDialName) == kDialColumn && isReadingColumn(fields[kReadingColumn].name) &&
           std::all_of(fields.begin(), fields.begin() + kReadingColumn + 1,
                       [](const FieldDef& field) { return isNumeric(field.type); });
}

/// The type under which a column is written anew; nothing for one that holds no numbers.
std::optional<FieldType> writtenType(FieldType type)
{
    constexpr FieldType kWritten[] = {FieldType::Integer, FieldType::Long, FieldType::Single,
                                      FieldType::Double, FieldType::Date};
    if (std::find(std::begin(kWritten), std::end(kWritten), type) != std::end(kWritten)) return type;
    return isNumeric(type) ? std::optional(FieldType::Double) : std::nullopt;
}

jet::Status copyRows(jet::Recordset& from, jet::Recordset& to, const jet::TableDef& table)
{
    auto moved = from.MoveFirst();
    for (; moved && !from.Eof(); moved = from.MoveNext()) {
        to.AddNew();
        for (const auto& field : table.Fields()) {
            to.Fields(field.name).SetValue(from.Fields(field.name).Value());
        }
        if (auto done = to.Update(); !done) return done;
    }
    return moved;
}

jet::Status writeAnew(jet::Database& database, const path& file, const path& fresh)
{
    const auto fields = calibrationFields(database, file);
    if (!fields) return fields.failure();
    auto made = jet::CreateDatabase(fresh, jet::kGeneralLocale);
    if (!made) return made.failure();
    auto table = jet::Database::CreateTableDef(std::string(kTable));
    for (const auto& field : *fields) {
        if (const auto type = writtenType(field.type)) table.Append(table.CreateField(field.name, *type));
    }
    if (auto done = made->Append(table); !done) return done;
    auto from = database.OpenRecordset(kRecordSource);
    auto to = made->OpenRecordset(kTable);
    if (!from) return from.failure();
    if (!to) return to.failure();
    if (auto complete = from->Complete(); !complete) return complete;
    if (auto done = copyRows(*from, *to, table); !done) return done;
    return made->Close();
}

/// A working file that is a link which leads in a circle has nothing to be replaced: it gets another name.
/// @return that name; empty for any other working file.
jet::Result<path> setCircleAside(const path& working)
{
    return files::targetOf(working) ? path() : files::setAside(working, kUnreadable);
}

/// Words about reading columns that the direction counts on and the file lacks; empty when it has all.
std::string lacking(const std::vector<FieldDef>& fields, const DirectionRow& direction, const path& chosen)
{
    std::string missing;
    for (const auto& reading : direction.readings) {
        if (columnOf(fields, reading.name) >= 0) continue;
        missing += (missing.empty() ? "" : " and ") + std::string(reading.name);
    }
    if (missing.empty()) return {};
    return "Loaded, but " + files::inWords(chosen) + " is of another direction: it has the readings " +
           fields[kReadingColumn].name + ", not " + missing + ". It can be fitted, not downloaded.";
}

} // namespace

jet::Status CreateCalibrationDatabase(const path& file) { return createFile(directionNamed(file), file); }

jet::Status createTableOf(const DirectionRow& direction, const path& file)
{
    return createFile(&direction, file);
}

jet::Result<std::vector<FieldDef>> calibrationFields(const jet::Database& database, const path& file)
{
    auto fields = database.Fields(kTable);
    if (fields && !isCalibration(*fields)) {
        return jet::Failure{files::inWords(file) +
                            " has a table Calibration that does not begin with the columns SN, "
                            "Rule_Data and X_Data, Y_Data or Z1_Data, all of numbers. Choose "
                            "another file."};
    }
    return fields;
}

jet::Result<jet::Recordset> openPoints(jet::Database& database, const path& file)
{
    auto rows = database.OpenRecordset(kRecordSource);
    if (rows && rows->RecordCount() > kMostPoints) {
        return jet::Failure{files::inWords(file) + " has more than " + std::to_string(kMostPoints) +
                            " points. Choose another file."};
    }
    return rows;
}

jet::Result<std::vector<FieldDef>> checkCalibrationFile(const path& file)
{
    auto database = jet::OpenDatabase(file, {.access = jet::Access::ReadOnly});
    if (!database) return database.failure();
    auto fields = calibrationFields(*database, file);
    if (!fields) return fields;
    auto rows = openPoints(*database, file);
    if (!rows) return rows.failure();
    if (const auto complete = rows->Complete(); !complete) return complete.failure();
    auto moved = rows->MoveFirst();
    while (moved && !rows->Eof()) {
        moved = rows->MoveNext();
    }
    if (!moved) return moved.failure();
    return fields;
}

jet::Result<path> renewFormat(jet::Database& database, const path& file)
{
    const auto make = [&](const path& fresh) { return writeAnew(database, file, fresh); };
    // It was only read, so nothing is lost when closing fails.
    const auto letGo = [&database] { static_cast<void>(static_cast<bool>(database.Close())); };
    auto kept = files::replaceFile(file, make, {.keepAs = "older", .lockedByUs = true, .letGo = letGo});
    // Open until here: its lock keeps other programs from writing what is about to be replaced.
    if (kept) letGo();
    return kept;
}

jet::Result<std::string> loadWorkingFile(const path& chosen, const path& working,
                                         const DirectionRow& direction, std::time_t now)
{
    const auto fields = checkCalibrationFile(chosen);
    if (!fields) return fields.failure();
    const bool readable = static_cast<bool>(checkCalibrationFile(working));
    auto kept = setCircleAside(working);
    if (!kept) return kept.failure();
    const auto mark = readable ? files::dateMark(now) : std::string(kUnreadable);
    const auto copied = files::replaceByCopy(chosen, working, {.keepAs = mark});
    if (!copied) return copied.failure();
    if (kept->empty()) *kept = *copied;
    std::string words = lacking(*fields, direction, chosen);
    if (kept->empty()) return words;
    if (words.empty()) words = "Loaded " + files::inWords(chosen) + ".";
    return words +
           (readable ? " The points that were there are kept as " : " What could not be read is kept as ") +
           files::inWords(*kept) + ".";
}

} // namespace quorvel::calibration
