#pragma once

#include "link/module1.h"
#include "support/fake_device.h"
#include "support/hand_clock.h"

#include <QPointer>

#include <functional>
#include <string>
#include <vector>

namespace quorvel::test {

/// A port behind which one readout answers each frame by a function, at once; time is moved by hand.
class ScriptedReadout {
public:
    explicit ScriptedReadout(std::function<std::string(const std::string& frame)> answerTo)
        : answer(std::move(answerTo)),
          ports_({QStringLiteral("by hand")}, [] { return std::vector<link::PortInfo>(); }),
          port(ports_, [this](const QString&, const link::LineSettings&) { return open(); }),
          module1(port, clock)
    {
        port.setPortOpen(true);
    }

    std::function<std::string(const std::string&)> answer;
    std::vector<std::string> frames; ///< received, without their line ends
    QPointer<FakeDevice> device;     ///< null once the port is closed
    HandClock clock;

private:
    link::OpenedDevice open()
    {
        auto fake = std::make_unique<FakeDevice>();
        device = fake.get();
        device->onCharacter = [this](char character) { take(character); };
        return {std::move(fake), QString()};
    }

    void take(char character)
    {
        arriving_ += character;
        if (character != '\n') return;
        const auto frame = arriving_.substr(0, arriving_.size() - 2);
        arriving_.clear();
        frames.push_back(frame);
        const auto reply = answer(frame);
        if (device) device->receive(reply);
    }

    std::string arriving_;
    link::PortList ports_;

public:
    link::MSComm port;
    link::Module1 module1;
};

} // namespace quorvel::test
