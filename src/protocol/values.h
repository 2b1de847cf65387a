#pragma once

#include "link/bench.h"
#include "link/transaction.h"

#include <optional>
#include <string>
#include <string_view>

namespace quorvel::link {
class Module1;
}

/// Reading measured values.
///
/// A value reply has 29 characters, counted from 1:
///
///     1  ":"   2-3 address   4-7 command   8-15 first value   16-23 second value   24-29 not looked at
///
/// The first and second value are X and Y ("2101"), or Z1 and Z2 ("2102"), eight characters each, shown as received.
namespace quorvel::protocol {

inline constexpr int kValuesReplyLength = 29;
inline constexpr float kPauseBeforeZ = 0.2F;     ///< s, from the answer to X and Y to the question for Z
inline constexpr float kPauseAfterValues = 0.1F; ///< s, after which late characters are thrown away
inline constexpr std::string_view kReadingFailed = " CommError";

/// Asks for X and Y, or for Z1 and Z2; 1.5 s are allowed for the whole reply, and everything that has come is taken.
link::Transaction xyQuery(std::string_view addressDigits);
link::Transaction zQuery(std::string_view addressDigits);
/// Asks for Z1 and Z2 without draining; 2 s are allowed for each of the 29 characters.
link::Transaction zQueryByCharacters(std::string_view addressDigits);

/// What the end of a query for Z1 and Z2 says about a readout: that it has these sensors (any reply to this query that
/// holds two values), that it has not (silence), or nothing (whatever else came, or nothing was sent).
std::optional<bool> measuresZ(const link::Exchange& asked);

/// True when the reply has the one length that counts as answered.
bool isValuesReply(std::string_view reply);

/// The first and the second value of a reply as received; shorter or empty when the reply is.
std::string firstValue(std::string_view reply);
std::string secondValue(std::string_view reply);

/// "  X: " first "  Y: " second "  ", or kReadingFailed for a reply of another length.
std::string xyText(std::string_view reply);

/// What a Z reply adds to the line, whatever its length: one value for the user edition, Z1 and Z2 otherwise.
std::string zText(std::string_view reply, bool userEdition);

/// Asks the readout at `address` (1..249) for its readings and returns the line of display text: xyText(), for the
/// three-direction readout followed by zText(); or kReadingFailed when the first reply has not exactly 29 characters.
/// Z is asked for 0.2 s after X and Y; at the end it waits 0.1 s and throws away what has come. Uses the type and the
/// edition of `bench`; the port must be open.
std::string ReadSensorValues(link::Module1& module1, int address, const link::Bench& bench);

} // namespace quorvel::protocol
