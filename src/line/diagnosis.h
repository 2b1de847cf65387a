#pragma once

#include "line/findings.h"

#include "link/module1.h"

#include <functional>

namespace quorvel::line {

/// What a test asks and reports while it runs.
struct DiagnosisWatcher {
    std::function<bool()> stop; ///< asked before each exchange; true ends the test
    /// A step begins, or turns out to take longer. @param secondsLeft  of the whole test, at least.
    std::function<void(Step step, double secondsLeft)> begun;
    /// A step has ended; its result is in the findings.
    std::function<void(Step step, const Findings& findings)> ended;
};

/// Tests a line step by step: with harmless queries only, each an exchange like any other. A port that is not open is
/// not opened. Takes about 7 s when all is well, about 10 s more for a readout that does not answer, and a sixth of a second
/// for each other one, of which the first kMostOthers are asked. Events run meanwhile.
Findings diagnose(link::Module1& module1, const DiagnosisTask& task, const DiagnosisWatcher& watcher);

inline constexpr int kMostOthers = 16;

} // namespace quorvel::line
