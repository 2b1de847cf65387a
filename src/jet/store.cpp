#include "jet/store.h"

#include "files/name.h"
#include "files/replace.h"
#include "jet/text_coding.h"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <ctime>
#include <limits>
#include <optional>

namespace quorvel::jet {

namespace {

constexpr std::uint32_t kCatalogPage = 2;
constexpr std::uint32_t kPageBits = 0x00FFFFFF;
constexpr std::uint32_t kSystemObject = 0x80000002;
constexpr int kTableType = 1;
constexpr std::size_t kMostObjects = 32768; // of an Access database
constexpr std::size_t kMostNameBytes = 256; // 64 characters

// Milliseconds would do, but a catalog date is for people.
Date localNow()
{
    const std::time_t now = std::chrono::system_clock::to_time_t(std::chrono::system_clock::now());
    const std::tm* const local = std::localtime(&now); // NOLINT(concurrency-mt-unsafe)
    if (local == nullptr) return Date{0};
    return Date::of({local->tm_year + 1900, local->tm_mon + 1, local->tm_mday, local->tm_hour, local->tm_min,
                     std::min(local->tm_sec, 59)})
        .value_or(Date{0});
}

/// A number of the catalog as the 32 bits that it stands for; none when it does not fit, which only a damaged file has.
std::optional<std::uint32_t> bitsOf(const Value& value)
{
    const auto number = value.number();
    const bool fits = number && *number >= std::numeric_limits<std::int32_t>::min() &&
                      *number <= std::numeric_limits<std::uint32_t>::max();
    if (!fits) return std::nullopt;
    return static_cast<std::uint32_t>(static_cast<std::int64_t>(*number));
}

Status firstFault(const Status& first, const Status& second) { return first ? second : first; }

} // namespace

Failure Store::named(const std::string& reason) const
{
    return Failure{files::inWords(path_) + " " + reason};
}

Result<std::shared_ptr<Store>> Store::open(const std::filesystem::path& path, OpenOptions options)
{
    Files& files = options.files != nullptr ? *options.files : diskFiles();
    const std::shared_ptr<Store> store(new Store(path, files));
    const bool forWriting = options.access == Access::ReadWrite;
    const auto locked = [&files](const std::filesystem::path& file) { return files.lockedByOthers(file); };
    if (forWriting && files::openInAccess(path, locked)) {
        return store->named("is open in Access. Close it there and try again.");
    }
    auto opened = files.open(path, forWriting);
    if (!opened) return store->named(opened.error());
    return openFile(std::move(opened->file), path, options, opened->readOnlyBecause);
}

Result<std::shared_ptr<Store>> Store::openFile(std::unique_ptr<File> file, const std::filesystem::path& path,
                                               OpenOptions options, std::string readOnlyBecause)
{
    Files& files = options.files != nullptr ? *options.files : diskFiles();
    std::shared_ptr<Store> store(new Store(path, files));
    store->readOnlyBecause_ = std::move(readOnlyBecause);
    if (options.access == Access::ReadOnly) store->readOnlyBecause_ = "was opened for reading only.";
    if (auto attached = store->attach(std::move(file), options); !attached)
        return store->named(attached.error());
    if (auto read = store->readCatalog(); !read) return store->named(read.error());
    return store;
}

Result<std::shared_ptr<Store>> Store::create(const std::filesystem::path& path, Files& files)
{
    std::shared_ptr<Store> store(new Store(path, files));
    if (files.exists(path)) return store->named("already exists. Delete it or choose another name.");
    const auto temporary = files::unfinished(path);
    auto file = files.create(temporary);
    if (!file) return store->named(file.error());
    store->temporary_ = temporary;
    store->madeFile_ = std::move(*file);
    store->made_.emplace(localNow());
    return store;
}

Store::~Store() { abandon(); }

Status Store::attach(std::unique_ptr<File> file, OpenOptions options)
{
    const auto size = file->size();
    if (!size) return size.failure();
    // The header is read as what is there of the smallest page: a short file must be told from a foreign one.
    ByteVector start(std::min<std::uint64_t>(*size, kHeaderBytes));
    if (!start.empty()) {
        if (auto got = file->readPage(0, start); !got) return got;
    }
    const auto header = readHeader(start, *size);
    if (!header) return header.failure();
    header_ = *header;
    const std::uint64_t pages = *size / header_.layout->pageSize;
    if (pages > kMostPages) return Failure{"is longer than any Access database. Copy it again."};
    pager_ = std::make_unique<Pager>(std::move(file), *header_.layout, static_cast<std::uint32_t>(pages));
    pager_->flushAtBarriers(options.durability == Durability::EachUpdate);
    return {};
}

Status Store::readCatalog()
{
    auto objects = Table::open(*pager_, header_, kCatalogPage);
    if (!objects) return objects.failure();
    Table& table = **objects;
    const int id = table.columnOf("Id");
    const int name = table.columnOf("Name");
    const int type = table.columnOf("Type");
    const int flags = table.columnOf("Flags");
    const std::vector<std::size_t> wanted{static_cast<std::size_t>(id), static_cast<std::size_t>(name),
                                          static_cast<std::size_t>(type), static_cast<std::size_t>(flags)};
    const Failure unlisted{
        "is damaged: it does not list its tables. Use \"Compact and Repair\" in Access, or an "
        "earlier copy."};
    if (id < 0 || name < 0 || type < 0 || flags < 0) return unlisted;
    const auto rows = table.rows();
    if (!rows) return rows.failure();
    catalogComplete_ = table.complete(rows->size());
    std::vector<Value> values;
    for (const std::uint32_t row : *rows) {
        if (auto read = table.read(row, values, wanted); !read) return read;
        const auto value = [&values](int column) { return values[static_cast<std::size_t>(column)]; };
        const auto page = bitsOf(value(id));
        if (value(type).number() != kTableType || !page) continue;
        const bool system = (bitsOf(value(flags)).value_or(0) & kSystemObject) != 0;
        auto listed = value(name).text();
        if (listed.size() > kMostNameBytes || catalog_.size() == kMostObjects) return unlisted;
        catalog_.push_back({std::move(listed), *page & kPageBits, system});
    }
    // The catalog lists itself; where it does not, the page with its rows is gone.
    return hasTable("MSysObjects") ? Status{} : Status(unlisted);
}

Status Store::append(const TableDef& table)
{
    if (closed_) return closedFailure();
    if (temporary_.empty()) return named("was opened, not created: tables are added to new databases only.");
    if (!made_) return named("already has rows: add all tables before the first recordset is opened.");
    auto appended = made_->append(table);
    return appended ? appended : Status(named(appended.error()));
}

/// Puts the pages of the new database into its file, so that it can be used like one that was opened.
Status Store::stage()
{
    if (!made_) return {};
    pager_ = std::make_unique<Pager>(std::move(madeFile_), kJet4, 0);
    pager_->gather();
    const NewFile made = std::move(*made_);
    made_.reset();
    std::uint32_t number = 0;
    for (const auto& page : made.pages()) {
        if (auto written = pager_->write(number++, page); !written) return written;
    }
    const auto header = readHeader(made.pages().front(), made.pages().size() * kPageSize);
    if (!header) return header.failure();
    header_ = *header;
    return readCatalog();
}

Status Store::ready()
{
    if (closed_) return closedFailure();
    auto staged = stage();
    return staged ? staged : Status(named(staged.error()));
}

bool Store::hasTable(std::string_view name) const
{
    return std::any_of(catalog_.begin(), catalog_.end(),
                       [name](const CatalogEntry& entry) { return sameName(entry.name, name); });
}

Result<Store::OpenTable*> Store::table(std::string_view name)
{
    if (auto staged = ready(); !staged) return staged.failure();
    const auto entry = std::find_if(catalog_.begin(), catalog_.end(),
                                    [name](const CatalogEntry& row) { return sameName(row.name, name); });
    if (entry == catalog_.end()) {
        if (!catalogComplete_) return named(catalogComplete_.error());
        return named("has no table \"" + std::string(name) + "\". Choose another file or table.");
    }
    if (const auto known = open_.find(entry->page); known != open_.end()) return &known->second;
    auto table = Table::open(*pager_, header_, entry->page);
    if (!table) return named(table.error());
    OpenTable& opened = open_[entry->page];
    opened.table = std::move(*table);
    opened.readOnlyBecause = readOnlyBecause_;
    if (opened.readOnlyBecause.empty()) {
        if (auto ready = opened.table->prepareWriting(); !ready) opened.readOnlyBecause = ready.error();
    }
    return &opened;
}

Result<std::vector<TableInfo>> Store::tables() const
{
    if (closed_) return closedFailure();
    std::vector<TableInfo> tables;
    for (const auto& entry : catalog_)
        tables.push_back({entry.name, entry.system});
    return tables;
}

Status Store::settleTables()
{
    Status outcome;
    for (auto& [page, opened] : open_)
        outcome = firstFault(outcome, opened.table->settle());
    return outcome;
}

Status Store::finish()
{
    if (auto staged = stage(); !staged) return staged;
    // A count that cannot be written must not keep the rows from the disk.
    Status outcome = settleTables();
    outcome = firstFault(outcome, pager_->flush());
    if (readOnlyBecause_.empty()) outcome = firstFault(outcome, pager_->sync());
    if (!outcome || temporary_.empty()) return outcome;
    auto published = files_->publish(temporary_, path_);
    if (published) temporary_.clear();
    return published;
}

Status Store::close()
{
    if (closed_) return {};
    closed_ = true;
    auto finished = finish();
    abandon();
    return finished ? finished : Status(named(finished.error()));
}

void Store::abandon()
{
    closed_ = true;
    open_.clear();
    pager_.reset();
    madeFile_.reset();
    made_.reset();
    if (!temporary_.empty()) files_->remove(temporary_);
    temporary_.clear();
}

} // namespace quorvel::jet
