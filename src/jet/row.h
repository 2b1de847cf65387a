#pragma once

#include "jet/bytes.h"
#include "jet/definition.h"
#include "jet/layout.h"
#include "jet/pager.h"
#include "jet/result.h"
#include "jet/value.h"

#include <vector>

/// Rows as bytes.
///
///     Jet 4   u16 columns | fixed columns | [variable data | (n+1) x u16 offsets, last first | u16 n] | null mask
///     Jet 3   the same with u8, and jump bytes that lift offsets over 255
///
/// In the null mask a 1 says that there is a value; a yes/no column is nothing but its bit.
namespace quorvel::jet {

/// Reads a row into one value per column of the definition. Long values are fetched through `pager`, so `row` must
/// not lie in one of its pages.
/// Fails when the row does not hold together or holds texts that are too long to be read (readLongValue()); `values`
/// are then Null.
///
/// @param wanted  positions of the columns to be read, the others stay Null; all when empty.
Status decodeRow(Bytes row, const Definition& definition, std::uint16_t codePage, Pager& pager,
                 std::vector<Value>& values, const std::vector<std::size_t>& wanted = {});

/// The bytes of a row of fixed columns only, one value per column, each Null or of the column's own type.
ByteVector encodeRow(const Definition& definition, const std::vector<Value>& values);

/// Bytes of a row of fixed columns only.
std::size_t rowBytes(const Definition& definition);

/// Puts values into the bytes of a row that encodeRow() made. Setting Null leaves the value bytes as they are.
void changeRow(MutableBytes row, const Definition& definition, const std::vector<Value>& values);

/// The bytes of a row with variable columns: the catalog's.
///
/// @param fixed     the whole fixed area.
/// @param variable  one entry per variable column, empty for Null.
/// @param present   per column number, whether there is a value.
ByteVector encodeCatalogRow(const ByteVector& fixed, const std::vector<ByteVector>& variable,
                            const std::vector<bool>& present);

} // namespace quorvel::jet
