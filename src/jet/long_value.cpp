#include "jet/long_value.h"

#include "jet/data_page.h"

#include <algorithm>

namespace quorvel::jet {

namespace {

constexpr std::size_t kFieldBytes = 12;
constexpr std::uint32_t kLengthBits = 0x3FFFFFFF;
constexpr std::uint32_t kInRow = 0x80000000;
constexpr std::uint32_t kOnePiece = 0x40000000;
constexpr std::uint32_t kLongValueOwner = 0x4C41564C; // "LVAL"

Failure damagedLongValue()
{
    return Failure{
        "is damaged: a long text cannot be read. Use \"Compact and Repair\" in Access, or an earlier "
        "copy."};
}

Failure tooLongToRead()
{
    return Failure{
        "holds texts of more than 1 MB in a field or 2 MB in a row, which are not read. Shorten them "
        "in Access."};
}

Result<ByteVector> pieceAt(Pager& pager, std::uint32_t pointer)
{
    const auto bytes = pager.read(pointerPage(pointer));
    if (!bytes) return bytes.failure();
    const auto page = DataPage::of(*bytes, pager.layout());
    if (!page || pointerPage(pointer) == 0 || page->owner() != kLongValueOwner ||
        pointerSlot(pointer) >= page->slots()) {
        return damagedLongValue();
    }
    const auto row = page->row(pointerSlot(pointer));
    return ByteVector(row.begin(), row.end());
}

} // namespace

Result<ByteVector> readLongValue(Pager& pager, Bytes field, std::size_t most)
{
    if (field.size() < kFieldBytes) return damagedLongValue();
    const std::size_t length = get32(field, 0) & kLengthBits;
    if (length > std::min(most, kMostLongValue)) return tooLongToRead();
    std::uint32_t pointer = get32(field, 4);
    ByteVector value;
    if ((get32(field, 0) & kInRow) != 0) {
        if (length > field.size() - kFieldBytes) return damagedLongValue();
        appendBytes(value, field.subspan(kFieldBytes, length));
        return value;
    }
    const bool chained = (get32(field, 0) & kOnePiece) == 0;
    value.reserve(length);
    // A sound chain has at most one piece per page of the file.
    for (std::uint32_t hops = 0; value.size() < length && pointer != 0; ++hops) {
        if (hops > pager.pages()) return damagedLongValue();
        const auto piece = pieceAt(pager, pointer);
        if (!piece) return piece.failure();
        if (chained && piece->size() < 4) return damagedLongValue();
        pointer = chained ? get32(*piece, 0) : 0;
        appendBytes(value, part(*piece, chained ? 4 : 0, length - value.size()));
    }
    return value;
}

} // namespace quorvel::jet
