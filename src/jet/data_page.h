#pragma once

#include "jet/bytes.h"
#include "jet/layout.h"
#include "jet/result.h"

#include <optional>
#include <vector>

/// Data pages: rows of tables, usage maps and long values lie on them.
///
///     Jet 4   00 01 01 | u16 free bytes | u32 owner | u32 0 | u16 slots n | n x u16 slot ... rows, from the end
///     slot    bits 0-12 offset of the row; 4000: moved elsewhere; 8000: deleted or hidden
///
/// A row ends where the row of the slot before it begins; a slot is never used twice.
namespace quorvel::jet {

inline constexpr std::uint8_t kDataPageType = 0x01;
inline constexpr std::uint16_t kMovedSlot = 0x4000;
inline constexpr std::uint16_t kHiddenSlot = 0x8000;
inline constexpr std::uint16_t kDeletedSlot = kMovedSlot | kHiddenSlot;
inline constexpr int kMaxSlots = 255;

/// A page of either version that was found sound: every slot within it, offsets never rising.
class DataPage {
public:
    /// Fails when `page` is not a data page or its slot table does not hold together.
    static Result<DataPage> of(Bytes page, const Layout& layout);

    int slots() const { return slots_; }
    std::uint32_t owner() const { return get32(page_, 4); }

    /// The raw slot, 0 <= slot < slots().
    std::uint16_t slot(int slot) const
    {
        return get16(page_, layout_->slotTable + 2 * static_cast<std::size_t>(slot));
    }
    bool live(int slot) const { return (this->slot(slot) & kDeletedSlot) == 0; }

    /// The bytes of a slot, 0 <= slot < slots(), whatever its state.
    Bytes row(int slot) const;

private:
    DataPage(Bytes page, const Layout& layout, int slots) : page_(page), layout_(&layout), slots_(slots) {}

    Bytes page_;
    const Layout* layout_;
    int slots_;
};

/// An empty Jet 4 data page.
Page newDataPage(std::uint32_t owner);

/// Adds a row to a sound Jet 4 page. @return its slot; nothing when it does not fit, and the page is unchanged.
std::optional<int> addRow(Page& page, Bytes row);

/// How a page that got one row by addRow() comes to the disk so that it never shows a slot without its row, even when
/// only some of its 512-byte sectors arrive: the images to be written, each on the disk before the next. The last is
/// `after`.
std::vector<Page> stepsTo(Bytes before, const Page& after);

/// Takes the row of a live slot out of a sound Jet 4 page: its slot says that it is deleted. No other row moves, and only
/// one sector of the page changes. The slot stays used.
void eraseRow(Page& page, int slot);

/// Where the bytes of a slot of a sound Jet 4 page begin in it.
std::size_t rowOffset(const Page& page, int slot);

} // namespace quorvel::jet
