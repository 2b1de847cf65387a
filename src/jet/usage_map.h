#pragma once

#include "jet/bytes.h"
#include "jet/layout.h"
#include "jet/pager.h"
#include "jet/result.h"

#include <cstdint>
#include <vector>

/// Usage maps: sets of pages, each a row on a data page.
///
///     inline      00 | u32 start page | bits, one per page from there on
///     reference   01 | u32 bitmap page, 17 times (Jet 3: 33); 0: none of that range
///     bitmap page 05 01 00 00 | bits
namespace quorvel::jet {

struct UsageMap {
    bool reference = false;
    std::uint32_t start = 0;                ///< inline: page of the first bit
    ByteVector bits;                        ///< inline
    std::vector<std::uint32_t> bitmapPages; ///< reference

    /// Inline only.
    bool covers(std::uint32_t page) const { return page >= start && (page - start) / 8 < bits.size(); }
    bool has(std::uint32_t page) const
    {
        return covers(page) && (bits[(page - start) / 8] >> ((page - start) % 8) & 1) != 0;
    }
    void set(std::uint32_t page, bool on);
    bool empty() const; ///< no bit set; inline only

    /// The bitmap pages that there are.
    std::vector<std::uint32_t> ownPages() const;
};

/// Fails when the row is no map.
Result<UsageMap> parseMap(Bytes row);
ByteVector encodeMap(const UsageMap& map);

/// Reads the map that a row pointer leads to. Fails when it leads nowhere.
Result<UsageMap> readMap(Pager& pager, std::uint32_t pointer);

/// The pages of a set, rising, with the first one behind the end of the file as the last. Fails when a bitmap page is
/// missing.
Result<std::vector<std::uint32_t>> pagesOf(Pager& pager, const UsageMap& map);

/// Length in whole u32 steps of an inline bitmap that reaches from `start` to `page`.
std::size_t bitmapBytes(std::uint32_t start, std::uint32_t page);

/// Bitmap pages.
inline constexpr std::uint8_t kBitmapPageType = 0x05;
Page newBitmapPage(bool allSet);
bool bitmapHas(Bytes page, std::uint32_t bit);
void setBitmap(Page& page, std::uint32_t bit, bool on);

/// A bitmap page read and found to be one; the bytes are good until the pager is used again.
Result<Bytes> readBitmap(Pager& pager, std::uint32_t number);
Result<Page> copyBitmap(Pager& pager, std::uint32_t number);

} // namespace quorvel::jet
