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
        rows_.Fields(kTimeField).SetValue(record.time);
        for (std::size_t i = 0; i < layout_.readings; ++i) {
            rows_.Fields(kReadings[i].field).SetValue(record.readings[i]);
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
    table.Append(jet::TableDef::CreateField(kTimeField, jet::FieldType::Date));
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
    return std::unique_ptr<RecordSink>(
        std::make_unique<MdbFile>(std::move(*database), std::move(*rows), layout));
}

} // namespace

const TableFormat kMdbFormat{makeEmptyMdb, openMdb};

} // namespace quorvel::autoread
