#include "jet/usage_map.h"

#include "jet/data_page.h"

namespace quorvel::jet {

namespace {

constexpr std::size_t kBitmapStart = 4;
constexpr std::size_t kInlineStart = 5;
constexpr std::uint32_t kMaxPage = 0xFFFFFF;

Failure damagedMap()
{
    return Failure{
        "is damaged: the list of a table's pages cannot be read. Use \"Compact and Repair\" in Access, or an "
        "earlier copy."};
}

/// Collects pages up to the first one from `end` on. @return false when it has come to that.
bool collect(Bytes bits, std::uint64_t first, std::uint32_t end, std::vector<std::uint32_t>& pages)
{
    for (std::size_t i = 0; i < bits.size(); ++i) {
        for (std::uint32_t bit = 0; bits[i] >> bit != 0; ++bit) {
            const std::uint64_t page = first + 8 * i + bit;
            if ((bits[i] >> bit & 1) == 0 || page > kMaxPage) continue;
            pages.push_back(static_cast<std::uint32_t>(page));
            if (page >= end) return false;
        }
    }
    return true;
}

} // namespace

void UsageMap::set(std::uint32_t page, bool on)
{
    if (!covers(page)) return;
    auto& byte = bits[(page - start) / 8];
    const auto bit = static_cast<std::uint8_t>(1U << ((page - start) % 8));
    byte = static_cast<std::uint8_t>(on ? byte | bit : byte & ~bit);
}

bool UsageMap::empty() const
{
    return std::all_of(bits.begin(), bits.end(), [](std::uint8_t byte) { return byte == 0; });
}

std::vector<std::uint32_t> UsageMap::ownPages() const
{
    auto pages = bitmapPages;
    std::erase(pages, 0U);
    return pages;
}

Result<UsageMap> parseMap(Bytes row)
{
    UsageMap map;
    if (row.size() < kInlineStart || row[0] > 1) return damagedMap();
    if (row[0] == 0) {
        map.start = get32(row, 1);
        map.bits.assign(row.begin() + kInlineStart, row.end());
        return map;
    }
    map.reference = true;
    for (std::size_t at = 1; at + 4 <= row.size(); at += 4) {
        map.bitmapPages.push_back(get32(row, at));
    }
    return map;
}

ByteVector encodeMap(const UsageMap& map)
{
    ByteVector row;
    append8(row, map.reference ? 1 : 0);
    if (!map.reference) {
        append32(row, map.start);
        appendBytes(row, map.bits);
        return row;
    }
    for (const std::uint32_t page : map.bitmapPages)
        append32(row, page);
    return row;
}

Result<UsageMap> readMap(Pager& pager, std::uint32_t pointer)
{
    const auto bytes = pager.read(pointerPage(pointer));
    if (!bytes) return bytes.failure();
    const auto page = DataPage::of(*bytes, pager.layout());
    if (!page || pointerPage(pointer) == 0 || pointerSlot(pointer) >= page->slots()) return damagedMap();
    return parseMap(page->row(pointerSlot(pointer)));
}

Result<std::vector<std::uint32_t>> pagesOf(Pager& pager, const UsageMap& map)
{
    std::vector<std::uint32_t> pages;
    if (!map.reference) {
        collect(map.bits, map.start, pager.pages(), pages);
        return pages;
    }
    for (std::size_t range = 0; range < map.bitmapPages.size(); ++range) {
        if (map.bitmapPages[range] == 0) continue;
        const auto bytes = readBitmap(pager, map.bitmapPages[range]);
        if (!bytes) return bytes.failure();
        const std::uint64_t first = std::uint64_t{range} * pager.layout().pagesPerBitmap();
        if (!collect(bytes->subspan(kBitmapStart), first, pager.pages(), pages)) break;
    }
    return pages;
}

std::size_t bitmapBytes(std::uint32_t start, std::uint32_t page)
{
    const std::size_t bytes = (page - start) / 8 + 1;
    return (bytes + 3) / 4 * 4;
}

Page newBitmapPage(bool allSet)
{
    Page page{};
    if (allSet) page.fill(0xFF);
    put32(page, 0, 0x0105);
    return page;
}

bool bitmapHas(Bytes page, std::uint32_t bit)
{
    return (get8(page, kBitmapStart + bit / 8) >> (bit % 8) & 1) != 0;
}

void setBitmap(Page& page, std::uint32_t bit, bool on)
{
    const std::size_t at = kBitmapStart + bit / 8;
    const auto mask = static_cast<std::uint8_t>(1U << (bit % 8));
    put8(page, at, static_cast<std::uint8_t>(on ? get8(page, at) | mask : get8(page, at) & ~mask));
}

Result<Bytes> readBitmap(Pager& pager, std::uint32_t number)
{
    auto bytes = pager.read(number);
    if (bytes && (number == 0 || get8(*bytes, 0) != kBitmapPageType)) return damagedMap();
    return bytes;
}

Result<Page> copyBitmap(Pager& pager, std::uint32_t number)
{
    const auto bytes = readBitmap(pager, number);
    if (!bytes) return bytes.failure();
    return pager.copy(number);
}

} // namespace quorvel::jet
