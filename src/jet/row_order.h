#pragma once

#include "jet/value.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace quorvel::jet {

/// The order of rows by the values of some columns, kept small: files have many rows and long texts.
///
/// Null comes first, then numbers and moments by size, then by its letters what is text or no finite number. Texts are
/// compared as far as their first 255 bytes, without regard to the case of A-Z.
class RowOrder {
public:
    /// @param descending  one entry per column.
    /// @param rows        how many rows are going to be added.
    /// @param mostText    bytes of text that may be kept.
    RowOrder(std::vector<bool> descending, std::size_t rows, std::size_t mostText);

    /// Takes the next value: those of a row column by column, then those of the next row.
    /// @return false when its text no longer fits.
    bool add(const Value& value);

    /// The rows in their order, by the number under which each was added.
    std::vector<std::uint32_t> sorted() const;

private:
    struct Key {
        double number = 0;
        std::uint32_t textAt = 0;
        std::uint16_t textBytes = 0;
        std::uint8_t rank = 0;
    };

    std::string_view textOf(const Key& key) const { return {texts_.data() + key.textAt, key.textBytes}; }
    int compare(const Key& a, const Key& b) const;
    bool before(std::uint32_t a, std::uint32_t b) const;

    std::vector<bool> descending_;
    std::size_t mostText_;
    std::vector<Key> keys_;
    std::string texts_;
};

} // namespace quorvel::jet
