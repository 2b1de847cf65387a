#pragma once

#include "jet/result.h"
#include "jet/value.h"

namespace quorvel::jet {

/// A value as a field of this type holds it. Whole-number types round halves to the even neighbour. Null stays Null.
/// Fails for a number out of range or not finite, for a kind that does not fit, and for types that are not written.
Result<Value> fitTo(FieldType type, const Value& value);

} // namespace quorvel::jet
