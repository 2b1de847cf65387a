#include "jet/table.h"

#include "jet/row.h"
#include "jet/text_coding.h"

#include <string>

namespace quorvel::jet {

namespace {

constexpr int kMaxHops = 16;

} // namespace

Failure damagedTable(const std::string& what)
{
    return Failure{"is damaged: " + what + ". Use \"Compact and Repair\" in Access, or an earlier copy."};
}

Table::Table(Pager& pager, const Header& header, std::uint32_t page, Definition definition)
    : pager_(&pager), codePage_(header.codePage), freePages_(pager, header.freeMap), page_(page),
      definition_(std::move(definition))
{}

Result<std::unique_ptr<Table>> Table::open(Pager& pager, const Header& header, std::uint32_t page)
{
    auto definition = readDefinition(pager, page, header.codePage);
    if (!definition) return definition.failure();
    const auto map = readMap(pager, definition->ownedMap);
    if (!map) return map.failure();
    auto owned = pagesOf(pager, *map);
    if (!owned) return owned.failure();
    if (!owned->empty() && owned->back() >= pager.pages()) {
        return Failure{"is cut off: it ends at page " + std::to_string(pager.pages()) +
                       ", a table goes on to page " + std::to_string(owned->back()) + ". Copy it again."};
    }
    auto table = std::unique_ptr<Table>(new Table(pager, header, page, std::move(*definition)));
    table->owned_ = std::move(*owned);
    return table;
}

int Table::columnOf(std::string_view name) const
{
    for (std::size_t i = 0; i < definition_.columns.size(); ++i) {
        if (sameName(definition_.columns[i].name, name)) return static_cast<int>(i);
    }
    return -1;
}

Result<const DataPage*> Table::view(std::uint32_t number)
{
    if (view_ && viewedNumber_ == number) return &*view_;
    view_.reset();
    const auto bytes = pager_->read(number);
    if (!bytes) return bytes.failure();
    putBytes(viewed_, 0, *bytes);
    auto page = DataPage::of(Bytes(viewed_).first(bytes->size()), pager_->layout());
    if (!page) return damagedTable(page.error());
    if (page->slots() > 256) return damagedTable("a page lists more rows than can be named");
    view_ = *page;
    viewedNumber_ = number;
    return &*view_;
}

Result<std::vector<std::uint32_t>> Table::rows()
{
    std::vector<std::uint32_t> rows;
    for (const std::uint32_t number : owned_) {
        const auto bytes = pager_->read(number);
        if (!bytes) return bytes.failure();
        if (get8(*bytes, 0) != kDataPageType || get32(*bytes, 4) != page_) continue;
        const auto page = view(number);
        if (!page) return page.failure();
        for (int slot = 0; slot < (*page)->slots(); ++slot) {
            if (((*page)->slot(slot) & kHiddenSlot) == 0) rows.push_back(rowPointer(number, slot));
        }
    }
    return rows;
}

Status Table::complete(std::size_t found) const
{
    const std::size_t counted = definition_.rowCount;
    if (found + 1 >= counted) return {};
    return damagedTable(std::to_string(counted - found) + " of the " + std::to_string(counted) +
                        " rows of a table are missing");
}

Result<ByteVector> Table::movedRow(std::uint32_t pointer)
{
    for (int hop = 0; hop < kMaxHops; ++hop) {
        const std::uint32_t number = pointerPage(pointer);
        const auto bytes = pager_->read(number);
        if (!bytes) return bytes.failure();
        const auto page = DataPage::of(*bytes, pager_->layout());
        if (!page || page->owner() != page_ || pointerSlot(pointer) >= page->slots()) break;
        const auto row = page->row(pointerSlot(pointer));
        const auto state = page->slot(pointerSlot(pointer)) & kDeletedSlot;
        if (state == kDeletedSlot) break;
        if ((state & kMovedSlot) == 0) return ByteVector(row.begin(), row.end());
        if (row.size() < 4) break;
        pointer = get32(row, 0);
    }
    return damagedTable("a row that was moved cannot be found");
}

Status Table::read(std::uint32_t row, std::vector<Value>& values, const std::vector<std::size_t>& wanted)
{
    values.assign(definition_.columns.size(), Value());
    const auto page = view(pointerPage(row));
    if (!page) return page.failure();
    const int slot = pointerSlot(row);
    if (slot >= (*page)->slots()) return damagedTable("a row is missing");
    const auto bytes = (*page)->row(slot);
    if (((*page)->slot(slot) & kMovedSlot) == 0)
        return decodeRow(bytes, definition_, codePage_, *pager_, values, wanted);
    if (bytes.size() < 4) return damagedTable("a row that was moved cannot be found");
    const auto moved = movedRow(get32(bytes, 0));
    if (!moved) return moved.failure();
    return decodeRow(*moved, definition_, codePage_, *pager_, values, wanted);
}

} // namespace quorvel::jet
