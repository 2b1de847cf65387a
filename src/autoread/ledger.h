#pragma once

#include "autoread/ring.h"

#include <map>
#include <string>

namespace quorvel::autoread {

/// What one window knows about the rings of the readouts it talked to: how many records each held when it was last
/// asked, and how many of these this window has downloaded. It asks nothing itself.
class Ledger {
public:
    /// The readout answered the count query.
    void seen(const std::string& address, const RecordSpan& span);
    /// The records from the span's first up to, not including, `end` are in a file.
    void downloaded(const std::string& address, int end);
    /// The readout confirmed that it has deleted its records.
    void deleted(const std::string& address);

    /// Records that the readout held when it was last asked and that this window has not downloaded; -1 when it
    /// was not asked.
    int missing(const std::string& address) const;

    /// A sentence on that for the operator.
    /// @param address  in decimal, as typed.
    std::string text(const std::string& address) const;

private:
    struct Entry {
        RecordSpan span;
        int downloadedEnd = 0;
    };
    std::map<std::string, Entry> entries_;
};

} // namespace quorvel::autoread
