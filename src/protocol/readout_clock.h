#pragma once

#include "link/transaction.h"

#include <QDateTime>

#include <optional>
#include <string>
#include <string_view>

/// A readout's clock. The set command and the answer to the query have the same 21 characters,
/// counted from 1:
///
///     1  ":"   2-3 address   4-5 command   6-11 YYMMDD   12-17 HHMMSS   18-19 "FF"   20-21 line end
namespace quorvel::protocol {

inline constexpr auto kClockSet = "Set OK";
inline constexpr auto kClockNotSet = "Set Error";

link::Transaction clockQuery(std::string_view addressDigits);
/// Any complete reply confirms it. The century is not sent.
link::Transaction clockSet(std::string_view addressDigits, const QDateTime& time);

/// The clock in the answer to the query as "2024-05-17  09:05:30", each character as received, the century always
/// "20".
std::string clockText(std::string_view reply);

/// The same as a point in time; nothing when it is not one.
std::optional<QDateTime> clockOf(std::string_view reply);

/// The question before the clock is set.
std::string clockQuestion(std::string_view reply);

} // namespace quorvel::protocol
