#include "protocol/values.h"
#include "support/fake_device.h"
#include "support/hand_clock.h"

#include "link/module1.h"

#include <gtest/gtest.h>

namespace quorvel::protocol {
namespace {

using namespace link;

const std::string kGood = ":052101+12.3456-00.0078FF\r\nxx"; // 29 characters

constexpr double kFrameTime = 0.03 + 11 * 0.005; // s, for ":052101FF" and its line end
constexpr double kTolerance = 0.01;              // s

TEST(Values, FrameNamesTheReadout)
{
    EXPECT_EQ(xyQuery("05").frame, ":052101FF\r\n");
    EXPECT_EQ(zQuery("F9").frame, ":F92102FF\r\n");
}

TEST(Values, LineShowsTheFieldsAsReceived)
{
    ASSERT_EQ(kGood.size(), 29U);
    EXPECT_EQ(xyText(kGood), "  X: +12.3456  Y: -00.0078  ");
    EXPECT_EQ(xyText(":052101   1.5  -  7    FF\r\nxx"), "  X:    1.5    Y: -  7      ");
}

TEST(Values, AnyOtherLengthIsACommError)
{
    for (const auto& reply : {std::string(), kGood.substr(0, 28), kGood + "x", kGood + kGood}) {
        EXPECT_EQ(xyText(reply), " CommError") << reply.size();
    }
}

TEST(Values, ZComesOnceOrTwiceByEdition)
{
    EXPECT_EQ(zText(kGood, true), "Z: +12.3456");
    EXPECT_EQ(zText(kGood, false), "Z1: +12.3456  Z2: -00.0078  ");
    EXPECT_EQ(zText(":052102+12", true), "Z: +12");
    EXPECT_EQ(zText("", true), "Z: ");
}

TEST(Values, OnlyAnAnswerWithTwoValuesOrSilenceTellsWhetherThereIsZ)
{
    Exchange asked;
    asked.transaction = zQuery("05");
    asked.outcome = Outcome::Complete;
    const auto told = [&asked](const std::string& reply) {
        asked.reply = reply;
        return measuresZ(asked);
    };
    EXPECT_EQ(told(":052102+12.3456-00.007800FF\r\n"), true);
    EXPECT_EQ(told(":052102+12.3456-00.0078FF\r\n"), true) << "27 characters";
    for (const auto* reply :
         {"", ":052102FF\r\n", ":052101+12.3456-00.007800FF\r\n", ":052102~~~~~~~~+12.345600FF\r\n",
          ":062102+12.3456-00.007800FF\r\n", ":052102+12.3456"})
        EXPECT_EQ(told(reply), std::nullopt) << reply;
    asked.outcome = Outcome::Silent;
    EXPECT_EQ(told(""), false);
    asked.outcome = Outcome::PortLost;
    EXPECT_EQ(told(""), std::nullopt);
}

class ReadingOnAFakeBus : public ::testing::Test {
protected:
    ReadingOnAFakeBus()
    {
        comm.setPortOpen(true);
        device->onCharacter = [this](char c) {
            if (c != '\n' || replies.empty()) return;
            device->receive(replies.front());
            replies.erase(replies.begin());
        };
    }

    test::FakeDevice* device = nullptr;
    PortList ports{{"/dev/ttyFake"}, [] { return std::vector<PortInfo>(); }};
    MSComm comm{ports, [this](const QString&, const LineSettings&) {
                    auto opened = std::make_unique<test::FakeDevice>();
                    device = opened.get();
                    return OpenedDevice{std::move(opened), {}};
                }};
    test::HandClock clock;
    Module1 module1{comm, clock};
    Bench bench;
    std::vector<std::string> replies;
};

TEST_F(ReadingOnAFakeBus, TwoDirectionTypesAskOnce)
{
    replies = {kGood};
    for (const auto type : {TypeA, TypeB, TypeD}) {
        bench.instrumentType = type;
        replies = {kGood};
        device->written.clear();
        EXPECT_EQ(ReadSensorValues(module1, 5, bench), "  X: +12.3456  Y: -00.0078  ");
        EXPECT_EQ(device->written, ":052101FF\r\n");
    }
}

TEST_F(ReadingOnAFakeBus, StaleCharactersAreThrownAwayFirst)
{
    device->receive("left over");
    replies = {kGood};
    EXPECT_EQ(ReadSensorValues(module1, 5, bench), "  X: +12.3456  Y: -00.0078  ");
}

TEST_F(ReadingOnAFakeBus, TheThreeDirectionTypeAsksForZToo)
{
    bench.instrumentType = TypeC;
    replies = {kGood, ":052102+00.1111+00.2222FF\r\nxx"};
    EXPECT_EQ(ReadSensorValues(module1, 5, bench), "  X: +12.3456  Y: -00.0078  Z: +00.1111");
    EXPECT_EQ(device->written, ":052101FF\r\n:052102FF\r\n");
    bench.edition = "FACTORY";
    replies = {kGood, ":052102+00.1111+00.2222FF\r\nxx"};
    EXPECT_EQ(ReadSensorValues(module1, 5, bench),
              "  X: +12.3456  Y: -00.0078  Z1: +00.1111  Z2: +00.2222  ");
}

TEST_F(ReadingOnAFakeBus, TheZFrameFollowsAfterAPauseAndADrain)
{
    bench.instrumentType = TypeC;
    replies = {kGood, ":052102+00.1111+00.2222FF\r\nxx"};
    std::vector<double> starts;
    device->onCharacter = [this, &starts, answer = device->onCharacter](char c) {
        if (c == ':') starts.push_back(clock.passed());
        answer(c);
    };
    clock.plan(kFrameTime + 0.15, [this] { device->receive("late"); });
    EXPECT_EQ(ReadSensorValues(module1, 5, bench), "  X: +12.3456  Y: -00.0078  Z: +00.1111");
    ASSERT_EQ(starts.size(), 2U);
    EXPECT_NEAR(starts[1] - starts[0], kFrameTime + 0.2, kTolerance);
}

TEST_F(ReadingOnAFakeBus, ASilentZIsAnEmptyField)
{
    bench.instrumentType = TypeC;
    replies = {kGood};
    EXPECT_EQ(ReadSensorValues(module1, 5, bench), "  X: +12.3456  Y: -00.0078  Z: ");
}

TEST_F(ReadingOnAFakeBus, ABadZReplyIsNotDetected)
{
    bench.instrumentType = TypeC;
    replies = {kGood, ":052102+12"};
    EXPECT_EQ(ReadSensorValues(module1, 5, bench), "  X: +12.3456  Y: -00.0078  Z: +12");
}

TEST_F(ReadingOnAFakeBus, ASilentReadoutTakesOneAndAHalfSecondsAndGivesCommError)
{
    EXPECT_EQ(ReadSensorValues(module1, 5, bench), " CommError");
    EXPECT_NEAR(clock.passed(), kFrameTime + 1.5 + 0.1, kTolerance);
}

TEST_F(ReadingOnAFakeBus, AGoodReadingTakesItsFrameAndATenthOfASecond)
{
    replies = {kGood};
    EXPECT_EQ(ReadSensorValues(module1, 5, bench), "  X: +12.3456  Y: -00.0078  ");
    EXPECT_NEAR(clock.passed(), kFrameTime + 0.1, kTolerance);
}

TEST_F(ReadingOnAFakeBus, AReplyThatIsOneCharacterTooLongIsACommError)
{
    replies = {kGood + "x"};
    EXPECT_EQ(ReadSensorValues(module1, 5, bench), " CommError");
}

TEST_F(ReadingOnAFakeBus, AFailedFirstReplyAsksForNoZ)
{
    bench.instrumentType = TypeC;
    replies = {kGood.substr(0, 28)};
    EXPECT_EQ(ReadSensorValues(module1, 5, bench), " CommError");
    EXPECT_EQ(device->written, ":052101FF\r\n");
}

TEST_F(ReadingOnAFakeBus, CharactersAfterTheReplyAreThrownAway)
{
    replies = {kGood};
    clock.plan(kFrameTime + 0.05, [this] { device->receive("late"); });
    ReadSensorValues(module1, 5, bench);
    EXPECT_GT(clock.passed(), kFrameTime + 0.05);
    EXPECT_EQ(comm.InBufferCount(), 0);
}

TEST_F(ReadingOnAFakeBus, CharactersAfterTheTimeIsOverAreThrownAway)
{
    clock.plan(kFrameTime + 1.55, [this] { device->receive(kGood); });
    EXPECT_EQ(ReadSensorValues(module1, 5, bench), " CommError");
    EXPECT_EQ(comm.InBufferCount(), 0);
}

} // namespace
} // namespace quorvel::protocol
