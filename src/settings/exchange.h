#pragma once

#include <QString>

#include <optional>
#include <string>
#include <string_view>

namespace quorvel::link {
class Module1;
class MSComm;
} // namespace quorvel::link

/// Sensor settings: one command group per window, and the reset of all of them.
namespace quorvel::settings {

inline constexpr auto kSetOk = "Set OK!";
inline constexpr auto kSetFailed = "Set Failed!";

/// One command of a settings window: what goes out, and what has to come back.
struct Exchange {
    std::string frame;          ///< line end included
    int replyLength = 0;        ///< characters awaited, line end included
    int echoLength = 0;         ///< leading characters of the frame that a good reply repeats; 0: any will do
    bool drains = true;         ///< what waits in the input buffer is thrown away first
    bool ignoresBlanks = false; ///< blanks around the reply do not count when it is compared
};

/// The frame of `command` ("72FF") to the readout of these two address digits, line end included.
std::string frameOf(std::string_view addressDigits, std::string_view command);

/// Sends the frame and receives the reply into module1.ReplyText().
/// @return false when the reply did not arrive whole; ReplyText() holds what did.
bool perform(link::Module1& module1, const Exchange& exchange);

/// True when a complete reply repeats as much of the frame as this command asks for.
bool confirms(const Exchange& exchange, std::string_view reply);

/// True when a complete reply can be the answer to this command: it begins with the address and command digits of the
/// frame and ends with a line end. One that is shifted by characters that waited before it does not.
bool answers(const Exchange& exchange, std::string_view reply);

/// A state that a reply holds as two digits from this 1-based position on: "01" is on, "00" off, all else nothing.
std::optional<bool> flagAt(std::string_view reply, int position);

/// Why a command that was not confirmed failed, in one sentence for the operator.
/// @param reply  what arrived, any number of any characters.
QString whyFailed(const Exchange& exchange, std::string_view reply);
/// The same for a command sent through `port`: one that is closed by now is the reason, whatever arrived.
QString whyFailed(const Exchange& exchange, std::string_view reply, const link::MSComm& port);

/// A reply as it can stand in a sentence: without its line end, other control characters as "?".
std::string inOneLine(std::string_view reply);

} // namespace quorvel::settings
