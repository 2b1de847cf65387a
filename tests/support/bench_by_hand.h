#pragma once

#include "link/gate.h"
#include "link/module1.h"
#include "support/fake_device.h"
#include "support/hand_clock.h"
#include "support/test_messages.h"

#include <QPointer>

#include <gtest/gtest.h>

#include <deque>
#include <string>
#include <vector>

namespace quorvel::test {

/// A bench whose readout is a list of answers: each frame that is sent takes the next one. Waiting costs no real
/// time. For runs and windows where only frames, answers and time matter.
class BenchByHand : public ::testing::Test {
protected:
    BenchByHand()
        : ports({QStringLiteral("by hand")}, [] { return std::vector<link::PortInfo>(); }),
          mscomm1(ports, [this](const QString&, const link::LineSettings&) { return openDevice(); }),
          module1(mscomm1, clock)
    {
        bench.currentAddress = QStringLiteral("1");
        mscomm1.setPortOpen(true);
    }

    /// The readout answers the frames to come with these, one each; "" is silence.
    void answerWith(std::initializer_list<std::string> texts) { answers.assign(texts); }

    link::PortList ports;
    link::MSComm mscomm1;
    HandClock clock;
    link::Module1 module1;
    link::Bench bench;
    link::Gate gate;
    TestMessages messages;
    QPointer<FakeDevice> device;
    std::vector<std::string> frames; ///< sent, without line ends
    std::deque<std::string> answers;
    std::function<void()> onFrame; ///< called when a frame is out, before its answer arrives

private:
    link::OpenedDevice openDevice()
    {
        auto made = std::make_unique<FakeDevice>();
        device = made.get();
        device->onCharacter = [this](char character) { take(character); };
        return {std::move(made), {}};
    }

    void take(char character)
    {
        sent_ += character;
        if (character != '\n') return;
        frames.push_back(sent_.substr(0, sent_.size() - 2));
        sent_.clear();
        if (onFrame) onFrame();
        if (answers.empty() || !device) return;
        device->receive(answers.front());
        answers.pop_front();
    }

    std::string sent_;
};

} // namespace quorvel::test
