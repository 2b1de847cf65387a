#include "jet/row_order.h"

#include <algorithm>
#include <cmath>
#include <numeric>

namespace quorvel::jet {

namespace {

constexpr std::size_t kComparedBytes = 255;

char lowered(char letter)
{
    return letter >= 'A' && letter <= 'Z' ? static_cast<char>(letter + ('a' - 'A')) : letter;
}

} // namespace

RowOrder::RowOrder(std::vector<bool> descending, std::size_t rows, std::size_t mostText)
    : descending_(std::move(descending)), mostText_(mostText)
{
    keys_.reserve(rows * descending_.size());
}

bool RowOrder::add(const Value& value)
{
    Key& key = keys_.emplace_back();
    if (value.isNull()) return true;
    const auto date = value.date();
    const double number = date ? date->serial : value.number().value_or(NAN);
    if (std::isfinite(number)) {
        key.rank = 1;
        // A serial before 1899-12-30 counts its time of day forward, away from zero.
        const double whole = std::trunc(number);
        key.number = date && number < 0 ? whole + (whole - number) : number;
        return true;
    }
    key.rank = 2;
    auto text = value.text();
    text.resize(std::min(text.size(), kComparedBytes));
    if (text.size() > mostText_ - texts_.size()) return false;
    if (texts_.capacity() < texts_.size() + text.size()) {
        // Doubling would take three times the room for a moment.
        constexpr std::size_t kMore = 1U << 20U;
        texts_.reserve(std::min(mostText_, texts_.size() + texts_.size() / 4 + kMore));
    }
    std::transform(text.begin(), text.end(), text.begin(), lowered);
    key.textAt = static_cast<std::uint32_t>(texts_.size());
    key.textBytes = static_cast<std::uint16_t>(text.size());
    texts_ += text;
    return true;
}

int RowOrder::compare(const Key& a, const Key& b) const
{
    if (a.rank != b.rank) return a.rank < b.rank ? -1 : 1;
    if (a.number != b.number) return a.number < b.number ? -1 : 1;
    return textOf(a).compare(textOf(b));
}

bool RowOrder::before(std::uint32_t a, std::uint32_t b) const
{
    const std::size_t columns = descending_.size();
    for (std::size_t i = 0; i < columns; ++i) {
        const int sign = compare(keys_[a * columns + i], keys_[b * columns + i]);
        if (sign != 0) return descending_[i] ? sign > 0 : sign < 0;
    }
    return a < b;
}

std::vector<std::uint32_t> RowOrder::sorted() const
{
    std::vector<std::uint32_t> order(descending_.empty() ? 0 : keys_.size() / descending_.size());
    std::iota(order.begin(), order.end(), 0U);
    std::sort(order.begin(), order.end(), [this](auto a, auto b) { return before(a, b); });
    return order;
}

} // namespace quorvel::jet
