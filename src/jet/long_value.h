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
/// Fails when a pointer leads nowhere or the chain does not end.
Result<ByteVector> readLongValue(Pager& pager, Bytes field);

} // namespace quorvel::jet
