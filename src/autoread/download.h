#pragma once

#include "autoread/record_file.h"
#include "link/module1.h"
#include "protocol/ring.h"

#include <functional>
#include <string>
#include <string_view>

namespace quorvel::autoread {

/// How a download ended.
enum class Ending {
    Complete,
    Stopped,    ///< by the operator
    CommError,  ///< a reply was incomplete
    BadRecord,  ///< a reply does not hold a record
    FileFailed, ///< a record could not be stored
};

/// What became of a download. In every case the file is closed and holds the first `received` records.
struct Outcome {
    Ending ending = Ending::Complete;
    int received = 0;
    std::string reason; ///< in words; empty for Complete and Stopped
};

/// What a download asks and reports while it runs.
struct Watcher {
    std::function<bool()> stop;        ///< asked before each record; true ends the download
    std::function<void(int)> received; ///< called for each record that is on the disk
};

/// Fetches the records of `span` one by one into `sink`, each one on the disk before the next is asked for, and
/// closes the sink. Interface events run between the records.
Outcome fetchRecords(link::Module1& module1, std::string_view addressDigits, const protocol::RecordSpan& span,
                     const RecordLayout& layout, RecordSink& sink, const Watcher& watcher);

} // namespace quorvel::autoread
