#pragma once

#include "link/gate.h"
#include "main/workplace.h"
#include "support/scripted_readout.h"
#include "support/test_messages.h"

#include <gtest/gtest.h>

#include <deque>
#include <string>
#include <vector>

namespace quorvel::test {

/// A bench whose readout is a list of answers: each frame that is sent takes the next one. Waiting costs no real
/// time. For runs and windows where only frames, answers and time matter.
class BenchByHand : public ::testing::Test {
protected:
    BenchByHand() { bench.currentAddress = QStringLiteral("1"); }

    /// The readout answers the frames to come with these, one each; "" is silence.
    void answerWith(std::initializer_list<std::string> texts) { answers.assign(texts); }

    ScriptedReadout readout{[this](const std::string&) { return nextAnswer(); }};
    link::MSComm& mscomm1 = readout.port;
    HandClock& clock = readout.clock;
    link::Module1& module1 = readout.module1;
    QPointer<FakeDevice>& device = readout.device;
    std::vector<std::string>& frames = readout.frames; ///< sent, without line ends
    link::Bench bench;
    link::Gate gate;
    TestMessages messages;
    Workplace workplace{bench, module1, gate, messages};
    std::deque<std::string> answers;
    std::function<void()> onFrame; ///< called when a frame is out, before its answer arrives

private:
    std::string nextAnswer()
    {
        if (onFrame) onFrame();
        if (answers.empty()) return {};
        auto answer = answers.front();
        answers.pop_front();
        return answer;
    }
};

} // namespace quorvel::test
