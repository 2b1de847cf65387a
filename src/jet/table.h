#pragma once

#include "jet/bytes.h"
#include "jet/data_page.h"
#include "jet/definition.h"
#include "jet/header.h"
#include "jet/page_lists.h"
#include "jet/pager.h"
#include "jet/result.h"
#include "jet/value.h"

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace quorvel::jet {

/// Why a table cannot be used: "is damaged: ...".
Failure damagedTable(const std::string& what);

/// The rows of one table of an open file. A row is named by its row pointer.
class Table {
public:
    /// Reads the definition that begins on `page` and the list of the table's pages. Fails when they are damaged
    /// or name pages that the file no longer has.
    static Result<std::unique_ptr<Table>> open(Pager& pager, const Header& header, std::uint32_t page);

    const Definition& definition() const { return definition_; }

    /// Column of a name, in any case of its letters; -1 when there is none.
    int columnOf(std::string_view name) const;

    /// All rows, in the order of their pages. Fails when a page is damaged.
    Result<std::vector<std::uint32_t>> rows();

    /// Fails when the definition counts more rows than `found`, those of rows(): pages are lost. One less is what a
    /// killed deletion leaves.
    Status complete(std::size_t found) const;

    /// Reads a row, one value per column of the definition. On failure all values are Null.
    /// @param wanted  positions of the columns to be read, the others stay Null; all when empty.
    Status read(std::uint32_t row, std::vector<Value>& values, const std::vector<std::size_t>& wanted = {});

    /// Length of the file.
    std::uint64_t fileBytes() const { return std::uint64_t{pager_->pages()} * pager_->layout().pageSize; }

    /// Checks that this module can write rows of the table, and repairs what an interrupted writer left: a row
    /// count that is off, a half-written last row, a page that belongs to nobody. Must succeed before the calls
    /// below.
    Status prepareWriting();

    /// Adds a row. @return its pointer. On failure the reason says so when the row may be in the file all the same.
    Result<std::uint32_t> append(const std::vector<Value>& values);
    Status update(std::uint32_t row, const std::vector<Value>& values);
    Status erase(std::uint32_t row);

    /// Writes the row count when it is not yet in the file.
    Status settle();

private:
    Table(Pager& pager, const Header& header, std::uint32_t page, Definition definition);

    Result<const DataPage*> view(std::uint32_t number);
    Result<ByteVector> movedRow(std::uint32_t pointer);
    Status checkShape() const;
    Status checkPages();
    Status checkRows();
    Status dropTornRow();
    Status freeStray();
    Result<std::uint32_t> appendRow(const ByteVector& row);
    Result<std::uint32_t> appendOnNewPage(const ByteVector& row);
    Result<Page> pageForChange(std::uint32_t row);
    Status writePage(std::uint32_t number, const Page& page);
    Status writeGrown(std::uint32_t number, Bytes before, const Page& after);
    void countRows(int change);
    Status recount();
    Status lookAgain();

    Pager* pager_;
    std::uint16_t codePage_;
    FreePages freePages_;
    std::uint32_t page_;
    Definition definition_;
    std::vector<std::uint32_t> owned_;
    bool countPending_ = false;
    bool unsure_ = false; ///< a write failed: what the file holds now is to be looked up

    // The page read last, kept beside the pager's because long values displace pages there.
    Page viewed_{};
    std::uint32_t viewedNumber_ = 0;
    std::optional<DataPage> view_;
};

} // namespace quorvel::jet
