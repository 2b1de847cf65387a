#pragma once

#include "protocol/ring.h"

#include <cstdint>
#include <map>
#include <string>
#include <vector>

namespace quorvel::autoread {

/// What one window knows about the rings of the readouts it talked to: which records each held when it was last
/// asked, and which of these this window has downloaded. It asks nothing itself.
class Ledger {
public:
    /// The readout answered the count query. Between two answers it has written the slots from the earlier `next`
    /// up to the later one; what was downloaded of them is no longer there.
    ///
    /// @param pointers  for which whyNotFetchable() returns nothing.
    /// @param seconds   when, on any clock that goes on evenly.
    void seen(const std::string& address, const protocol::RingPointers& pointers, std::int64_t seconds);
    /// The record of this count is in a file. Ignored when the readout was last seen with another span.
    void downloaded(const std::string& address, const protocol::RecordSpan& span, int recordCount);
    /// The readout confirmed that it has deleted its records.
    void deleted(const std::string& address);
    /// Nothing is known about the readout any more.
    void forget(const std::string& address);

    /// Records that the readout held when it was last asked and that this window has not downloaded: never too
    /// few, at times too many (see text()); -1 when it was not asked.
    int missing(const std::string& address) const;

    /// A sentence on that for the operator. It says "up to" where the ring can have been written all round since
    /// the download, so that it is not known which records are still those in the file.
    /// @param address  in decimal, as typed.
    std::string text(const std::string& address) const;

private:
    struct Entry {
        protocol::RingPointers pointers;
        std::int64_t askedAt = 0;
        std::vector<bool> inFile; ///< for each slot of the ring
        bool upTo = false;        ///< some of the missing records may be in a file all the same
    };
    std::map<std::string, Entry> entries_;
};

} // namespace quorvel::autoread
