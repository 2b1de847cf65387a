#include "jet/recordset.h"
#include "jet/row.h"
#include "jet/table.h"

#include <algorithm>
#include <string>

namespace quorvel::jet {

namespace {

constexpr std::uint32_t kStrayReach = 5;

Failure notWritten(const std::string& why)
{
    return Failure{"can be read but not written: " + why + ". Change it in Access."};
}

bool isWritten(const Column& column)
{
    constexpr std::uint8_t kOther = kFixedColumn | kUpdatableColumn;
    const auto type = static_cast<FieldType>(column.type);
    return (column.flags & ~kOther) == 0 && column.fixed() &&
           (type == FieldType::Integer || type == FieldType::Long || type == FieldType::Single ||
            type == FieldType::Double || type == FieldType::Date);
}

/// The offsets that the fixed columns must have, by column number.
bool offsetsAreRunningSum(const Definition& definition)
{
    std::vector<const Column*> byNumber(definition.columns.size());
    for (const auto& column : definition.columns)
        byNumber.at(column.number) = &column;
    std::size_t offset = 0;
    for (const auto* column : byNumber) {
        if (column->fixedOffset != offset) return false;
        offset += valueSize(column->type);
    }
    return true;
}

} // namespace

Status Table::checkShape() const
{
    if (pager_->layout().version != 4) return notWritten("it is of an Access version before 2000");
    const std::size_t count = definition_.columns.size();
    if (definition_.kind != kUserTable) return notWritten("the table belongs to Access itself");
    if (definition_.logicalCount != 0 || definition_.physicalCount != 0) {
        return notWritten("the table has an index or a key");
    }
    const bool columnsAreOurs =
        std::all_of(definition_.columns.begin(), definition_.columns.end(), isWritten);
    if (count == 0 || definition_.pages != 1 || definition_.variableColumns != 0 ||
        definition_.maxColumns != count || !columnsAreOurs || !offsetsAreRunningSum(definition_)) {
        return notWritten("the table has columns that this program does not write");
    }
    const std::uint32_t owned = definition_.ownedMap;
    const std::uint32_t free = definition_.freeMap;
    if (pointerPage(owned) != pointerPage(free) || owned == free) {
        return notWritten("the table keeps its lists of pages apart");
    }
    return {};
}

Status Table::checkPages()
{
    const std::uint32_t mapPage = pointerPage(definition_.ownedMap);
    if (auto whole = checkMapPage(*pager_, mapPage); !whole) return whole;
    std::vector<std::uint32_t> used = owned_;
    used.insert(used.end(), {page_, mapPage});
    for (const std::uint32_t pointer : {definition_.ownedMap, definition_.freeMap}) {
        const auto map = readMap(*pager_, pointer);
        if (!map) return map.failure();
        const auto own = map->ownPages();
        used.insert(used.end(), own.begin(), own.end());
    }
    for (const std::uint32_t number : owned_) {
        const auto bytes = pager_->read(number);
        if (!bytes) return bytes.failure();
        if (number == 0 || get8(*bytes, 0) != kDataPageType || get32(*bytes, 4) != page_) {
            return damagedTable("page " + std::to_string(number) +
                                " does not belong to the table that lists it");
        }
        if (const auto page = view(number); !page) return page.failure();
    }
    return freePages_.check(std::move(used));
}

/// Rows are changed in place: each must have the columns that the table has now. One without any columns is damaged, which
/// is told when it is read.
Status Table::checkRows()
{
    const auto found = rows();
    if (!found) return found.failure();
    if (auto whole = complete(found->size()); !whole) return whole;
    for (const std::uint32_t pointer : *found) {
        const auto page = view(pointerPage(pointer));
        if (!page) return page.failure();
        const int slot = pointerSlot(pointer);
        if (!(*page)->live(slot)) return notWritten("rows of the table were moved");
        const auto row = (*page)->row(slot);
        const std::size_t columns = get16(row, 0);
        if (columns != 0 && (columns != definition_.columns.size() || row.size() != rowBytes(definition_))) {
            return notWritten("rows of the table are older than a column");
        }
    }
    return {};
}

Status Table::dropTornRow()
{
    if (owned_.empty()) return {};
    auto page = pager_->copy(owned_.back());
    if (!page) return page.failure();
    const auto data = DataPage::of(*page, kJet4);
    if (!data || data->slots() == 0 || !data->live(data->slots() - 1)) return {};
    const int last = data->slots() - 1;
    const auto row = data->row(last);
    // The slot came to the disk, the row did not. No row that was written is all zero: it begins with a count.
    if (!std::all_of(row.begin(), row.end(), [](std::uint8_t byte) { return byte == 0; })) return {};
    eraseRow(*page, last);
    return writePage(owned_.back(), *page);
}

Status Table::freeStray()
{
    const std::uint32_t pages = pager_->pages();
    for (std::uint32_t number = pages - std::min(pages, kStrayReach); number < pages; ++number) {
        const auto bytes = pager_->read(number);
        if (!bytes) return bytes.failure();
        const bool ours = get8(*bytes, 0) == kDataPageType && get32(*bytes, 4) == page_;
        if (!ours || std::binary_search(owned_.begin(), owned_.end(), number)) continue;
        const auto free = freePages_.isFree(number);
        if (!free) return free.failure();
        if (*free) continue;
        if (auto released = freePages_.release(number); !released) return released;
    }
    return {};
}

Status Table::prepareWriting()
{
    if (auto shape = checkShape(); !shape) return shape;
    if (auto pages = checkPages(); !pages) return pages;
    if (auto rows = checkRows(); !rows) return rows;
    if (auto cut = pager_->cutIncomplete(); !cut) return cut;
    if (auto dropped = dropTornRow(); !dropped) return dropped;
    if (auto freed = freeStray(); !freed) return freed;
    if (auto counted = recount(); !counted) return counted;
    return settle();
}

Status Table::recount()
{
    const auto live = rows();
    if (!live) return live.failure();
    countPending_ = countPending_ || live->size() != definition_.rowCount;
    definition_.rowCount = static_cast<std::uint32_t>(live->size());
    return {};
}

/// A write may fail after it reached the file: a flush that fails, a list of pages of which the last write failed.
Status Table::lookAgain()
{
    if (!unsure_) return {};
    const auto map = readMap(*pager_, definition_.ownedMap);
    if (!map) return map.failure();
    auto owned = pagesOf(*pager_, *map);
    if (!owned) return owned.failure();
    owned_ = std::move(*owned);
    if (auto counted = recount(); !counted) return counted;
    unsure_ = false;
    return {};
}

Status Table::settle()
{
    if (auto known = lookAgain(); !known) return known;
    if (!countPending_) return {};
    auto page = pager_->copy(page_);
    if (!page) return page.failure();
    put32(*page, kJet4.rowCount, definition_.rowCount);
    auto written = pager_->write(page_, *page);
    if (written) countPending_ = false;
    return written;
}

void Table::countRows(int change)
{
    definition_.rowCount =
        static_cast<std::uint32_t>(static_cast<std::int64_t>(definition_.rowCount) + change);
    countPending_ = true;
    // Nobody sees a file before it is whole: Close() writes the count.
    if (pager_->gathers()) return;
    // The row itself is safe by now. A count that could not be written is tried again with the next row and by
    // Close(), which reports it.
    static_cast<void>(static_cast<bool>(settle()));
}

Status Table::writePage(std::uint32_t number, const Page& page)
{
    if (number == viewedNumber_) view_.reset();
    if (auto written = pager_->write(number, page); !written) return written;
    return pager_->barrier();
}

Status Table::writeGrown(std::uint32_t number, Bytes before, const Page& after)
{
    if (!pager_->flushesAtBarriers()) return writePage(number, after);
    for (const auto& step : stepsTo(before, after)) {
        if (auto written = writePage(number, step); !written) return written;
    }
    return {};
}

Result<std::uint32_t> Table::append(const std::vector<Value>& values)
{
    if (auto known = lookAgain(); !known) return known.failure();
    const std::uint32_t rowsBefore = definition_.rowCount;
    const auto row = encodeRow(definition_, values);
    unsure_ = true;
    auto added = appendRow(row);
    if (added) {
        unsure_ = false;
        countRows(+1);
        return added;
    }
    if (lookAgain() && definition_.rowCount == rowsBefore) return added;
    return Failure{added.error() + " " + kRowMayBeThere};
}

Result<std::uint32_t> Table::appendRow(const ByteVector& row)
{
    if (owned_.empty()) return appendOnNewPage(row);
    const auto before = pager_->read(owned_.back());
    if (!before) return before.failure();
    Page page{};
    putBytes(page, 0, *before);
    const auto slot = addRow(page, row);
    if (!slot) return appendOnNewPage(row);
    if (auto written = writeGrown(owned_.back(), *before, page); !written) return written.failure();
    return rowPointer(owned_.back(), *slot);
}

Result<std::uint32_t> Table::appendOnNewPage(const ByteVector& row)
{
    // Behind the last page of the table, so that rows stay in the order in which they came.
    const auto number = freePages_.firstFrom(owned_.empty() ? 1 : owned_.back() + 1);
    if (!number) return number.failure();
    Page page = newDataPage(page_);
    const auto slot = addRow(page, row);
    if (!slot) return notWritten("a row of the table is longer than a page");
    if (auto written = writePage(*number, page); !written) return written.failure();
    if (auto used = freePages_.use(*number); !used) return used.failure();
    auto linked = linkPage(*pager_, freePages_, definition_.ownedMap, definition_.freeMap, owned_, *number);
    if (!linked) return linked.failure();
    owned_.push_back(*number);
    return rowPointer(*number, *slot);
}

Result<Page> Table::pageForChange(std::uint32_t row)
{
    auto page = pager_->copy(pointerPage(row));
    if (!page) return page.failure();
    const auto data = DataPage::of(*page, kJet4);
    if (!data || pointerSlot(row) >= data->slots()) return damagedTable("a row is missing");
    if (!data->live(pointerSlot(row)))
        return Failure{"no longer has this row: it was deleted. Open the table again."};
    return page;
}

Status Table::update(std::uint32_t row, const std::vector<Value>& values)
{
    auto page = pageForChange(row);
    if (!page) return page.failure();
    const std::size_t begin = rowOffset(*page, pointerSlot(row));
    const auto bytes =
        MutableBytes(*page).subspan(begin, DataPage::of(*page, kJet4)->row(pointerSlot(row)).size());
    if (bytes.size() != rowBytes(definition_) || get16(bytes, 0) != definition_.columns.size()) {
        return notWritten("the row is older than a column of its table");
    }
    changeRow(bytes, definition_, values);
    return writePage(pointerPage(row), *page);
}

Status Table::erase(std::uint32_t row)
{
    if (auto known = lookAgain(); !known) return known;
    auto page = pageForChange(row);
    if (!page) return page.failure();
    eraseRow(*page, pointerSlot(row));
    unsure_ = true;
    if (auto written = writePage(pointerPage(row), *page); !written) return written;
    unsure_ = false;
    countRows(-1);
    return {};
}

} // namespace quorvel::jet
