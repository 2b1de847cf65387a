#include "jet/index_leaf.h"

#include <algorithm>

namespace quorvel::jet {

namespace {

constexpr std::size_t kMaskStart = 0x1B;
constexpr std::size_t kEntryStart = 0x1E0;
constexpr std::uint8_t kKeyFollows = 0x7F;

/// Weights of the characters in place; a weight over FF is two bytes. Letters weigh the same in both cases.
struct Weight {
    char character;
    std::uint16_t weight;
};

constexpr std::uint8_t kLetterWeights[] = {0x4a, 0x4c, 0x4d, 0x4f, 0x51, 0x53, 0x55, 0x57, 0x59,
                                           0x5b, 0x5c, 0x5e, 0x60, 0x62, 0x64, 0x66, 0x68, 0x69,
                                           0x6b, 0x6d, 0x6f, 0x71, 0x73, 0x75, 0x76, 0x78};
constexpr Weight kWeights[] = {
    {' ', 0x07},   {'!', 0x09},   {'"', 0x0a},   {'#', 0x0c},   {'$', 0x0e},   {'%', 0x10},   {'&', 0x12},
    {'(', 0x14},   {')', 0x16},   {'*', 0x18},   {'+', 0x2c},   {',', 0x1a},   {'.', 0x1c},   {'/', 0x1e},
    {':', 0x20},   {';', 0x22},   {'<', 0x2e},   {'=', 0x30},   {'>', 0x32},   {'?', 0x24},   {'@', 0x26},
    {'[', 0x27},   {'\\', 0x29},  {']', 0x2a},   {'^', 0x2b02}, {'_', 0x2b03}, {'`', 0x2b07}, {'{', 0x2b09},
    {'|', 0x2b0b}, {'}', 0x2b0d}, {'~', 0x2b0f},
};

/// 0 when the character is not known.
std::uint16_t weightOf(char character)
{
    if (character >= 'A' && character <= 'Z') return kLetterWeights[character - 'A'];
    if (character >= 'a' && character <= 'z') return kLetterWeights[character - 'a'];
    if (character >= '0' && character <= '9') return static_cast<std::uint16_t>(0x36 + 2 * (character - '0'));
    const auto* found = std::find_if(std::begin(kWeights), std::end(kWeights),
                                     [character](const Weight& row) { return row.character == character; });
    return found != std::end(kWeights) ? found->weight : 0;
}

} // namespace

void appendLongKey(ByteVector& key, std::uint32_t value)
{
    append8(key, kKeyFollows);
    append32BigEndian(key, value ^ 0x80000000);
}

bool appendTextKey(ByteVector& key, std::string_view text)
{
    ByteVector place{kKeyFollows};
    ByteVector tail;
    unsigned placed = 0;
    while (!text.empty() && text.back() == ' ')
        text.remove_suffix(1);
    for (const char character : text.substr(0, 255)) {
        if (character == '\'' || character == '-') {
            // These two do not count for the order of words: they come last, with their places.
            const unsigned at = 0x8000 | (7 + 4 * placed);
            for (const unsigned byte : {at >> 8, at & 0xFF, 6U, character == '-' ? 0x82U : 0x80U}) {
                append8(tail, static_cast<std::uint8_t>(byte));
            }
            continue;
        }
        const std::uint16_t weight = weightOf(character);
        if (weight == 0) return false;
        if (weight > 0xFF) append8(place, static_cast<std::uint8_t>(weight >> 8));
        append8(place, static_cast<std::uint8_t>(weight & 0xFF));
        ++placed;
    }
    append8(place, 1);
    if (!tail.empty()) place.insert(place.end(), {1, 1, 1});
    appendBytes(key, place);
    appendBytes(key, tail);
    append8(key, 0);
    return true;
}

ByteVector indexEntry(ByteVector key, std::uint32_t page, int slot)
{
    append32BigEndian(key, page << 8 | static_cast<std::uint32_t>(slot));
    return key;
}

std::optional<Page> buildLeaf(std::uint32_t definitionPage, std::vector<ByteVector> entries)
{
    std::sort(entries.begin(), entries.end(), [](const ByteVector& a, const ByteVector& b) {
        return std::lexicographical_compare(a.begin(), a.end(), b.begin(), b.end());
    });
    Page page{};
    put16(page, 0, 0x0104);
    put32(page, 4, definitionPage);
    std::size_t end = 0;
    for (const auto& entry : entries) {
        if (kEntryStart + end + entry.size() > kPageSize) return std::nullopt;
        putBytes(page, kEntryStart + end, entry);
        end += entry.size();
        // An entry that fills the page to its last byte has its bit where no entry begins; the mask has room.
        auto& byte = page[kMaskStart + end / 8];
        byte = static_cast<std::uint8_t>(byte | 1U << (end % 8));
    }
    put16(page, 2, static_cast<std::uint16_t>(kPageSize - kEntryStart - end));
    return page;
}

} // namespace quorvel::jet
