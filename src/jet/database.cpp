#include "jet/database.h"

#include "jet/border.h"
#include "jet/query.h"
#include "jet/recordset_rows.h"
#include "jet/store.h"

namespace quorvel::jet {

Database::Database(Database&&) noexcept = default;

Database& Database::operator=(Database&& other) noexcept
{
    std::swap(store_, other.store_);
    return *this;
}

Database::Database(std::shared_ptr<Store> store) : store_(std::move(store)) {}

Database::~Database()
{
    // A recordset may outlive its database; it must not keep the file.
    if (store_) store_->abandon();
}

Status Database::Append(const TableDef& table)
{
    return atBorder(store_->path(), [&] { return store_->append(table); });
}

Result<Recordset> Database::OpenRecordset(std::string_view source)
{
    return atBorder(store_->path(), [&] { return rowsOf(source); });
}

Result<Recordset> Database::rowsOf(std::string_view source)
{
    if (auto ready = store_->ready(); !ready) return ready.failure();
    Query query{std::string(bareName(source)), {}};
    if (!store_->hasTable(query.table)) {
        if (auto parsed = parseQuery(source)) query = std::move(*parsed);
    }
    const auto table = store_->table(query.table);
    if (!table) return table.failure();
    auto rows = RecordsetRows::open(store_, **table, query);
    if (!rows) return rows.failure();
    Recordset recordset(std::move(*rows));
    static_cast<void>(static_cast<bool>(recordset.MoveFirst()));
    return recordset;
}

Result<std::vector<TableInfo>> Database::Tables() const
{
    return atBorder(store_->path(), [&]() -> Result<std::vector<TableInfo>> {
        if (auto ready = store_->ready(); !ready) return ready.failure();
        return store_->tables();
    });
}

Result<std::vector<FieldDef>> Database::Fields(std::string_view table) const
{
    return atBorder(store_->path(), [&]() -> Result<std::vector<FieldDef>> {
        const auto opened = store_->table(bareName(table));
        if (!opened) return opened.failure();
        std::vector<FieldDef> fields;
        for (const auto& column : (*opened)->table->definition().columns) {
            fields.push_back({column.name, fieldType(column)});
        }
        return fields;
    });
}

Status Database::Close()
{
    return atBorder(store_->path(), [&] { return store_->close(); });
}

Result<Database> CreateDatabase(const std::filesystem::path& path, std::string_view locale, Files* files)
{
    if (locale != kGeneralLocale) {
        return Failure{"A database is created with the locale \"" + std::string(kGeneralLocale) + "\" only."};
    }
    auto store = atBorder(path, [&] { return Store::create(path, files != nullptr ? *files : diskFiles()); });
    if (!store) return store.failure();
    return Database(std::move(*store));
}

Result<Database> OpenDatabase(const std::filesystem::path& path, OpenOptions options)
{
    auto store = atBorder(path, [&] { return Store::open(path, options); });
    if (!store) return store.failure();
    return Database(std::move(*store));
}

Result<Database> openDatabaseOn(std::unique_ptr<File> file, const std::filesystem::path& path,
                                OpenOptions options)
{
    auto store = atBorder(path, [&] { return Store::openFile(std::move(file), path, options, ""); });
    if (!store) return store.failure();
    return Database(std::move(*store));
}

} // namespace quorvel::jet
