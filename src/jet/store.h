#pragma once

#include "jet/database.h"
#include "jet/header.h"
#include "jet/new_file.h"
#include "jet/pager.h"
#include "jet/table.h"

#include <map>
#include <memory>
#include <optional>

namespace quorvel::jet {

/// What stands behind a Database and its recordsets: the file, its catalog, its open tables. All reasons given here
/// are whole sentences that begin with the file's name.
class Store {
public:
    static Result<std::shared_ptr<Store>> open(const std::filesystem::path& path, OpenOptions options);
    static Result<std::shared_ptr<Store>> create(const std::filesystem::path& path, Files& files);

    /// As open(), on a file that is at hand already. Nothing is locked.
    static Result<std::shared_ptr<Store>> openFile(std::unique_ptr<File> file,
                                                   const std::filesystem::path& path, OpenOptions options,
                                                   std::string readOnlyBecause);

    Store(const Store&) = delete;
    Store& operator=(const Store&) = delete;
    ~Store();

    /// A table that is open, and why it cannot be written ("" when it can).
    struct OpenTable {
        std::unique_ptr<Table> table;
        std::string readOnlyBecause;
    };

    Status append(const TableDef& table);
    bool hasTable(std::string_view name) const;
    Result<OpenTable*> table(std::string_view name);
    Result<std::vector<TableInfo>> tables() const;
    Status close();

    /// Fails when closed. Brings a new database into its file: no more tables then.
    Status ready();

    /// Ends without close(): a new database vanishes, an opened one keeps what was written.
    void abandon();

    const std::filesystem::path& path() const { return path_; }
    bool closed() const { return closed_; }
    Failure named(const std::string& reason) const;
    Failure closedFailure() const { return named("has been closed. Open it again."); }

private:
    struct CatalogEntry {
        std::string name;
        std::uint32_t page;
        bool system;
    };

    Store(std::filesystem::path path, Files& files) : path_(std::move(path)), files_(&files) {}

    Status attach(std::unique_ptr<File> file, OpenOptions options);
    Status readCatalog();
    Status stage();
    Status settleTables();
    Status finish();

    std::filesystem::path path_;
    Files* files_;
    Header header_;
    std::unique_ptr<Pager> pager_;
    std::string readOnlyBecause_;
    bool closed_ = false;
    std::vector<CatalogEntry> catalog_;
    Status catalogComplete_; ///< why a table may be missing in it
    std::map<std::uint32_t, OpenTable> open_;

    // While a new database is in the making.
    std::optional<NewFile> made_; ///< until its first recordset is opened
    std::unique_ptr<File> madeFile_;
    std::filesystem::path temporary_; ///< empty for an opened database
};

/// A Database on a file that is at hand; for tests that bring their own.
Result<Database> openDatabaseOn(std::unique_ptr<File> file, const std::filesystem::path& path,
                                OpenOptions options);

} // namespace quorvel::jet
