#pragma once

#include "link/bench.h"
#include "settings/exchange.h"

#include <optional>
#include <string_view>

/// The talk of the four switches: inversion of a direction, and the exchange of X and Y. State digits are "01" for on
/// and "00" for off; they stand in characters 8-9 of every command and answer.
namespace quorvel::settings {

struct SwitchRow {
    const char* caption;
    const char* list; ///< names of its controls; the directions share those of their buttons
    const char* queryButton;
    const char* setButton;
    std::string_view queryCommand;
    std::string_view setCode; ///< command digits before the state
    const char* offText;      ///< what a query shows
    const char* onText;
};

/// A Y that is on is reported with the text of Z.
inline constexpr SwitchRow kSwitches[] = {
    {"X Direction", "Combo1", "Command1", "Command2", "7704FF", "7703", "X direction invert function closed!",
     "X direction invert function opened!"},
    {"Y Direction", "Combo2", "Command1", "Command2", "7706FF", "7705", "Y direction invert function closed!",
     "Z direction invert function opened!"},
    {"Z Direction", "Combo3", "Command1", "Command2", "7708FF", "7707", "Z direction invert function closed!",
     "Z direction invert function opened!"},
    {"Swap X and Y", "Combo4", "Command3", "Command4", "7702FF", "7701", "X and Y isn't swaped!",
     "X and Y has swaped!"},
};
/// Places in kSwitches, where a number is needed rather than a row.
enum SwitchNumber { kInvertXRow, kInvertYRow, kInvertZRow, kSwapRow };
inline constexpr const SwitchRow& kSwap = kSwitches[kSwapRow];

Exchange switchSet(const SwitchRow& row, std::string_view addressDigits, bool on);
Exchange switchQuery(const SwitchRow& row, std::string_view addressDigits);

/// The state in the answer to a query; nothing when it is neither "00" nor "01".
std::optional<bool> switchStateOf(std::string_view reply);

} // namespace quorvel::settings
