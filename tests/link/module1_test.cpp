#include "link/module1.h"
#include "support/fake_device.h"
#include "support/hand_clock.h"

#include <gtest/gtest.h>

namespace quorvel::link {
namespace {

constexpr double kTick = 1e-4;     // s, what single precision may add to a wait
constexpr double kRounding = 1e-6; // s, what the sum of many may lack

class Module1OnAFakeBus : public ::testing::Test {
protected:
    Module1OnAFakeBus() { comm.setPortOpen(true); }

    test::FakeDevice* device = nullptr;
    PortList ports{{"/dev/ttyFake"}, [] { return std::vector<PortInfo>(); }};
    MSComm comm{ports, [this](const QString&, const LineSettings&) {
                    auto opened = std::make_unique<test::FakeDevice>();
                    device = opened.get();
                    return OpenedDevice{std::move(opened), {}};
                }};
    test::HandClock clock;
    Module1 module1{comm, clock};
};

TEST_F(Module1OnAFakeBus, SendFramePausesBeforeTheFrameAndAfterEachCharacter)
{
    std::vector<double> times;
    device->onCharacter = [&](char) { times.push_back(clock.passed()); };
    module1.SendFrame(":052101FF12\r\n");
    EXPECT_EQ(device->written, ":052101FF12\r\n");
    EXPECT_EQ(module1.FrameText(), ":052101FF12\r\n");
    ASSERT_EQ(times.size(), 13U);
    EXPECT_GE(times.front(), 0.03 - kRounding);
    for (std::size_t i = 1; i < times.size(); ++i) {
        EXPECT_GE(times[i] - times[i - 1], 0.005 - kRounding);
        EXPECT_NEAR(times[i] - times[i - 1], 0.005, kTick);
    }
    EXPECT_GE(clock.passed(), 0.095 - kRounding);
    EXPECT_NEAR(clock.passed(), 0.095, 14 * kTick);
}

TEST_F(Module1OnAFakeBus, PacingIsTheSameAfterNinetyDays)
{
    constexpr std::int64_t kNinetyDays = 90LL * 86400 * 1'000'000;
    clock.counterStart = kNinetyDays;
    module1.SendFrame(":052101FF12\r\n");
    EXPECT_NEAR(clock.passed(), 0.095, 14 * kTick);
    clock.move(90 * 86400.0);
    const double before = clock.passed();
    module1.SendFrame(":052101FF12\r\n");
    EXPECT_NEAR(clock.passed() - before, 0.095, 14 * kTick);
}

TEST_F(Module1OnAFakeBus, APauseTakesItsFullTimeWhateverArrives)
{
    device->receive("characters that nobody asked for");
    EXPECT_FALSE(module1.WaitForInput(1.0F, 0));
    EXPECT_GE(clock.passed(), 1.0 - kRounding);
    EXPECT_NEAR(clock.passed(), 1.0, kTick);
    EXPECT_FALSE(module1.WaitForInput(1.0F, -3));
    EXPECT_NEAR(clock.passed(), 2.0, 2 * kTick);
}

TEST_F(Module1OnAFakeBus, WaitForInputReturnsAsSoonAsEnoughWaits)
{
    clock.plan(0.2, [this] { device->receive(std::string(28, 'x')); });
    clock.plan(0.3, [this] { device->receive("x"); });
    EXPECT_TRUE(module1.WaitForInput(1.5F, 29));
    EXPECT_NEAR(clock.passed(), 0.3, kTick);
    EXPECT_EQ(comm.InBufferCount(), 29);
}

TEST_F(Module1OnAFakeBus, WaitForInputGivesUpWhenTheTimeIsOver)
{
    device->receive(std::string(28, 'x'));
    EXPECT_FALSE(module1.WaitForInput(1.5F, 29));
    EXPECT_NEAR(clock.passed(), 1.5, kTick);
    EXPECT_EQ(comm.InBufferCount(), 28);
}

TEST_F(Module1OnAFakeBus, ACharacterThatComesTooLateStaysInTheBuffer)
{
    clock.plan(1.6, [this] { device->receive("late"); });
    EXPECT_FALSE(module1.WaitForInput(1.5F, 1));
    EXPECT_FALSE(module1.WaitForInput(0.2F, 0));
    EXPECT_EQ(comm.Input(), "late");
}

TEST_F(Module1OnAFakeBus, PerfSecondsCountsFromTheLatestWait)
{
    clock.counterStart = 1'000'000'000'000;
    module1.WaitForInput(0.5F, 0);
    float seconds = -1;
    EXPECT_TRUE(module1.PerfSeconds(seconds));
    EXPECT_NEAR(static_cast<double>(seconds), 0.5, kTick);
}

TEST_F(Module1OnAFakeBus, PerfSecondsWithoutCounterLeavesItsOutputAlone)
{
    clock.frequency.reset();
    float seconds = 7;
    EXPECT_FALSE(module1.PerfSeconds(seconds));
    EXPECT_EQ(seconds, 7);
}

TEST_F(Module1OnAFakeBus, ALowHalfOfZeroCountsAs2To32)
{
    // The counter is read one tick after its origin; 2^32 ticks after the origin the low half is zero.
    module1.WaitForInput(0, 0);
    clock.counterStart += (1LL << 32) - 1;
    float seconds = 0;
    EXPECT_TRUE(module1.PerfSeconds(seconds));
    EXPECT_FLOAT_EQ(seconds, static_cast<float>(2 * 4294967296.0 / 1e6));
    clock.counterStart += 1;
    EXPECT_TRUE(module1.PerfSeconds(seconds));
    EXPECT_FLOAT_EQ(seconds, static_cast<float>(4294967297.0 / 1e6));
}

TEST_F(Module1OnAFakeBus, AShortPauseWithoutCounterSleepsOnce)
{
    clock.frequency.reset();
    device->receive("x");
    EXPECT_FALSE(module1.WaitForInput(0.005F, 0));
    EXPECT_NEAR(clock.passed(), 0.005, 1e-9);
    EXPECT_TRUE(module1.WaitForInput(0.03F, 1));
    EXPECT_NEAR(clock.passed(), 0.035, 1e-9);
}

TEST_F(Module1OnAFakeBus, AShortPauseWithoutCounterLetsEventsRunOnce)
{
    clock.frequency.reset();
    int turns = 0;
    clock.onEvents = [&turns] { ++turns; };
    module1.WaitForInput(0.049F, 0);
    EXPECT_EQ(turns, 1);
}

TEST_F(Module1OnAFakeBus, AReplyThatTricklesInWithoutCounterIsReceived)
{
    clock.frequency.reset();
    device->onTheLine = "abc";
    EXPECT_TRUE(module1.WaitForInput(1.0F, 3));
    EXPECT_EQ(comm.Input(), "abc");
}

TEST_F(Module1OnAFakeBus, ALongWaitWithoutCounterLetsNoEventsRun)
{
    clock.frequency.reset();
    int turns = 0;
    clock.onEvents = [&turns] { ++turns; };
    clock.plan(0.4, [this] { device->receive("abc"); });
    EXPECT_TRUE(module1.WaitForInput(1.0F, 3));
    EXPECT_NEAR(clock.passed(), 0.4, 0.02);
    EXPECT_FALSE(module1.WaitForInput(1.0F, 4));
    EXPECT_NEAR(clock.passed(), 1.4, 0.04);
    EXPECT_EQ(turns, 0);
}

TEST_F(Module1OnAFakeBus, ATimeOfDayWaitSpansMidnight)
{
    clock.frequency.reset();
    clock.startTimeOfDay = 86399.5;
    EXPECT_FALSE(module1.WaitForInput(2.0F, 0));
    EXPECT_NEAR(clock.passed(), 2.0, 0.02);
}

TEST_F(Module1OnAFakeBus, ReceiveReplyTakesExactlyWhatWasAsked)
{
    device->receive("abcdefg");
    EXPECT_TRUE(module1.ReceiveReply(5));
    EXPECT_EQ(module1.ReplyText(), "abcde");
    EXPECT_EQ(comm.Input(), "fg");
}

TEST_F(Module1OnAFakeBus, ReceiveReplyOfNothingIsCompleteAndEmpty)
{
    device->receive("abc");
    module1.ReceiveReply(2);
    EXPECT_TRUE(module1.ReceiveReply(0));
    EXPECT_EQ(module1.ReplyText(), "");
}

TEST_F(Module1OnAFakeBus, ReceiveReplyAllowsTwoSecondsPerCharacter)
{
    clock.plan(1.9, [this] { device->receive("a"); });
    clock.plan(3.8, [this] { device->receive("b"); });
    clock.plan(5.7, [this] { device->receive("c"); });
    EXPECT_FALSE(module1.ReceiveReply(5));
    EXPECT_EQ(module1.ReplyText(), "abc");
    EXPECT_NEAR(clock.passed(), 7.7, 0.02);
}

TEST_F(Module1OnAFakeBus, ReceiveReplySpansMidnight)
{
    clock.startTimeOfDay = 86399.0;
    clock.plan(1.5, [this] { device->receive("a"); });
    EXPECT_TRUE(module1.ReceiveReply(1));
    clock.startTimeOfDay = 86399.0 - clock.passed();
    EXPECT_FALSE(module1.ReceiveReply(1));
    EXPECT_NEAR(clock.passed(), 3.5, 0.02);
}

TEST_F(Module1OnAFakeBus, ReceiveGrayscaleEndsWithTheLineFeed)
{
    device->receive(":0565\r\nmore");
    EXPECT_TRUE(module1.ReceiveGrayscale());
    EXPECT_EQ(module1.ReplyText(), ":0565\r\n");
    EXPECT_EQ(comm.Input(), "more");
}

TEST_F(Module1OnAFakeBus, ReceiveGrayscaleGivesUpAfterTwoSilentSeconds)
{
    device->receive(":0565");
    EXPECT_FALSE(module1.ReceiveGrayscale());
    EXPECT_EQ(module1.ReplyText(), ":0565");
    EXPECT_NEAR(clock.passed(), 2.0, 0.02);
}

TEST_F(Module1OnAFakeBus, ReceiveGrayscaleGivesUpOnALineWithoutEnd)
{
    device->receive(std::string(Module1::kLongestLine + 10, 'x'));
    EXPECT_FALSE(module1.ReceiveGrayscale());
    EXPECT_EQ(comm.InBufferCount(), 10);
}

TEST_F(Module1OnAFakeBus, ADeviceThatVanishesEndsWaitingAtOnce)
{
    clock.plan(0.5, [this] { device->receive("ab"); });
    clock.plan(0.7, [this] { device->vanish(); });
    EXPECT_FALSE(module1.ReceiveReply(5));
    EXPECT_EQ(module1.ReplyText(), "ab");
    EXPECT_NEAR(clock.passed(), 0.7, 0.02);
    EXPECT_FALSE(module1.WaitForInput(1.5F, 29));
    EXPECT_NEAR(clock.passed(), 0.7, 0.02);
    module1.SendFrame(":05\r\n");
    EXPECT_FALSE(module1.ReceiveReply(5));
}

TEST_F(Module1OnAFakeBus, AnAbandonedFrameBreaksOff)
{
    clock.plan(0.052, [this] { module1.abandon(); });
    module1.SendFrame(":0571+1.50000FF\r\n");
    EXPECT_EQ(device->written, ":0571");
    module1.SendFrame(":0572FF\r\n");
    EXPECT_EQ(device->written, ":0571");
}

TEST_F(Module1OnAFakeBus, AnAbandonedTransactionWaitsForNothing)
{
    module1.abandon();
    module1.SendFrame(":052101FF\r\n");
    EXPECT_EQ(device->written, "");
    EXPECT_FALSE(module1.ReceiveReply(29));
    EXPECT_FALSE(module1.WaitForInput(10, 0));
    EXPECT_NEAR(clock.passed(), 0, 0.01);
}

TEST_F(Module1OnAFakeBus, SendFrameKeepsItsPaceWithoutCounter)
{
    clock.frequency.reset();
    std::vector<double> times;
    device->onCharacter = [&](char) { times.push_back(clock.passed()); };
    module1.SendFrame(":052101FF12\r\n");
    EXPECT_EQ(device->written, ":052101FF12\r\n");
    ASSERT_EQ(times.size(), 13U);
    for (std::size_t i = 0; i < times.size(); ++i) {
        EXPECT_NEAR(times[i], 0.03 + 0.005 * static_cast<double>(i), kRounding);
    }
    EXPECT_NEAR(clock.passed(), 0.095, kRounding);
}

TEST_F(Module1OnAFakeBus, ReceiveReplyNeedsNoCounter)
{
    clock.frequency.reset();
    clock.plan(1.9, [this] { device->receive("a"); });
    clock.plan(3.8, [this] { device->receive("b"); });
    EXPECT_FALSE(module1.ReceiveReply(3));
    EXPECT_EQ(module1.ReplyText(), "ab");
    EXPECT_NEAR(clock.passed(), 5.8, 0.02);
    device->receive("cdef");
    EXPECT_TRUE(module1.ReceiveReply(3));
    EXPECT_EQ(module1.ReplyText(), "cde");
}

TEST_F(Module1OnAFakeBus, AWaitOfExactlyATwentiethOfASecondWithoutCounterPollsAndLetsNoEventsRun)
{
    clock.frequency.reset();
    int turns = 0;
    clock.onEvents = [&turns] { ++turns; };
    clock.plan(0.02, [this] { device->receive("x"); });
    EXPECT_TRUE(module1.WaitForInput(0.05F, 1));
    EXPECT_NEAR(clock.passed(), 0.02, 0.002);
    EXPECT_FALSE(module1.WaitForInput(0.05F, 0));
    EXPECT_NEAR(clock.passed(), 0.07, 0.01);
    EXPECT_EQ(turns, 0);
}

/// Ticks of the counter since the latest wait, and what they count as: 2^32 is added to a low half that is negative.
struct TicksCase {
    std::int64_t ticks;
    double seconds;
};

TEST_F(Module1OnAFakeBus, NegativeHalvesOfTheCounterAreRead)
{
    module1.WaitForInput(0, 0); // at counter 0: the origin is -1
    for (const auto& [ticks, expected] : {TicksCase{0x80000000, 2147.483648},
                                          {0xFFFFFFFF, 4294.967295},
                                          {0x180000000, 6442.450944},
                                          {-5, -5e-6},
                                          {-0x100000000, 0},
                                          {-0x100000001, -4294.967297}}) {
        clock.counterStart = ticks - 1;
        float seconds = 7;
        EXPECT_TRUE(module1.PerfSeconds(seconds));
        EXPECT_FLOAT_EQ(seconds, static_cast<float>(expected)) << ticks;
    }
}

TEST_F(Module1OnAFakeBus, NegativeOrZeroLowHalfOfTheFrequencyIsRead)
{
    module1.WaitForInput(0, 0);
    clock.counterStart = 6'000'000'000 - 1;
    clock.frequency = 3'000'000'000; // its low half is negative
    float seconds = 0;
    EXPECT_TRUE(module1.PerfSeconds(seconds));
    EXPECT_FLOAT_EQ(seconds, 2);
    clock.frequency = 0x100000000; // its low half is zero
    EXPECT_TRUE(module1.PerfSeconds(seconds));
    EXPECT_FLOAT_EQ(seconds, static_cast<float>(6e9 / 8589934592.0));
}

} // namespace
} // namespace quorvel::link
