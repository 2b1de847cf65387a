#pragma once

#include "link/transaction.h"

#include <array>
#include <cstdint>
#include <string>
#include <string_view>

/// The schedule of a readout's own readings.
///
/// The answer to the query has 19 characters, counted from 1:
///
///     1  ":"   2-3 address   4-5 "06"   6-7 mode   8-9, 10-11, 12-13, 14-15 values   16-19 not looked at
///
/// In interval mode (1) the values are hours, minutes, seconds of the interval and one that is not shown; in any
/// other mode they are four hours of the day.
namespace quorvel::protocol {

/// One interval that can be set. The code is two digits each of hours, minutes and seconds, and "00".
struct IntervalRow {
    std::string_view entry;  ///< as the list shows it
    std::string_view code;   ///< as the frame carries it
    std::string_view option; ///< as the command line takes it
};
inline constexpr IntervalRow kIntervals[] = {
    {"20 seconds", "00002000", "20s"}, {"01 minute", "00010000", "1m"},   {"02 minutes", "00020000", "2m"},
    {"05 minutes", "00050000", "5m"},  {"10 minutes", "00100000", "10m"}, {"20 minutes", "00200000", "20m"},
    {"30 minutes", "00300000", "30m"}, {"01 hour", "01000000", "1h"},
};
inline constexpr int kOneHour = 7; ///< position in kIntervals that is selected at first

inline constexpr auto kChangeMode = "Change AutoReading Mode?";
inline constexpr auto kScheduleSet = "Set OK";
inline constexpr auto kScheduleNotSet = "Set Error";

/// How a readout takes readings on its own.
struct AutoMode {
    static constexpr int kInterval = 1;

    std::int16_t mode = 0; ///< kInterval, or anything else for fixed hours of the day
    std::array<std::int16_t, 4> values{};

    bool isInterval() const { return mode == kInterval; }
};

/// Asks the readout of these two address digits for its mode.
link::Transaction modeQuery(std::string_view addressDigits);

/// What a reply says; fields that are missing or not numbers are 0.
AutoMode readMode(std::string_view reply);

/// True when a reply has its length, its head and digits in all fields, so that it can be relied on.
bool isPlainModeReply(std::string_view reply);

/// The sentence on the present mode, numbers without leading zeros.
std::string modeText(const AutoMode& mode);

/// The question whether to change it: the sentence, a line end, and kChangeMode.
std::string modeQuestion(const AutoMode& mode);

/// Sets interval mode; any complete reply confirms it.
/// @param position  in kIntervals; outside of it the frame carries no interval code.
link::Transaction intervalSet(std::string_view addressDigits, int position);
/// @param code  as in IntervalRow, for an interval that is not among kIntervals.
link::Transaction intervalSet(std::string_view addressDigits, std::string_view code);

} // namespace quorvel::protocol
