#pragma once

#include "jet/recordset.h"
#include "jet/result.h"
#include "jet/value.h"

#include <filesystem>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

/// Access database files (.mdb). Jet 4 files are written; Jet 3 and Jet 4 files are read.
///
///     auto made = jet::CreateDatabase(path, jet::kGeneralLocale);
///     if (!made) return say(made.error());
///     auto table = made->CreateTableDef("data");
///     table.Append(table.CreateField("time", jet::FieldType::Date));
///     table.Append(table.CreateField("x", jet::FieldType::Single));
///     if (auto done = made->Append(table); !done) return say(done.error());
///     if (auto done = made->Close(); !done) return say(done.error());
///
///     auto opened = jet::OpenDatabase(path, {.durability = jet::Durability::EachUpdate});
///     if (!opened) return say(opened.error());
///     auto rows = opened->OpenRecordset("select * from data order by time");
///     if (!rows) return say(rows.error());
///     rows->AddNew();
///     rows->Fields("x").SetValue(1.5);
///     if (auto done = rows->Update(); !done) return say(done.error());
///
/// Nothing here throws, and nothing is safe to use from two threads at a time.
namespace quorvel::jet {

class File;
class Files;
class Store;

/// The locale of every new database: general sort order, English, code page 1252.
inline constexpr std::string_view kGeneralLocale = ";LANGID=0x0409;CP=1252;COUNTRY=0";

/// When a written row is safe from a power cut. From a killed program it is safe as soon as Update() returns true,
/// in both cases.
enum class Durability {
    AtClose,    ///< the file is flushed to the disk once, by Close()
    EachUpdate, ///< each Update() and Delete() flushes before it returns
};

enum class Access {
    ReadWrite, ///< other writers are refused while the database is open
    ReadOnly,  ///< nothing is ever written, not even a repair
};

struct OpenOptions {
    Access access = Access::ReadWrite;
    Durability durability = Durability::AtClose;
    Files* files = nullptr; ///< where the file lies; null: on this machine's disks
};

/// One column to be.
struct FieldDef {
    std::string name;
    FieldType type = FieldType::Integer;
};

/// A table to be: its name and its columns in their order.
class TableDef {
public:
    explicit TableDef(std::string name) : name_(std::move(name)) {}

    static FieldDef CreateField(std::string name, FieldType type) { return {std::move(name), type}; }

    /// Adds a column at the end. Names and types are checked when the table is appended to its database.
    void Append(FieldDef field) { fields_.push_back(std::move(field)); }

    const std::string& Name() const { return name_; }
    const std::vector<FieldDef>& Fields() const { return fields_; }

private:
    std::string name_;
    std::vector<FieldDef> fields_;
};

/// What a listing shows of a table.
struct TableInfo {
    std::string name;    ///< UTF-8
    bool system = false; ///< one of the engine's own tables
};

/// An open database. A database that CreateDatabase() made is in the making until Close(): it lies under a
/// temporary name in the same folder, its tables can be filled, and Close() gives it its name when all of it is on
/// the disk. Dropped without Close(), a database in the making vanishes without a trace; an opened one keeps every
/// row that Update() reported as written.
class Database {
public:
    Database(Database&&) noexcept;
    Database& operator=(Database&&) noexcept;
    ~Database();

    static TableDef CreateTableDef(std::string name) { return TableDef(std::move(name)); }

    /// Adds a table. Fails on an opened database and once a recordset of the new one is open (tables first, then
    /// rows); on a table or column name that is empty, longer than 64 characters, already there (case does not
    /// matter) or holds characters that Access refuses; on a table name with other characters than A-Z a-z 0-9,
    /// blank, "-" and "_"; on a type that is not written; on no column or more than 255.
    Status Append(const TableDef& table);

    /// Opens the rows of a table, given by its name or by "select * from T order by F" (keywords and names in any
    /// case; names may stand in brackets; "asc" and "desc", several columns and a final ";" are understood). The
    /// recordset stands on the first row. Rows without order come in the order in which they were written.
    ///
    /// On a database opened for writing this repairs what a crash of an earlier writer left behind.
    ///
    /// Fails when there is no such table or column, when the text is no such query, and when the table is damaged.
    Result<Recordset> OpenRecordset(std::string_view source);

    /// The tables in catalog order, without links to other files and without queries.
    Result<std::vector<TableInfo>> Tables() const;

    /// The columns of a table in display order. Fails as OpenRecordset() does.
    Result<std::vector<FieldDef>> Fields(std::string_view table) const;

    /// Ends all recordsets of this database, flushes what was written to the disk, and gives a new database its
    /// name. A second Close() does nothing and succeeds.
    ///
    /// Fails when the disk is full or gone, and, for a new database, when a file of that name has appeared
    /// meanwhile (it is left as it is). A new database that failed is removed.
    Status Close();

private:
    friend Result<Database> CreateDatabase(const std::filesystem::path&, std::string_view, Files*);
    friend Result<Database> OpenDatabase(const std::filesystem::path&, OpenOptions);
    friend Result<Database> openDatabaseOn(std::unique_ptr<File>, const std::filesystem::path&, OpenOptions);
    explicit Database(std::shared_ptr<Store> store);
    Result<Recordset> rowsOf(std::string_view source);

    std::shared_ptr<Store> store_;
};

/// Begins a new database. Nothing appears under `path` before Close().
///
/// @param locale  kGeneralLocale; nothing else can be written.
/// @return        fails when anything of that name exists, and when the folder is missing or not writable.
Result<Database> CreateDatabase(const std::filesystem::path& path, std::string_view locale,
                                Files* files = nullptr);

/// Opens an existing database. A file that may only be read is opened all the same; its recordsets then refuse to
/// write and say why (Recordset::Updatable()).
///
/// @return fails when the file is missing, cut off, garbled, encoded, protected by a database password, made by
///         another program or a later Access version, and, for writing, when another program has it open.
Result<Database> OpenDatabase(const std::filesystem::path& path, OpenOptions options = {});

} // namespace quorvel::jet
