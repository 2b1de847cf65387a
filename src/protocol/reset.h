#pragma once

#include "link/bench.h"
#include "link/transaction.h"

#include <QDateTime>

#include <functional>
#include <string>
#include <string_view>
#include <vector>

namespace quorvel::link {
class Module1;
}

/// The reset of all settings of a readout: its steps, and the run over them.
namespace quorvel::protocol {

inline constexpr auto kResetPortClosed = "Please open the com port and search CCD first!";
inline constexpr auto kResetQuestion =
    "Do you want to reset all settings (set diameter as 1.5mm, set permitted error as 0.3mm, turn off the "
    "offset, turn off the reference, turn off the invert, turn off the swap, set clock the same as "
    "computer's "
    "time, set interval as 1 hour) and delete all data of pendulum cann't be recover?";
inline constexpr auto kResetSure = "Are you sure?";
inline constexpr auto kResetOk = "Reset OK!";
inline constexpr auto kResetFailed = "Reset Failed!";

/// One step: what it does in words, and its command made at the moment it is sent. The input buffer is drained
/// before every step.
struct ResetStep {
    const char* what;
    bool (*isFor)(link::InstrumentType type);
    link::Transaction (*make)(std::string_view addressDigits, const QDateTime& now);
};

/// The steps that a readout of this type gets, in order.
std::vector<ResetStep> resetSteps(link::InstrumentType type);

/// How a reset went.
struct ResetRun {
    bool ok = false;
    std::string where; ///< "step 3 of 10 (X offset to zero)": the step that failed
    int done = 0;      ///< steps that the readout confirmed
    QString why;       ///< for the operator
};

/// Runs the steps on the readout of `bench` and ends at the first that fails; those before it stay in force.
/// @param progress  called with each step ("step 3 of 10 (X offset to zero)") before it is sent.
ResetRun runReset(link::Module1& module1, const link::Bench& bench,
                  const std::function<void(const std::string& step)>& progress);

} // namespace quorvel::protocol
