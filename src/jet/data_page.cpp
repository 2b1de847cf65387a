#include "jet/data_page.h"

#include <string>

namespace quorvel::jet {

namespace {

constexpr std::uint16_t kOffsetBits = 0x1FFF;
constexpr std::size_t kFreeBytes = 0x02;
constexpr std::size_t kOwner = 0x04;
constexpr std::size_t kSectorBytes = 512;

std::size_t slotAt(int slot) { return kJet4.slotTable + 2 * static_cast<std::size_t>(slot); }

std::size_t endOf(Bytes page, std::size_t slotTable, int slot)
{
    return slot == 0 ? page.size()
                     : get16(page, slotTable + 2 * static_cast<std::size_t>(slot - 1)) & kOffsetBits;
}

} // namespace

Result<DataPage> DataPage::of(Bytes page, const Layout& layout)
{
    if (page.size() != layout.pageSize || get8(page, 0) != kDataPageType) {
        return Failure{"a page that should hold rows does not"};
    }
    const std::size_t slots = get16(page, layout.slotCount);
    const std::size_t tableEnd = layout.slotTable + 2 * slots;
    if (tableEnd > page.size()) return Failure{"a page lists more rows than it can hold"};
    std::size_t end = page.size();
    for (std::size_t i = 0; i < slots; ++i) {
        const std::size_t begin = get16(page, layout.slotTable + 2 * i) & kOffsetBits;
        if (begin > end || begin < tableEnd) return Failure{"the rows of a page overlap"};
        end = begin;
    }
    return DataPage(page, layout, static_cast<int>(slots));
}

Bytes DataPage::row(int slot) const
{
    const std::size_t begin = this->slot(slot) & kOffsetBits;
    return part(page_, begin, endOf(page_, layout_->slotTable, slot) - begin);
}

Page newDataPage(std::uint32_t owner)
{
    Page page{};
    put16(page, 0, 0x0101);
    put16(page, kFreeBytes, static_cast<std::uint16_t>(kPageSize - kJet4.slotTable));
    put32(page, kOwner, owner);
    return page;
}

std::optional<int> addRow(Page& page, Bytes row)
{
    const int slots = get16(page, kJet4.slotCount);
    const std::size_t end = endOf(page, kJet4.slotTable, slots);
    const std::size_t tableEnd = slotAt(slots);
    // The room is measured, not taken from the page's own count, which a foreign file may have wrong.
    if (slots >= kMaxSlots || tableEnd > end || row.size() + 2 > end - tableEnd) return std::nullopt;
    const std::size_t begin = end - row.size();
    putBytes(page, begin, row);
    put16(page, slotAt(slots), static_cast<std::uint16_t>(begin));
    put16(page, kFreeBytes, static_cast<std::uint16_t>(begin - tableEnd - 2));
    put16(page, kJet4.slotCount, static_cast<std::uint16_t>(slots + 1));
    return slots;
}

std::vector<Page> stepsTo(Bytes before, const Page& after)
{
    const std::size_t tableEnd = slotAt(get16(after, kJet4.slotCount));
    Page rowOnly = after;
    std::copy_n(before.begin(), tableEnd, rowOnly.begin());
    // The count of slots and the new slot arrive together as long as they share a sector.
    if (tableEnd <= kSectorBytes) return {rowOnly, after};
    Page uncounted = after;
    std::copy_n(before.begin(), kJet4.slotTable, uncounted.begin());
    return {rowOnly, uncounted, after};
}

void eraseRow(Page& page, int slot)
{
    const std::size_t at = slotAt(slot);
    const std::size_t begin = rowOffset(page, slot);
    const bool last = slot + 1 == get16(page, kJet4.slotCount);
    // The room of the last row is free again when the count of free bytes comes to the disk together with the slot.
    if (!last || at >= kSectorBytes) {
        put16(page, at, static_cast<std::uint16_t>(kDeletedSlot | begin));
        return;
    }
    const std::size_t end = endOf(page, kJet4.slotTable, slot);
    put16(page, at, static_cast<std::uint16_t>(kDeletedSlot | end));
    put16(page, kFreeBytes, static_cast<std::uint16_t>(get16(page, kFreeBytes) + end - begin));
}

std::size_t rowOffset(const Page& page, int slot) { return get16(page, slotAt(slot)) & kOffsetBits; }

} // namespace quorvel::jet
