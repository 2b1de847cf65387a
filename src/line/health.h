#pragma once

#include "link/transaction.h"
#include "protocol/meaning.h"

#include <QDateTime>

#include <array>
#include <cstdint>
#include <map>

/// How well each readout answers.
namespace quorvel::line {

/// Durations in constant memory, however many there are: counts in classes whose widths grow with the duration, so that
/// a percentile is right within 1 %.
class Durations {
public:
    /// @param ms  0 or more; below 0.1 ms counts as 0.1 ms, above 10 minutes as 10 minutes.
    void add(double ms);

    std::int64_t count() const { return count_; }
    double mean() const { return count_ > 0 ? sum_ / static_cast<double>(count_) : 0; }
    double worst() const { return worst_; }
    /// The duration that `percent` of all do not exceed, within 1 %; 0 when there are none.
    double percentile(double percent) const;

private:
    static constexpr int kClasses = 800;
    std::array<std::int64_t, kClasses> classes_{};
    std::int64_t count_ = 0;
    double sum_ = 0;
    double worst_ = 0;
};

/// What is known of one readout since the start, or since the last reset.
struct ReadoutHealth {
    std::array<std::int64_t, protocol::kVerdicts> ended{}; ///< exchanges by how they ended
    Durations answerMs; ///< from the end of the frame to the last character, of good answers
    QDateTime lastGood; ///< of the latest good answer; invalid before

    std::int64_t exchanges() const;
    std::int64_t endedAs(protocol::Verdict verdict) const { return ended[static_cast<std::size_t>(verdict)]; }
};

/// Keeps the health of every readout that was asked. Exchanges with all readouts (the search) or with none do not
/// count, nor those that were refused or that the end of the program cut off.
class Health final : public link::ExchangeObserver {
public:
    void sending(const link::Exchange& /*exchange*/) override {}
    void ended(const link::Exchange& exchange) override;

    /// By address.
    const std::map<int, ReadoutHealth>& readouts() const { return readouts_; }
    void reset() { readouts_.clear(); }

    /// A header row and a row for each readout; times in ms, the last good answer in ISO 8601.
    QString csv() const;

private:
    std::map<int, ReadoutHealth> readouts_;
};

} // namespace quorvel::line
