#pragma once

#include "jet/bytes.h"

#include <cstdint>
#include <optional>
#include <string_view>
#include <vector>

/// Index pages of the system tables: sorted keys with the rows they lead to.
///
///     04 01 | u16 free bytes | u32 definition page | ... | 01B: bit k set = an entry ends at 1E0 + k | 1E0: entries
///     entry: key columns | u24 page, high byte first | u8 slot
namespace quorvel::jet {

/// Appends one key column.
void appendLongKey(ByteVector& key, std::uint32_t value);

/// @return false, and appends nothing, when the text holds a character whose weight is not known here: others than
///         printable ASCII.
bool appendTextKey(ByteVector& key, std::string_view text);

/// A key with the row it leads to.
ByteVector indexEntry(ByteVector key, std::uint32_t page, int slot);

/// The leaf of a whole index. @return nothing when the entries do not fit on one page.
std::optional<Page> buildLeaf(std::uint32_t definitionPage, std::vector<ByteVector> entries);

} // namespace quorvel::jet
