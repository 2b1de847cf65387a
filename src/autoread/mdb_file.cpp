#include "autoread/table_format.h"
#include "jet/database.h"

namespace quorvel::autoread {

namespace {

class MdbFile final : public RecordSink {
public:
    MdbFile(jet::Database database, jet::Recordset rows, const RecordLayout& layout)
        : database_(std::move(database)), rows_(std::move(rows)), layout_(layout)
    {}

    // One update for the whole row: a program killed between an empty row and its values would leave a reading
    // that never was.
    jet::Status append(const Record& record) override
    {
        rows_.AddNew();
        rows_.Fields(protocol::kTimeName).SetValue(record.time ? jet::Value(*record.time) : jet::kNull);
        for (std::size_t i = 0; i < layout_.readings; ++i) {
            const auto& reading = record.readings[i];
            rows_.Fields(kReadings[i].field).SetValue(reading ? jet::Value(*reading) : jet::kNull);
        }
        return rows_.Update();
    }

    jet::Status close() override
    {
        rows_.Close();
        return database_.Close();
    }

private:
    jet::Database database_;
    jet::Recordset rows_;
    RecordLayout layout_;
};

jet::Status makeEmptyMdb(const std::filesystem::path& path, const RecordLayout& layout)
{
    auto database = jet::CreateDatabase(path, jet::kGeneralLocale);
    if (!database) return database.failure();
    auto table = jet::Database::CreateTableDef(kTableName);
    table.Append(jet::TableDef::CreateField(std::string(protocol::kTimeName), jet::FieldType::Date));
    for (std::size_t i = 0; i < layout.readings; ++i) {
        table.Append(jet::TableDef::CreateField(std::string(kReadings[i].field), jet::FieldType::Single));
    }
    if (auto appended = database->Append(table); !appended) return appended;
    return database->Close();
}

jet::Result<std::unique_ptr<RecordSink>> openMdb(const std::filesystem::path& path,
                                                 const RecordLayout& layout)
{
    auto database = jet::OpenDatabase(path, {.durability = jet::Durability::EachUpdate});
    if (!database) return database.failure();
    auto rows = database->OpenRecordset("select * from data order by time");
    if (!rows) return rows.failure();
    if (const auto writable = rows->Updatable(); !writable) return writable.failure();
    return std::unique_ptr<RecordSink>(
        std::make_unique<MdbFile>(std::move(*database), std::move(*rows), layout));
}

std::optional<RecordLayout> layoutIn(const jet::Database& database)
{
    const auto fields = database.Fields(kTableName);
    if (!fields) return std::nullopt;
    std::vector<std::string> columns;
    for (const auto& field : *fields) {
        const bool isTime = field.name == protocol::kTimeName;
        const bool fits = isTime
                              ? field.type == jet::FieldType::Date
                              : field.type == jet::FieldType::Single || field.type == jet::FieldType::Double;
        columns.push_back(fits ? field.name : std::string());
    }
    return layoutOfColumns(columns);
}

Record recordIn(jet::Recordset& rows, const RecordLayout& layout)
{
    Record record{rows.Fields(0).Value().date(), {}};
    for (std::size_t i = 0; i < layout.readings; ++i) {
        const auto number = rows.Fields(static_cast<int>(i) + 1).Value().number();
        if (number) record.readings[i] = protocol::asReading(*number);
    }
    return record;
}

jet::Result<RecordTable> readMdb(const std::filesystem::path& path)
{
    auto database = jet::OpenDatabase(path, {.access = jet::Access::ReadOnly});
    if (!database) return database.failure();
    const auto layout = layoutIn(*database);
    if (!layout) return anotherTable(path);
    auto rows = database->OpenRecordset(kTableName);
    if (!rows) return rows.failure();
    if (const auto complete = rows->Complete(); !complete) return complete.failure();
    RecordTable table{*layout, {}, false};
    auto moved = rows->MoveFirst();
    while (moved && !rows->Eof()) {
        table.rows.push_back(recordIn(*rows, *layout));
        moved = rows->MoveNext();
    }
    if (!moved) return moved.failure();
    return table;
}

} // namespace

const TableFormat kMdbFormat{makeEmptyMdb, openMdb, readMdb};

} // namespace quorvel::autoread
