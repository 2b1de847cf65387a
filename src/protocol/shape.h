#pragma once

#include "protocol/command.h"

#include <string>
#include <string_view>

/// What an answer looks like, for whoever examines the line rather than the readout. Only queries whose replies have one
/// known length are examined.
namespace quorvel::protocol {

enum class Shape {
    Good,
    Silent,       ///< nothing came
    Short,        ///< it breaks off, in front of its line feed at the latest
    Long,         ///< something follows its line end
    Twice,        ///< it came more than once
    NoiseBefore,  ///< it is whole, but something stands before it
    OtherReadout, ///< it is whole, with the address of another readout
    OtherCommand, ///< it is whole, with the digits of another command
    Brief,        ///< a reading without its last two characters, as older readouts give it
    BadValue,     ///< it is whole, but where a number, a date or a state belongs is something else
    Garbled,      ///< something came that is none of these
};

/// The shape of a reply to the query `id` of the readout with these two address digits.
/// @param reply  as received; any characters, any number of them.
Shape shapeOf(CommandId id, std::string_view addressDigits, std::string_view reply);

/// What is left of a reply when the frame is taken off its beginning: an adapter may send back what it sends.
std::string_view withoutEcho(std::string_view frame, std::string_view reply);

/// The query as the line is examined with it: what waited before is thrown away, and characters behind a whole reply are
/// taken, too.
/// @param seconds  allowed for the whole reply.
link::Transaction probe(CommandId id, std::string_view addressDigits, float seconds);

} // namespace quorvel::protocol
