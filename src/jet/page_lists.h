#pragma once

#include "jet/pager.h"
#include "jet/result.h"
#include "jet/usage_map.h"

#include <cstdint>
#include <vector>

/// Which pages of a Jet 4 file are free, and which belong to a table. Written in an order that leaves a sound file
/// after each single page write.
namespace quorvel::jet {

/// The map of free pages of the whole file. Pages behind its range count as free.
class FreePages {
public:
    /// @param pointer  row pointer of the map, from the header.
    FreePages(Pager& pager, std::uint32_t pointer) : pager_(&pager), pointer_(pointer) {}

    /// The first free page from `from` on inside the file, else the one right behind its end.
    /// Fails when the file would pass 2 GB.
    Result<std::uint32_t> firstFrom(std::uint32_t from);

    Result<bool> isFree(std::uint32_t page);

    /// Fails when the map cannot be written, or calls a page free that is one of `used`, of its own pages or of the
    /// pages 0 to 5 that every file needs. Must succeed before the calls below.
    Status check(std::vector<std::uint32_t> used);

    /// Marks a page as used; the map grows when it must.
    Status use(std::uint32_t page);

    /// Marks a page inside the map's range as free again.
    Status release(std::uint32_t page);

private:
    Status useReferenced(UsageMap map, std::uint32_t page);
    Status convert(const UsageMap& map, std::uint32_t page);

    Pager* pager_;
    std::uint32_t pointer_;
};

/// Fails when a page of maps holds more than maps: it cannot be laid out again then.
Status checkMapPage(Pager& pager, std::uint32_t number);

/// Adds a page to a table's map of owned pages and makes it the one page with free space.
///
/// @param owned, free  row pointers of the two maps, which lie on the same page.
/// @param pages        the pages owned so far.
Status linkPage(Pager& pager, FreePages& freePages, std::uint32_t owned, std::uint32_t free,
                const std::vector<std::uint32_t>& pages, std::uint32_t page);

} // namespace quorvel::jet
