#include "jet/text_coding.h"

#include <algorithm>

namespace quorvel::jet {

namespace {

constexpr char32_t kNoCharacter = 0xFFFD;

// Characters 80..9F of code page 1252; 0 where it has none.
constexpr char16_t kWestern[] = {
    0x20AC, 0,      0x201A, 0x0192, 0x201E, 0x2026, 0x2020, 0x2021, 0x02C6, 0x2030, 0x0160,
    0x2039, 0x0152, 0,      0x017D, 0,      0,      0x2018, 0x2019, 0x201C, 0x201D, 0x2022,
    0x2013, 0x2014, 0x02DC, 0x2122, 0x0161, 0x203A, 0x0153, 0,      0x017E, 0x0178,
};

void appendUtf8(std::string& text, char32_t character)
{
    const auto put = [&text](char32_t byte) { text += static_cast<char>(static_cast<unsigned char>(byte)); };
    if (character < 0x80) {
        put(character);
    } else if (character < 0x800) {
        put(0xC0 | character >> 6);
        put(0x80 | (character & 0x3F));
    } else if (character < 0x10000) {
        put(0xE0 | character >> 12);
        put(0x80 | (character >> 6 & 0x3F));
        put(0x80 | (character & 0x3F));
    } else {
        put(0xF0 | character >> 18);
        put(0x80 | (character >> 12 & 0x3F));
        put(0x80 | (character >> 6 & 0x3F));
        put(0x80 | (character & 0x3F));
    }
}

bool isHigh(char16_t unit) { return unit >= 0xD800 && unit < 0xDC00; }

bool isLow(char16_t unit) { return unit >= 0xDC00 && unit < 0xE000; }

std::string utf8Of(const std::u16string& units)
{
    std::string text;
    text.reserve(units.size());
    for (std::size_t i = 0; i < units.size(); ++i) {
        const char16_t unit = units[i];
        if (isHigh(unit) && i + 1 < units.size() && isLow(units[i + 1])) {
            const auto high = static_cast<char32_t>(unit - 0xD800);
            const auto low = static_cast<char32_t>(units[++i] - 0xDC00);
            appendUtf8(text, 0x10000 + (high << 10 | low));
        } else {
            appendUtf8(text, isHigh(unit) || isLow(unit) ? kNoCharacter : char32_t{unit});
        }
    }
    return text;
}

std::u16string expand(Bytes stored)
{
    std::u16string units;
    bool narrow = true;
    for (std::size_t i = 2; i < stored.size();) {
        if (stored[i] == 0) {
            narrow = !narrow;
            ++i;
        } else if (narrow) {
            units += static_cast<char16_t>(stored[i++]);
        } else {
            if (i + 1 < stored.size()) units += static_cast<char16_t>(get16(stored, i));
            i += 2;
        }
    }
    return units;
}

/// The character that begins at `at`, which moves behind it. @return nothing when there is no valid one.
std::optional<char32_t> takeUtf8(std::string_view text, std::size_t& at)
{
    const auto byte = [&text](std::size_t i) { return static_cast<unsigned char>(text[i]); };
    const unsigned char first = byte(at);
    if (first < 0x80) return text[at++];
    const int more = first >= 0xF0 ? 3 : first >= 0xE0 ? 2 : 1;
    if (first < 0xC2 || first > 0xF4 || at + static_cast<std::size_t>(more) >= text.size())
        return std::nullopt;
    auto character = static_cast<char32_t>(first & (0x3F >> more));
    for (int i = 1; i <= more; ++i) {
        const unsigned char next = byte(at + static_cast<std::size_t>(i));
        if ((next & 0xC0) != 0x80) return std::nullopt;
        character = character << 6 | (next & 0x3F);
    }
    constexpr char32_t kSmallest[] = {0, 0x80, 0x800, 0x10000};
    const bool surrogate = character >= 0xD800 && character < 0xE000;
    if (character < kSmallest[more] || character > 0x10FFFF || surrogate) return std::nullopt;
    at += static_cast<std::size_t>(more) + 1;
    return character;
}

} // namespace

std::string decodeText(Bytes stored)
{
    if (stored.size() >= 2 && stored[0] == 0xFF && stored[1] == 0xFE) return utf8Of(expand(stored));
    std::u16string units;
    for (std::size_t i = 0; i + 1 < stored.size(); i += 2) {
        units += static_cast<char16_t>(get16(stored, i));
    }
    return utf8Of(units);
}

std::string decodeAnsi(Bytes stored, std::uint16_t codePage)
{
    std::string text;
    for (const std::uint8_t byte : stored) {
        char32_t character = byte;
        if (byte >= 0x80 && codePage != 1252) {
            character = kNoCharacter;
        } else if (byte >= 0x80 && byte < 0xA0) {
            character = kWestern[byte - 0x80] != 0 ? kWestern[byte - 0x80] : kNoCharacter;
        }
        appendUtf8(text, character);
    }
    return text;
}

std::optional<ByteVector> encodeText(std::string_view text)
{
    ByteVector stored;
    for (std::size_t at = 0; at < text.size();) {
        const auto character = takeUtf8(text, at);
        if (!character) return std::nullopt;
        if (*character < 0x10000) {
            append16(stored, static_cast<std::uint16_t>(*character));
        } else {
            append16(stored, static_cast<std::uint16_t>(0xD800 + ((*character - 0x10000) >> 10)));
            append16(stored, static_cast<std::uint16_t>(0xDC00 + (*character & 0x3FF)));
        }
    }
    return stored;
}

bool sameName(std::string_view a, std::string_view b)
{
    const auto lower = [](char letter) {
        return letter >= 'A' && letter <= 'Z' ? letter + ('a' - 'A') : +letter;
    };
    return std::equal(a.begin(), a.end(), b.begin(), b.end(),
                      [lower](char one, char other) { return lower(one) == lower(other); });
}

} // namespace quorvel::jet
