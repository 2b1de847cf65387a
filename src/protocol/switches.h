#pragma once

#include "link/transaction.h"
#include "protocol/command.h"

#include <optional>
#include <string_view>

/// The four switches: inversion of a direction, and the exchange of X and Y. State digits are "01" for on and "00" for
/// off; they are characters 8-9 of every command and answer.
namespace quorvel::protocol {

struct SwitchRow {
    CommandId set;
    CommandId query;
    const char* offText; ///< what a query shows
    const char* onText;
};

/// A Y that is on is reported with the text of Z.
inline constexpr SwitchRow kSwitches[] = {
    {CommandId::SetInvertX, CommandId::QueryInvertX, "X direction invert function closed!",
     "X direction invert function opened!"},
    {CommandId::SetInvertY, CommandId::QueryInvertY, "Y direction invert function closed!",
     "Z direction invert function opened!"},
    {CommandId::SetInvertZ, CommandId::QueryInvertZ, "Z direction invert function closed!",
     "Z direction invert function opened!"},
    {CommandId::SetSwap, CommandId::QuerySwap, "X and Y isn't swaped!", "X and Y has swaped!"},
};
/// Places in kSwitches, where a number is needed rather than a row.
enum SwitchNumber { kInvertXRow, kInvertYRow, kInvertZRow, kSwapRow };
inline constexpr const SwitchRow& kSwap = kSwitches[kSwapRow];

link::Transaction switchSet(const SwitchRow& row, std::string_view addressDigits, bool on);
link::Transaction switchQuery(const SwitchRow& row, std::string_view addressDigits);

/// The state in the answer to a query; nothing when it is neither "00" nor "01".
std::optional<bool> switchStateOf(std::string_view reply);

} // namespace quorvel::protocol
