#include "sim/civil.h"

#include "sim/text.h"

#include <chrono>
#include <cmath>
#include <ctime>

namespace quorvelsim {

namespace {

/// Reads six two-digit numbers, `step` characters apart; the first is the year within the century.
std::optional<CivilSeconds> sixPairs(std::string_view text, std::size_t step)
{
    int pairs[6] = {};
    for (std::size_t i = 0; i < 6; ++i) {
        const auto pair = decimal(mid(text, 1 + i * step, 2));
        if (!pair) return std::nullopt;
        pairs[i] = *pair;
    }
    return civilOf({2000 + pairs[0], pairs[1], pairs[2], pairs[3], pairs[4], pairs[5]});
}

} // namespace

CivilParts partsOf(CivilSeconds time)
{
    const auto day = time >= 0 ? time / kDay : (time - kDay + 1) / kDay;
    const std::chrono::year_month_day date{std::chrono::sys_days{std::chrono::days{day}}};
    const auto rest = static_cast<int>(time - day * kDay);
    return {static_cast<int>(date.year()),
            static_cast<int>(static_cast<unsigned>(date.month())),
            static_cast<int>(static_cast<unsigned>(date.day())),
            rest / 3600,
            rest / 60 % 60,
            rest % 60};
}

std::optional<CivilSeconds> civilOf(const CivilParts& parts)
{
    if (parts.year < 2000 || parts.year > 2099 || parts.month < 1 || parts.day < 1) return std::nullopt;
    if (parts.hour < 0 || parts.hour > 23 || parts.minute < 0 || parts.minute > 59) return std::nullopt;
    if (parts.second < 0 || parts.second > 59) return std::nullopt;
    const std::chrono::year_month_day date{std::chrono::year{parts.year},
                                           std::chrono::month{static_cast<unsigned>(parts.month)},
                                           std::chrono::day{static_cast<unsigned>(parts.day)}};
    if (!date.ok()) return std::nullopt;
    const CivilSeconds day = std::chrono::sys_days{date}.time_since_epoch().count();
    return day * kDay + parts.hour * kHour + parts.minute * kMinute + parts.second;
}

std::string busTime(CivilSeconds time)
{
    const auto parts = partsOf(time);
    return digits(parts.year % 100, 2) + digits(parts.month, 2) + digits(parts.day, 2) +
           digits(parts.hour, 2) + digits(parts.minute, 2) + digits(parts.second, 2);
}

std::optional<CivilSeconds> fromBusTime(std::string_view text)
{
    return text.size() == 12 ? sixPairs(text, 2) : std::nullopt;
}

std::string isoTime(CivilSeconds time)
{
    const auto parts = partsOf(time);
    return digits(parts.year, 4) + "-" + digits(parts.month, 2) + "-" + digits(parts.day, 2) + "T" +
           digits(parts.hour, 2) + ":" + digits(parts.minute, 2) + ":" + digits(parts.second, 2);
}

std::optional<CivilSeconds> fromIsoTime(std::string_view text)
{
    const auto time =
        text.size() == 19 && text.substr(0, 2) == "20" ? sixPairs(text.substr(2), 3) : std::nullopt;
    // Written back, it must be the same text: that checks the separators.
    return time && isoTime(*time) == text ? time : std::nullopt;
}

CivilSeconds pcTime()
{
    const std::time_t now = std::time(nullptr);
    const std::tm* const found = std::localtime(&now); // NOLINT(concurrency-mt-unsafe)
    const std::tm local = found != nullptr ? *found : std::tm{};
    const auto time = civilOf({local.tm_year + 1900, local.tm_mon + 1, local.tm_mday, local.tm_hour,
                               local.tm_min, local.tm_sec % 60});
    return time.value_or(now);
}

CivilSeconds ReadoutClock::at(double now) const
{
    return static_cast<CivilSeconds>(std::floor(atStart_ + now));
}

} // namespace quorvelsim
