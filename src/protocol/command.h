#pragma once

#include "link/transaction.h"

#include <cstddef>
#include <span>
#include <string>
#include <string_view>

/// All commands of the bus, one row each. `docs/bus-protocol.md` says the same from the readout's side; a test
/// compares the two.
namespace quorvel::protocol {

/// Places in kCommands.
enum class CommandId {
    Search,
    ChangeAddress,
    SetClock,
    QueryClock,
    SetInterval,
    QueryMode,
    ReadXY,
    ReadZ,
    QueryPointers,
    FetchRecord,
    DeleteRecords,
    CalibrateX,
    CalibrateY,
    CalibrateZ1,
    CalibrateZ2,
    GrayscaleX,
    GrayscaleY,
    GrayscaleZ1,
    GrayscaleZ2,
    SetWire,
    QueryWire,
    SetOffsetX,
    SetOffsetY,
    SetOffsetZ,
    QueryOffsetX,
    QueryOffsetY,
    QueryOffsetZ,
    SetFeature,
    QueryFeature,
    SetSwap,
    SetInvertX,
    SetInvertY,
    SetInvertZ,
    QuerySwap,
    QueryInvertX,
    QueryInvertY,
    QueryInvertZ,
    SetStitching,
    QueryStitching,
};

/// A part of a frame or of a reply. A set command has its fields in the frame and in the echo of it, a query in the
/// reply.
struct Field {
    std::string_view name;
    int position; ///< from 1 on, counted from the ":"
    int length;   ///< characters; 0: up to the end mark
};

/// One command of the bus.
struct Command {
    CommandId id;
    std::string_view digits; ///< behind the address: two, four or six
    link::Kind kind;
    std::string_view name; ///< in plain English, as the beginning of a sentence
    std::span<const Field> fields;
    /// How the reply is received, its length included; without the pixels for the grayscale.
    link::ReplyRule reply;
    bool drains = true; ///< unless a window says otherwise
    int echoLength = 0; ///< leading characters of the frame that confirm a set command; 0: any reply will do
    int head = 5;       ///< leading characters of the frame that every reply begins with
    bool ignoresBlanks = false; ///< blanks around a reply do not count
};

const Command& command(CommandId id);
/// All of them, in the order of CommandId.
std::span<const Command> commands();

/// The characters of a field in a reply; what there is when the reply is shorter.
std::string_view field(CommandId id, std::size_t index, std::string_view reply);

/// True when a reply has its length and its head, and nothing but decimal digits in all fields.
bool holdsDigitsOnly(CommandId id, std::string_view reply);

/// A command to the readout of these two address digits.
/// @param parameter  what is between the command digits and the end mark.
link::Transaction transaction(CommandId id, std::string_view addressDigits, std::string_view parameter = {});

/// Sends nothing, and takes what waits and what comes within these seconds.
link::Transaction listening(float seconds);

} // namespace quorvel::protocol
