#pragma once

#include "jet/bytes.h"
#include "jet/pager.h"
#include "jet/result.h"

namespace quorvel::jet {

/// The bytes of a memo or OLE value.
///
///     in the row   u32 length (low 30 bits) and kind | row pointer | u32 0 | data, when kept in the row
///     kind         80000000 in the row; 40000000 one piece elsewhere; 0 a chain of pieces, each led by the
///                  pointer to the next
///
/// Fails when a pointer leads nowhere, when the chain does not end, and when the value is longer than
/// kMostLongValue or than `most`.
/// @param most  bytes that may still be read.
Result<ByteVector> readLongValue(Pager& pager, Bytes field, std::size_t most);

/// Longer texts are not read: pieces that lead to each other make a small file claim any length.
inline constexpr std::size_t kMostLongValue = std::size_t{1} << 20U;
inline constexpr std::size_t kMostLongValuesOfRow = 2 * kMostLongValue;

} // namespace quorvel::jet
