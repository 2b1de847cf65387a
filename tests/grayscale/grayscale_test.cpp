#include "grayscale/grayscale.h"

#include "support/fake_device.h"
#include "support/hand_clock.h"

#include <gmock/gmock.h>

namespace quorvel::grayscale {
namespace {

using test::FakeDevice;
using test::HandClock;
using ::testing::ElementsAre;

const Direction& x() { return kDirections[0]; }
const Direction& y() { return kDirections[1]; }
const Direction& z1() { return kDirections[2]; }
const Direction& z2() { return kDirections[3]; }

/// A good reply of readout 1 whose pixels are all "1A".
std::string replyOf(const Direction& direction, int count)
{
    constexpr auto kDigits = "0123456789ABCDEF";
    std::string reply = ":01" + std::string(direction.echo);
    for (int shift = 12; shift >= 0; shift -= 4) {
        reply += kDigits[(count >> shift) & 15];
    }
    for (int i = 0; i < count; ++i) {
        reply += "1A";
    }
    return reply + "FF\r\n";
}

/// An array that holds an earlier reading of three pixels.
PixelArray earlier()
{
    PixelArray array;
    array.store(std::vector<std::int16_t>{7, 8, 9});
    return array;
}

TEST(Grayscale, EachDirectionHasItsFrame)
{
    EXPECT_EQ(frame(x(), "01"), ":0165FF\r\n");
    EXPECT_EQ(frame(y(), "F9"), ":F966FF\r\n");
    EXPECT_EQ(frame(z1(), "0C"), ":0C7803FF\r\n");
    EXPECT_EQ(frame(z2(), "00"), ":007804FF\r\n");
}

TEST(Grayscale, DirectionsAreFoundByTheirNames)
{
    EXPECT_EQ(findDirection("X"), &x());
    EXPECT_EQ(findDirection("Y"), &y());
    EXPECT_EQ(findDirection("Z1"), &z1());
    EXPECT_EQ(findDirection("Z2"), &z2());
    EXPECT_EQ(findDirection("Z"), nullptr);
    EXPECT_EQ(findDirection(""), nullptr);
}

TEST(Grayscale, TwoPixelsOfX)
{
    PixelArray array;
    ASSERT_TRUE(readReply(x(), ":016500021AFFFF\r\n", array));
    EXPECT_EQ(array[0], 2);
    EXPECT_EQ(array[1], 26);
    EXPECT_EQ(array[2], 255);
}

TEST(Grayscale, TwoPixelsOfZ2BeginAtPosition12)
{
    PixelArray array;
    ASSERT_TRUE(readReply(z2(), ":0178040002017fFF\r\n", array));
    EXPECT_THAT(array.pixels(), ElementsAre(1, 127));
}

TEST(Grayscale, NoPixelsAreAGoodReply)
{
    auto array = earlier();
    ASSERT_TRUE(readReply(x(), ":01650000FF\r\n", array));
    EXPECT_EQ(array.count(), 0);
    EXPECT_EQ(array[1], 7) << "older values stay";
}

TEST(Grayscale, AShorterReadingKeepsOlderValuesAboveIt)
{
    auto array = earlier();
    ASSERT_TRUE(readReply(x(), ":01650001FFFF\r\n", array));
    EXPECT_EQ(array[0], 1);
    EXPECT_EQ(array[1], 255);
    EXPECT_EQ(array[2], 8);
    EXPECT_EQ(array[3], 9);
}

TEST(Grayscale, WhatStandsBehindThePixelsIsNotLookedAt)
{
    PixelArray array;
    EXPECT_TRUE(readReply(x(), ":0165000110??\r\n", array));
    EXPECT_EQ(array[1], 16);
}

class EachDirection : public ::testing::TestWithParam<Direction> {
protected:
    bool reads(const std::string& reply) { return readReply(GetParam(), reply, array_); }
    void expectUntouched() const { EXPECT_THAT(array_.pixels(), ElementsAre(7, 8, 9)); }

    const std::string good_ = replyOf(GetParam(), 5);
    PixelArray array_ = earlier();
};

TEST_P(EachDirection, TakesTheRightLength)
{
    EXPECT_TRUE(reads(good_));
    EXPECT_THAT(array_.pixels(), ElementsAre(26, 26, 26, 26, 26));
}

TEST_P(EachDirection, RefusesOneCharacterTooMany)
{
    EXPECT_FALSE(reads(good_.substr(0, good_.size() - 2) + "0\r\n"));
    expectUntouched();
}

TEST_P(EachDirection, RefusesOneCharacterTooFew)
{
    EXPECT_FALSE(reads(good_.substr(0, good_.size() - 3) + "\r\n"));
    expectUntouched();
}

TEST_P(EachDirection, RefusesEveryReplyThatIsCutOff)
{
    for (std::size_t length = 0; length < good_.size(); ++length) {
        EXPECT_FALSE(reads(good_.substr(0, length))) << length;
    }
    expectUntouched();
}

TEST_P(EachDirection, RefusesTwoRepliesInOneLine)
{
    EXPECT_FALSE(reads(good_.substr(0, good_.size() - 2) + good_));
    expectUntouched();
}

TEST_P(EachDirection, RefusesNoise)
{
    EXPECT_FALSE(reads("~" + good_));
    EXPECT_FALSE(reads("~\n"));
    EXPECT_FALSE(reads("\n"));
    EXPECT_FALSE(reads(std::string(good_.size(), '\xff')));
    expectUntouched();
}

TEST_P(EachDirection, RefusesTheEchoOfEveryOtherDirection)
{
    for (const auto& other : kDirections) {
        auto reply = good_;
        reply.replace(3, GetParam().echo.size(), other.echo.substr(0, GetParam().echo.size()));
        EXPECT_EQ(reads(reply), other.name == GetParam().name) << other.name;
    }
}

TEST_P(EachDirection, RefusesACountThatIsNoHexadecimalNumber)
{
    for (const auto* digits : {"000G", "   5", "+005", "0x05", "-005", "00.5"}) {
        auto reply = good_;
        reply.replace(static_cast<std::size_t>(GetParam().countAt - 1), 4, digits);
        EXPECT_FALSE(reads(reply)) << digits;
    }
    expectUntouched();
}

TEST_P(EachDirection, RefusesAPixelThatIsNoHexadecimalNumber)
{
    for (const auto* digits : {"G0", "0G", " 1", "\xff\xff", ":0"}) {
        auto reply = good_;
        reply.replace(static_cast<std::size_t>(GetParam().firstPixelAt + 1), 2, digits);
        EXPECT_FALSE(reads(reply)) << digits;
    }
    expectUntouched();
}

TEST_P(EachDirection, Takes20000PixelsAndRefusesOneMore)
{
    EXPECT_TRUE(reads(replyOf(GetParam(), 20000)));
    EXPECT_EQ(array_.count(), 20000);
    EXPECT_EQ(array_[20000], 26);
    EXPECT_FALSE(reads(replyOf(GetParam(), 20001)));
    EXPECT_EQ(array_.count(), 20000);
}

// Read as a 16-bit number with sign, FFFF would be -1 and its required length two less than that of no pixels.
TEST_P(EachDirection, RefusesACountThatIsNegativeIn16Bits)
{
    auto reply = replyOf(GetParam(), 0);
    reply.replace(static_cast<std::size_t>(GetParam().countAt - 1), 4, "FFFF");
    EXPECT_FALSE(reads(reply));
    EXPECT_FALSE(reads(reply.substr(0, reply.size() - 4) + "\r\n"));
    EXPECT_FALSE(reads(replyOf(GetParam(), 0xFFFF)));
    expectUntouched();
}

TEST_P(EachDirection, ProgressKnowsTheCountAsSoonAsItsDigitsAreThere)
{
    const auto& direction = GetParam();
    const auto until = [this](int length) { return good_.substr(0, static_cast<std::size_t>(length)); };
    EXPECT_EQ(progress(direction, "").received, 0);
    EXPECT_EQ(progress(direction, until(direction.firstPixelAt - 2)).expected, -1);
    EXPECT_EQ(progress(direction, until(direction.firstPixelAt - 1)).expected, 5);
    EXPECT_EQ(progress(direction, until(direction.firstPixelAt)).received, 0);
    EXPECT_EQ(progress(direction, until(direction.firstPixelAt + 1)).received, 1);
    EXPECT_EQ(progress(direction, good_).received, 5) << "the end digits are no pixels";
}

INSTANTIATE_TEST_SUITE_P(Grayscale, EachDirection, ::testing::ValuesIn(kDirections),
                         [](const auto& row) { return std::string(row.param.name); });

/// A transaction with a device that answers `reply` once the whole frame has arrived.
class Fetch : public ::testing::Test {
protected:
    Outcome fetchWith(const Direction& direction, const std::string& reply)
    {
        HandClock clock;
        const link::PortList ports({QStringLiteral("fake")}, [] { return std::vector<link::PortInfo>(); });
        auto owned = std::make_unique<FakeDevice>();
        auto* device = owned.get();
        device->waiting = "left over from before\n";
        device->onCharacter = [device, reply](char character) {
            if (character == '\n') device->receive(reply);
        };
        link::MSComm port(ports, [&](const QString&, const link::LineSettings&) {
            return link::OpenedDevice{std::move(owned), QString()};
        });
        EXPECT_TRUE(port.setPortOpen(true).isEmpty());
        link::Module1 module1(port, clock);
        const auto outcome = fetch(module1, direction, "05", array_);
        written_ = device->written;
        passed_ = clock.passed();
        return outcome;
    }

    PixelArray array_ = earlier();
    std::string written_;
    double passed_ = 0;
};

TEST_F(Fetch, ThrowsAwayWhatWaitsAndReadsTheReply)
{
    EXPECT_EQ(fetchWith(x(), ":05650001FFFF\r\n"), Outcome::Read);
    EXPECT_EQ(written_, ":0565FF\r\n");
    EXPECT_THAT(array_.pixels(), ElementsAre(255));
}

TEST_F(Fetch, EndsTwoSecondsAfterTheLastCharacterOfAReplyWithoutLineFeed)
{
    EXPECT_EQ(fetchWith(y(), ":05660001FFFF\r"), Outcome::NoReply);
    const double sending = 0.03 + 9 * 0.005;
    EXPECT_NEAR(passed_, sending + 2, 0.02);
    EXPECT_THAT(array_.pixels(), ElementsAre(7, 8, 9));
}

TEST_F(Fetch, SilenceIsNoReply) { EXPECT_EQ(fetchWith(z1(), ""), Outcome::NoReply); }

TEST_F(Fetch, AReplyThatNeverEndsIsNoReply)
{
    EXPECT_EQ(fetchWith(x(), std::string(link::Module1::kLongestLine + 1, '0')), Outcome::NoReply);
}

TEST_F(Fetch, AnotherEchoIsMalformed)
{
    EXPECT_EQ(fetchWith(y(), ":05650001FFFF\r\n"), Outcome::Malformed);
    EXPECT_THAT(array_.pixels(), ElementsAre(7, 8, 9));
}

TEST_F(Fetch, OfTwoRepliesTheFirstCounts)
{
    EXPECT_EQ(fetchWith(x(), ":05650001FFFF\r\n:0565000111FF\r\n"), Outcome::Read);
    EXPECT_THAT(array_.pixels(), ElementsAre(255));
}

} // namespace
} // namespace quorvel::grayscale
