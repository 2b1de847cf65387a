#include "jet/value.h"

#include <charconv>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <cstdlib>

namespace quorvel::jet {

namespace {

constexpr double kFirstSerial = -657434;
constexpr double kEndSerial = 2958466;
constexpr std::int64_t kDayMilliseconds = 86400000;

// Days from 1899-12-30 to 1970-01-01, where the calendar of <chrono> begins to count.
constexpr std::int64_t kEpochSerial = 25569;

struct TypeName {
    FieldType type;
    std::string_view name;
};

constexpr TypeName kTypeNames[] = {
    {FieldType::Boolean, "Yes/No"},
    {FieldType::Byte, "Byte"},
    {FieldType::Integer, "Integer"},
    {FieldType::Long, "Long"},
    {FieldType::Currency, "Currency"},
    {FieldType::Single, "Single"},
    {FieldType::Double, "Double"},
    {FieldType::Date, "Date/Time"},
    {FieldType::Binary, "Binary"},
    {FieldType::Text, "Text"},
    {FieldType::LongBinary, "OLE object"},
    {FieldType::Memo, "Memo"},
    {FieldType::Guid, "GUID"},
    {FieldType::Numeric, "Numeric"},
    {FieldType::Internal, "Internal"},
};

template<class T>
std::string shortest(T number)
{
    char text[32];
    const auto end = std::to_chars(std::begin(text), std::end(text), number).ptr;
    return {std::begin(text), end};
}

std::string currencyText(Currency money)
{
    const bool negative = money.tenThousandths < 0;
    // Through unsigned: the smallest 64-bit number has no positive twin.
    const auto bits = static_cast<std::uint64_t>(money.tenThousandths);
    const std::uint64_t magnitude = negative ? 0 - bits : bits;
    char text[32];
    std::snprintf(std::begin(text), std::size(text), "%s%llu.%04llu", negative ? "-" : "",
                  static_cast<unsigned long long>(magnitude / 10000),
                  static_cast<unsigned long long>(magnitude % 10000));
    return std::begin(text);
}

std::string guidText(const Guid& guid)
{
    std::string text = "{";
    for (std::size_t i = 0; i < guid.bytes.size(); ++i) {
        if (i == 4 || i == 6 || i == 8 || i == 10) text += '-';
        text += "0123456789ABCDEF"[guid.bytes[i] >> 4];
        text += "0123456789ABCDEF"[guid.bytes[i] & 15];
    }
    return text + "}";
}

struct ToText {
    std::string operator()(std::monostate) const { return {}; }
    std::string operator()(bool held) const { return held ? "true" : "false"; }
    std::string operator()(std::uint8_t held) const { return shortest(static_cast<int>(held)); }
    std::string operator()(std::int16_t held) const { return shortest(held); }
    std::string operator()(std::int32_t held) const { return shortest(held); }
    std::string operator()(float held) const { return shortest(held); }
    std::string operator()(double held) const { return shortest(held); }
    std::string operator()(const Date& held) const { return held.iso(); }
    std::string operator()(const Currency& held) const { return currencyText(held); }
    std::string operator()(const Numeric& held) const { return held.digits; }
    std::string operator()(const Guid& held) const { return guidText(held); }
    std::string operator()(const std::string& held) const { return held; }
    std::string operator()(const NotShown& held) const
    {
        std::string text(1, '(');
        text.append(typeName(held.type)).push_back(')');
        return text;
    }
};

struct ToNumber {
    std::optional<double> operator()(bool held) const { return held ? -1 : 0; }
    std::optional<double> operator()(std::uint8_t held) const { return held; }
    std::optional<double> operator()(std::int16_t held) const { return held; }
    std::optional<double> operator()(std::int32_t held) const { return held; }
    std::optional<double> operator()(float held) const { return held; }
    std::optional<double> operator()(double held) const { return held; }
    std::optional<double> operator()(const Currency& held) const
    {
        return static_cast<double>(held.tenThousandths) / 10000;
    }
    std::optional<double> operator()(const Numeric& held) const
    {
        double number = 0;
        std::from_chars(held.digits.data(), held.digits.data() + held.digits.size(), number);
        return number;
    }
    template<class Other>
    std::optional<double> operator()(const Other&) const
    {
        return std::nullopt;
    }
};

} // namespace

std::string_view typeName(FieldType type)
{
    for (const auto& row : kTypeNames) {
        if (row.type == type) return row.name;
    }
    return "Unknown";
}

std::optional<Date> Date::of(const Civil& civil)
{
    using namespace std::chrono;
    const auto inside = [](int value, int low, int high) { return value >= low && value <= high; };
    const year_month_day day{year(civil.year), month(static_cast<unsigned>(civil.month)),
                             std::chrono::day(static_cast<unsigned>(civil.day))};
    if (!inside(civil.year, 100, 9999) || !inside(civil.month, 1, 12) || !inside(civil.day, 1, 31) ||
        !day.ok() || !inside(civil.hour, 0, 23) || !inside(civil.minute, 0, 59) ||
        !inside(civil.second, 0, 59) || !inside(civil.millisecond, 0, 999)) {
        return std::nullopt;
    }
    const auto days = static_cast<double>(sys_days(day).time_since_epoch().count() + kEpochSerial);
    const int milliseconds =
        ((civil.hour * 60 + civil.minute) * 60 + civil.second) * 1000 + civil.millisecond;
    const double fraction = milliseconds / static_cast<double>(kDayMilliseconds);
    return Date{days < 0 ? days - fraction : days + fraction};
}

std::optional<Civil> Date::civil() const
{
    // Written so that NaN fails as well.
    if (!(serial >= kFirstSerial && serial < kEndSerial)) return std::nullopt;
    const double whole = std::trunc(serial);
    auto days = static_cast<std::int64_t>(whole);
    auto rest = static_cast<std::int64_t>(std::llround(std::fabs(serial - whole) * kDayMilliseconds));
    if (rest >= kDayMilliseconds) {
        rest -= kDayMilliseconds;
        ++days;
    }
    using namespace std::chrono;
    const year_month_day day{sys_days(std::chrono::days(days - kEpochSerial))};
    const auto part = [&rest](std::int64_t size) {
        const auto count = static_cast<int>(rest / size);
        rest %= size;
        return count;
    };
    Civil civil{int(day.year()), static_cast<int>(unsigned(day.month())),
                static_cast<int>(unsigned(day.day()))};
    if (civil.year < 100 || civil.year > 9999) return std::nullopt;
    civil.hour = part(3600000);
    civil.minute = part(60000);
    civil.second = part(1000);
    civil.millisecond = static_cast<int>(rest);
    return civil;
}

std::string Date::iso() const
{
    const auto parts = civil();
    if (!parts) return {};
    char text[48];
    std::snprintf(std::begin(text), std::size(text), "%04d-%02d-%02dT%02d:%02d:%02d", parts->year,
                  parts->month, parts->day, parts->hour, parts->minute, parts->second);
    std::string iso = std::begin(text);
    if (parts->millisecond != 0) {
        std::snprintf(std::begin(text), std::size(text), ".%03d", parts->millisecond);
        iso += std::begin(text);
    }
    return iso;
}

std::optional<double> Value::number() const { return std::visit(ToNumber{}, held_); }

std::optional<jet::Date> Value::date() const
{
    const auto* held = std::get_if<Date>(&held_);
    return held != nullptr ? std::optional(*held) : std::nullopt;
}

std::string Value::text() const { return std::visit(ToText{}, held_); }

} // namespace quorvel::jet
