#pragma once

#include "sim/readout.h"

#include <optional>
#include <string>
#include <string_view>

namespace quorvelsim {

struct Command;

/// A frame that is addressed to a readout and has the form of a command.
struct Request {
    const Command* command = nullptr;
    std::string_view frame;     ///< from ":" to "FF", without the line end
    std::string_view parameter; ///< what stands between the command digits and "FF"
    double now = 0;             ///< seconds since the start of the bus
};

/// One row of the protocol. A set command changes the readout and is answered by its own frame; a query is
/// answered by the address, the command digits, the fields and "FF".
///
///     :AA<code><parameter>FF CR LF          command and answer to a set command
///     :AA<code><fields>FF CR LF             answer to a query
struct Command {
    std::string_view code;
    std::size_t parameterLength; ///< characters between code and "FF"
    int which;                   ///< axis, sensor or switch that the row is about; 0 where there is none
    bool (*set)(Readout&, const Request&);                         ///< false: refused, no answer
    std::optional<std::string> (*query)(Readout&, const Request&); ///< fields; nothing: no answer
    std::size_t numberAt = 0; ///< 1-based position in the answer of its first number; 0 when it has none
    std::size_t numberWidth = 0;
    std::size_t dateAt = 0;  ///< likewise of a date YYMMDD
    std::size_t countAt = 0; ///< likewise of a pixel count of four hex digits
};

/// The digits of the search, the one command that goes to all readouts at once.
inline constexpr std::string_view kSearchCode = "01";
inline constexpr int kBroadcast = 255;

/// The digits of the question for a stored record.
inline constexpr std::string_view kRecordCode = "24";

/// The row whose digits these are; null when there is none.
const Command* findCommand(std::string_view code);

/// True when the code of a command, the search included, begins with these digits.
bool beginsACommand(std::string_view digits);

/// The command in a frame's text behind the address ("2101FF"), with its parameter; nothing when it is none.
std::optional<Request> parseCommand(std::string_view frame);

/// Lets the readout carry out a command.
/// @return the answer with its line end; nothing when the readout stays silent.
std::optional<std::string> answer(Readout& readout, const Request& request);

} // namespace quorvelsim
