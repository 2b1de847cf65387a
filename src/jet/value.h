#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <type_traits>
#include <variant>

/// What a field of a row can hold.
namespace quorvel::jet {

/// Field types, with the numbers that Access gives them. New tables are written with Integer, Long, Single, Double
/// and Date; all are read.
enum class FieldType : std::uint8_t {
    Boolean = 1,     ///< yes/no, never Null
    Byte = 2,        ///< 0..255
    Integer = 3,     ///< 16 bits with sign
    Long = 4,        ///< 32 bits with sign
    Currency = 5,    ///< 64 bits with sign, in 1/10000
    Single = 6,      ///< 32-bit floating point
    Double = 7,      ///< 64-bit floating point
    Date = 8,        ///< date and time of day, see Date
    Binary = 9,      ///< not shown
    Text = 10,       ///< up to 255 characters
    LongBinary = 11, ///< OLE object, not shown
    Memo = 12,       ///< long text
    Guid = 15,       ///< 16 bytes
    Numeric = 16,    ///< up to 28 decimal digits
    Internal = 17,   ///< the engine's own, not shown
};

/// The type's name as Access users know it: "Integer", "Date/Time", "OLE object" ...
std::string_view typeName(FieldType type);

/// A date and time of the proleptic Gregorian calendar, taken apart.
struct Civil {
    int year = 0;        ///< 100..9999
    int month = 0;       ///< 1..12
    int day = 0;         ///< 1..31
    int hour = 0;        ///< 0..23
    int minute = 0;      ///< 0..59
    int second = 0;      ///< 0..59
    int millisecond = 0; ///< 0..999

    friend bool operator==(const Civil&, const Civil&) = default;
};

/// A moment of local time: whole part (towards zero) = days since 1899-12-30, magnitude of the fraction = time of
/// day. Valid from -657434 (year 100) up to, not including, 2958466 (year 10000).
struct Date {
    double serial = 0;

    /// @return nothing when there is no such day or time of day, or the year lies outside 100..9999.
    static std::optional<Date> of(const Civil& civil);

    /// Taken apart, to the millisecond. @return nothing for a serial outside the valid range and for NaN.
    std::optional<Civil> civil() const;

    /// "2024-01-02T03:04:05", with ".250" when there are milliseconds; "" when not valid.
    std::string iso() const;

    friend bool operator==(const Date&, const Date&) = default;
};

/// Money in 1/10000 of a unit.
struct Currency {
    std::int64_t tenThousandths = 0;
    friend bool operator==(const Currency&, const Currency&) = default;
};

/// An exact decimal number in plain digits: "-12.50".
struct Numeric {
    std::string digits;
    friend bool operator==(const Numeric&, const Numeric&) = default;
};

/// A globally unique identifier, bytes in the order in which they are printed.
struct Guid {
    std::array<std::uint8_t, 16> bytes{};
    friend bool operator==(const Guid&, const Guid&) = default;
};

/// Stands for bytes that this module names but does not show: Binary, OLE objects, internal columns.
struct NotShown {
    FieldType type = FieldType::Binary;
    friend bool operator==(const NotShown&, const NotShown&) = default;
};

/// The value of one field: Null, or one of the kinds above. Text is UTF-8.
class Value {
public:
    using Held = std::variant<std::monostate, bool, std::uint8_t, std::int16_t, std::int32_t, float, double,
                              Date, Currency, Numeric, Guid, std::string, NotShown>;

    Value() = default; ///< Null
    template<class T>
    requires(!std::is_same_v<std::remove_cvref_t<T>, Value>)
        Value(T&& held) // NOLINT(google-explicit-constructor,bugprone-forwarding-reference-overload)
        : held_(std::forward<T>(held))
    {}

    bool isNull() const { return held_.index() == 0; }

    /// The number: of Boolean (-1 and 0, as Access counts), Byte, Integer, Long, Currency, Single, Double and
    /// Numeric. @return nothing for Null and the other kinds.
    std::optional<double> number() const;

    /// The moment. @return nothing for Null and the other kinds.
    std::optional<Date> date() const;

    /// For people and text files: numbers with the fewest digits that give the same value back and a decimal
    /// point, times as in Date::iso(), "true"/"false", "" for Null, "(OLE object)" for what is not shown.
    std::string text() const;

    const Held& held() const { return held_; }

    friend bool operator==(const Value&, const Value&) = default;

private:
    Held held_;
};

/// Null, to be set into a field.
inline const Value kNull{};

} // namespace quorvel::jet
