#pragma once

#include "autoread/record_file.h"
#include "autoread/ring_search.h"
#include "autoread/ring_state.h"

#include <QDateTime>
#include <QJsonObject>

#include <filesystem>
#include <string>
#include <vector>

namespace quorvel::autoread {

/// Whether a readout's records may be deleted.
struct CheckResult {
    bool safe = false;
    std::string words{}; ///< "Safe to delete: ..." or "Not safe to delete: ...", with the reason
    int address = 0;
    std::vector<std::filesystem::path> files;
    protocol::RingPointers pointers{}; ///< of the ring that was compared
    int held = 0;                      ///< records that the readout holds
    int inFiles = 0; ///< of these, how many were found in the files; a lower limit when not safe
    QDateTime at{};  ///< the PC's time
};

/// Reads the files back and compares them with the ring: the first and the last record are asked for, must be in the
/// files, and as many different rows must lie between them as the readout holds. Rows with empty fields are asked for
/// again: they count when the readout still cannot say more. The pointers are asked for at the end, too: a record that was
/// taken meanwhile is not in the files. An empty ring is safe to delete, without any file.
///
/// @param files  of this readout, one or more, which together should hold all its records.
CheckResult checkFiles(RecordReader& reader, int address, const std::vector<std::filesystem::path>& files);

/// What became of a deletion.
struct Deletion {
    bool answered = false;  ///< as many characters came as a confirmation has
    bool confirmed = false; ///< and they confirm it
    /// Records that the readout holds afterwards; missing when it was not asked or did not say.
    std::optional<int> left{};
    std::string words{}; ///< for the operator
    bool certain() const { return confirmed && left && *left == 0; }
};

/// What the answer to a deletion says; asks nothing.
Deletion judgeDeletion(const link::Exchange& exchange, int address);

/// Deletes all records of the readout, then asks whether the ring is empty. Asks no question before.
Deletion deleteRecords(link::Module1& module1, const std::string& addressDigits, int address);

QJsonObject json(const CheckResult& result);

} // namespace quorvel::autoread
