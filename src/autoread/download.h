#pragma once

#include "autoread/record_file.h"
#include "autoread/record_reader.h"
#include "protocol/ring.h"

#include <functional>
#include <string>
#include <vector>

namespace quorvel::autoread {

/// How a download ended.
enum class Ending {
    Complete,
    Stopped,    ///< by the operator
    CommError,  ///< a reply was incomplete
    Misfit,     ///< the replies were not the one asked for
    FileFailed, ///< a record could not be stored
    NotBegun,   ///< nothing was fetched and no file touched
};

/// A record that was stored, with its slot and what was wrong with its reply.
struct StoredRecord {
    int slot = 0;
    Record record;
    std::vector<protocol::Unreadable> unreadable;
    std::vector<std::string> misfits;

    /// True when the file holds what the readout sent, all of it.
    bool isSound() const { return unreadable.empty() && misfits.empty(); }
};

/// How far a download is.
struct Progress {
    int received = 0; ///< records that are on the disk
    int total = 0;
    double secondsLeft = 0;               ///< by the pace so far, before the first record by the least pace
    const StoredRecord* latest = nullptr; ///< that was stored last; null before the first
};

/// What a download asks and reports while it runs. Functions that are empty are not called.
struct Watcher {
    std::function<bool()> stop; ///< asked before each record; true ends the download
    std::function<void(const Progress&)>
        progress; ///< at the beginning, and for each record that is on the disk
    /// Something that does not stop the download: a reply that does not fit, a field that could not be read.
    std::function<void(const std::string& words)> remark;
};

/// What became of a download. In every case the file is closed and holds the records of `stored`.
struct Outcome {
    Ending ending = Ending::Complete;
    std::string reason; ///< in words; empty for Complete and Stopped
    std::vector<StoredRecord> stored;

    int received() const { return static_cast<int>(stored.size()); }
};

/// Fetches the records of `span` one by one into `sink`, each one on the disk before the next is asked for, and
/// closes the sink. Interface events run between the records. Fields that cannot be read are stored as missing.
///
/// @param reader  whose layout is known.
Outcome fetchRecords(RecordReader& reader, const protocol::RecordSpan& span, RecordSink& sink,
                     const Watcher& watcher);

} // namespace quorvel::autoread
