#include "jet/page_lists.h"

#include "jet/data_page.h"

#include <optional>
#include <string>

namespace quorvel::jet {

namespace {

constexpr std::size_t kMapBytes = 64;
constexpr std::size_t kReferences = 17;
constexpr std::uint32_t kLastSystemPage = 5;

// Pages of maps belong to no table: owner 0, or 1 on the page of the map of free pages.
constexpr std::uint32_t kGlobalMapOwner = 1;

Failure tooLarge()
{
    return Failure{"has reached 2 GB, the most an Access database can hold. Begin a new file."};
}

Failure strangeMap()
{
    return Failure{
        "keeps its lists of pages in a way that this program does not write. Use \"Compact and Repair\" in "
        "Access."};
}

Failure freeThoughUsed(std::uint32_t page)
{
    return Failure{
        "is damaged: page " + std::to_string(page) +
        " is in use and marked as free. Use \"Compact and Repair\" in Access, or an earlier copy."};
}

Status writeThrough(Pager& pager, std::uint32_t number, const Page& page)
{
    if (auto written = pager.write(number, page); !written) return written;
    return pager.barrier();
}

/// A copy of a page of maps, to be changed in place.
Result<Page> mapPage(Pager& pager, std::uint32_t number)
{
    auto page = pager.copy(number);
    if (!page) return page.failure();
    const auto data = DataPage::of(*page, kJet4);
    if (!data || data->owner() > kGlobalMapOwner) return strangeMap();
    for (int slot = 0; slot < data->slots(); ++slot) {
        if (!data->live(slot)) return strangeMap();
    }
    return page;
}

/// Puts a map into the bytes of the row that it has on its page; rows never move. Behind a shorter one follow zeros, which
/// stand for no page. @return false when it is longer than its row.
bool putMap(Page& page, std::uint32_t pointer, const UsageMap& map)
{
    const auto data = DataPage::of(page, kJet4);
    if (!data || pointerSlot(pointer) >= data->slots()) return false;
    const std::size_t length = data->row(pointerSlot(pointer)).size();
    auto bytes = encodeMap(map);
    if (bytes.size() > length) return false;
    bytes.resize(length);
    putBytes(page, rowOffset(page, pointerSlot(pointer)), bytes);
    return true;
}

Status storeMap(Pager& pager, std::uint32_t pointer, const UsageMap& map)
{
    auto page = mapPage(pager, pointerPage(pointer));
    if (!page) return page.failure();
    if (!putMap(*page, pointer, map)) return strangeMap();
    return writeThrough(pager, pointerPage(pointer), *page);
}

UsageMap onlyPage(std::uint32_t page)
{
    UsageMap map;
    map.bits.assign(kMapBytes, 0);
    map.start = page < kMapBytes * 8 ? 0 : page & ~7U;
    map.set(page, true);
    return map;
}

/// Writes one bitmap page of a table behind the end of the file. @return its number.
Result<std::uint32_t> addBitmap(Pager& pager, FreePages& freePages, const std::vector<std::uint32_t>& pages,
                                std::uint32_t range)
{
    Page bitmap = newBitmapPage(false);
    for (const std::uint32_t page : pages) {
        if (page / kJet4.pagesPerBitmap() == range) setBitmap(bitmap, page % kJet4.pagesPerBitmap(), true);
    }
    const std::uint32_t number = pager.pages();
    if (number >= kMostPages) return tooLarge();
    if (auto written = writeThrough(pager, number, bitmap); !written) return written.failure();
    if (auto used = freePages.use(number); !used) return used.failure();
    return number;
}

/// The reference form of a table's map, with a bitmap page for each range that has pages.
Result<UsageMap> referenceMap(Pager& pager, FreePages& freePages, const std::vector<std::uint32_t>& pages)
{
    UsageMap map;
    map.reference = true;
    map.bitmapPages.assign(kReferences, 0);
    for (const std::uint32_t page : pages) {
        const std::uint32_t range = page / kJet4.pagesPerBitmap();
        if (range >= kReferences) return tooLarge();
        if (map.bitmapPages[range] != 0) continue;
        const auto bitmap = addBitmap(pager, freePages, pages, range);
        if (!bitmap) return bitmap.failure();
        map.bitmapPages[range] = *bitmap;
    }
    return map;
}

Result<UsageMap> linkedReference(Pager& pager, FreePages& freePages, UsageMap map, std::uint32_t page)
{
    const std::uint32_t range = page / kJet4.pagesPerBitmap();
    if (range >= map.bitmapPages.size()) return tooLarge();
    if (map.bitmapPages[range] == 0) {
        const auto bitmap = addBitmap(pager, freePages, {page}, range);
        if (!bitmap) return bitmap.failure();
        map.bitmapPages[range] = *bitmap;
        return map;
    }
    auto bitmap = copyBitmap(pager, map.bitmapPages[range]);
    if (!bitmap) return bitmap.failure();
    setBitmap(*bitmap, page % kJet4.pagesPerBitmap(), true);
    if (auto written = writeThrough(pager, map.bitmapPages[range], *bitmap); !written)
        return written.failure();
    return map;
}

/// The inline map with `page` in it. Nothing when its bits do not reach that far: a longer row would move others, and a
/// page of maps that comes to the disk in parts would then list anything.
std::optional<UsageMap> linkedInline(UsageMap map, std::uint32_t page)
{
    if (map.empty()) map.start = page < map.bits.size() * 8 ? 0 : page & ~7U;
    if (!map.covers(page)) return std::nullopt;
    map.set(page, true);
    return map;
}

/// Whether a map of free pages calls a page free: so it does with all pages outside its range.
Result<bool> callsFree(Pager& pager, const UsageMap& map, std::uint32_t page)
{
    if (!map.reference) return !map.covers(page) || map.has(page);
    const std::uint32_t range = page / kJet4.pagesPerBitmap();
    if (range >= map.bitmapPages.size() || map.bitmapPages[range] == 0) return true;
    const auto bitmap = readBitmap(pager, map.bitmapPages[range]);
    if (!bitmap) return bitmap.failure();
    return bitmapHas(*bitmap, page % kJet4.pagesPerBitmap());
}

} // namespace

Result<std::uint32_t> FreePages::firstFrom(std::uint32_t from)
{
    const auto map = readMap(*pager_, pointer_);
    if (!map) return map.failure();
    std::uint32_t page = from;
    for (; page < pager_->pages(); ++page) {
        const auto free = callsFree(*pager_, *map, page);
        if (!free) return free.failure();
        if (*free) break;
    }
    if (page >= kMostPages) return tooLarge();
    return page;
}

Result<bool> FreePages::isFree(std::uint32_t page)
{
    const auto map = readMap(*pager_, pointer_);
    if (!map) return map.failure();
    return callsFree(*pager_, *map, page);
}

Status FreePages::check(std::vector<std::uint32_t> used)
{
    if (auto whole = checkMapPage(*pager_, pointerPage(pointer_)); !whole) return whole;
    const auto map = readMap(*pager_, pointer_);
    if (!map) return map.failure();
    for (std::uint32_t page = 0; page <= kLastSystemPage; ++page)
        used.push_back(page);
    used.push_back(pointerPage(pointer_));
    const auto own = map->ownPages();
    used.insert(used.end(), own.begin(), own.end());
    for (const std::uint32_t page : used) {
        const auto free = callsFree(*pager_, *map, page);
        if (!free) return free.failure();
        if (*free) return freeThoughUsed(page);
    }
    return {};
}

Status FreePages::use(std::uint32_t page)
{
    auto map = readMap(*pager_, pointer_);
    if (!map) return map.failure();
    if (map->reference) return useReferenced(std::move(*map), page);
    if (!map->covers(page)) return convert(*map, page);
    map->set(page, false);
    return storeMap(*pager_, pointer_, *map);
}

Status FreePages::release(std::uint32_t page)
{
    auto map = readMap(*pager_, pointer_);
    if (!map) return map.failure();
    if (!map->reference) {
        map->set(page, true);
        return storeMap(*pager_, pointer_, *map);
    }
    const std::uint32_t range = page / kJet4.pagesPerBitmap();
    if (range >= map->bitmapPages.size() || map->bitmapPages[range] == 0) return {};
    auto bitmap = copyBitmap(*pager_, map->bitmapPages[range]);
    if (!bitmap) return bitmap.failure();
    setBitmap(*bitmap, page % kJet4.pagesPerBitmap(), true);
    return writeThrough(*pager_, map->bitmapPages[range], *bitmap);
}

Status FreePages::useReferenced(UsageMap map, std::uint32_t page)
{
    const std::uint32_t perBitmap = kJet4.pagesPerBitmap();
    const std::uint32_t range = page / perBitmap;
    if (range >= map.bitmapPages.size()) return tooLarge();
    if (map.bitmapPages[range] != 0) {
        auto bitmap = copyBitmap(*pager_, map.bitmapPages[range]);
        if (!bitmap) return bitmap.failure();
        setBitmap(*bitmap, page % perBitmap, false);
        return writeThrough(*pager_, map.bitmapPages[range], *bitmap);
    }
    Page bitmap = newBitmapPage(true);
    const std::uint32_t number = pager_->pages();
    if (number >= kMostPages) return tooLarge();
    setBitmap(bitmap, page % perBitmap, false);
    if (number / perBitmap == range) setBitmap(bitmap, number % perBitmap, false);
    if (auto written = writeThrough(*pager_, number, bitmap); !written) return written;
    map.bitmapPages[range] = number;
    if (auto done = storeMap(*pager_, pointer_, map); !done) return done;
    return number / perBitmap == range ? Status{} : use(number);
}

Status FreePages::convert(const UsageMap& map, std::uint32_t page)
{
    const std::uint32_t perBitmap = kJet4.pagesPerBitmap();
    const std::uint32_t number = pager_->pages();
    if (number >= kMostPages) return tooLarge();
    Page bitmap = newBitmapPage(true);
    for (std::uint32_t known = 0; known < perBitmap; ++known) {
        const bool used = known == page || known == number || (map.covers(known) && !map.has(known));
        if (used) setBitmap(bitmap, known, false);
    }
    if (auto written = writeThrough(*pager_, number, bitmap); !written) return written;
    UsageMap reference;
    reference.reference = true;
    reference.bitmapPages.assign(kReferences, 0);
    reference.bitmapPages[0] = number;
    if (auto done = storeMap(*pager_, pointer_, reference); !done) return done;
    if (number >= perBitmap) {
        if (auto used = use(number); !used) return used;
    }
    return page >= perBitmap ? use(page) : Status{};
}

Status checkMapPage(Pager& pager, std::uint32_t number)
{
    const auto page = mapPage(pager, number);
    return page ? Status{} : Status(page.failure());
}

Status linkPage(Pager& pager, FreePages& freePages, std::uint32_t owned, std::uint32_t free,
                const std::vector<std::uint32_t>& pages, std::uint32_t page)
{
    const auto map = readMap(pager, owned);
    if (!map) return map.failure();
    auto linked = map->reference ? std::nullopt : linkedInline(*map, page);
    if (!linked) {
        auto all = pages;
        all.push_back(page);
        auto reference = map->reference ? linkedReference(pager, freePages, *map, page)
                                        : referenceMap(pager, freePages, all);
        if (!reference) return reference.failure();
        linked = std::move(*reference);
    }
    auto maps = mapPage(pager, pointerPage(owned));
    if (!maps) return maps.failure();
    if (!putMap(*maps, owned, *linked) || !putMap(*maps, free, onlyPage(page))) return strangeMap();
    return writeThrough(pager, pointerPage(owned), *maps);
}

} // namespace quorvel::jet
