#pragma once

#include "autoread/check.h"
#include "autoread/record_file.h"
#include "autoread/report.h"
#include "protocol/ring.h"

#include <cstdint>
#include <filesystem>
#include <map>
#include <optional>
#include <string>
#include <vector>

namespace quorvel::autoread {

/// What a program knows about the rings of the readouts that it talked to: which records each held when it was last
/// asked, and which of these are in which file. One for all windows, as long as the program runs; it asks nothing itself.
/// A file counts as long as it stands as it was written: one that was replaced, changed or removed holds nothing.
/// Addresses are 1 to 249; any other is ignored.
class Book {
public:
    /// The readout answered the count query. Between two answers it has written the slots from the earlier `next`
    /// up to the later one; what was downloaded of them is no longer there.
    ///
    /// @param pointers  for which whyNotFetchable() returns nothing.
    /// @param seconds   when, on any clock that goes on evenly.
    void asked(int address, const protocol::RingPointers& pointers, std::int64_t seconds);
    /// A new file was begun; what an earlier one of that name held is gone.
    void began(const std::filesystem::path& file);
    /// The record of this count is now in the file. Ignored when the readout was last asked with other pointers.
    void stored(int address, const std::filesystem::path& file, const protocol::RecordSpan& span,
                int recordCount);
    /// The file was closed, as it stands now.
    void finished(const std::filesystem::path& file);
    /// All records that the readout holds were found in the files.
    void checked(const CheckResult& result, std::int64_t seconds);
    /// A deletion was sent. Unless it was confirmed, nothing is known about the records any more.
    void deleted(int address, const Deletion& deletion);
    /// A file was kept beside its successor, because that broke off; nothing: no more.
    void kept(int address, const std::filesystem::path& old);

    /// Records that the readout held when it was last asked and that are in no file: never too few, at times too
    /// many (see text()); -1 when it was not asked.
    int missing(int address) const;
    /// Files that stand and hold records of the readout, the one with the most first.
    std::vector<std::filesystem::path> files(int address) const;

    /// Sentences on that for the operator: how many of the records are in which file, or what is known of a deletion. It
    /// says "up to" where the ring can have been written all round since the download, so that it is not known which
    /// records are still those in the file.
    std::string text(int address) const;

    /// The latest download of the readout, for a window that shows its report.
    void keepReport(const Report& report);
    const Report* report(int address) const;
    const CheckResult* lastCheck(int address) const;

private:
    struct Held {
        FileStamp stamp;
        std::vector<bool> slots; ///< for each slot of the ring
    };
    struct Entry {
        bool known = false; ///< the pointers are
        protocol::RingPointers pointers;
        std::int64_t askedAt = 0;
        std::map<std::filesystem::path, Held> files;
        bool upTo = false;    ///< some of the missing records may be in a file all the same
        std::string deletion; ///< what is known of the latest; empty once the ring was asked again
        std::filesystem::path keptOld;
        std::optional<Report> report;
        std::optional<CheckResult> check;
    };
    static void forgetSlots(Entry& entry);
    static std::vector<bool> inAnyFile(const Entry& entry);
    static std::string textOf(const Entry& entry, int address,
                              const std::vector<std::filesystem::path>& names, int missing);

    std::map<int, Entry> entries_;
};

} // namespace quorvel::autoread
