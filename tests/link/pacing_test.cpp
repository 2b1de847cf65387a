#include "link/module1.h"
#include "support/fake_device.h"
#include "support/processor_time.h"

#include <gtest/gtest.h>

namespace quorvel::link {
namespace {

using std::chrono::duration;
using std::chrono::steady_clock;

/// Real time; the limits are generous, the exact figures stand in the benches.
class InRealTime : public ::testing::Test {
protected:
    InRealTime() { comm.setPortOpen(true); }

    PortList ports{{"/dev/ttyFake"}, [] { return std::vector<PortInfo>(); }};
    MSComm comm{ports, [](const QString&, const LineSettings&) {
                    return OpenedDevice{std::make_unique<test::FakeDevice>(), {}};
                }};
    SystemClock clock;
    Module1 module1{comm, clock};
};

TEST_F(InRealTime, AFrameTakesAtLeastItsPauses)
{
    const auto start = steady_clock::now();
    module1.SendFrame(":052101FF12\r\n");
    EXPECT_GE(duration<double>(steady_clock::now() - start).count(), 0.095);
}

TEST_F(InRealTime, WaitingLeavesTheProcessorAlone)
{
    const double before = test::processorSeconds();
    module1.WaitForInput(2.0F, 29);
    EXPECT_LT(test::processorSeconds() - before, 2.0 * 0.1);
}

TEST_F(InRealTime, EventsRunWhileWaiting)
{
    int ticks = 0;
    QTimer timer;
    QObject::connect(&timer, &QTimer::timeout, &timer, [&ticks] { ++ticks; });
    timer.start(20);
    module1.WaitForInput(1.0F, 0);
    EXPECT_GT(ticks, 10);
}

} // namespace
} // namespace quorvel::link
