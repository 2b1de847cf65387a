#include "protocol/grayscale.h"

#include "support/scripted_readout.h"

#include "link/module1.h"

#include <gmock/gmock.h>

namespace quorvel::protocol {
namespace {

using ::testing::ElementsAre;

const GrayscaleRow& x() { return kGrayscales[0]; }
const GrayscaleRow& y() { return kGrayscales[1]; }
const GrayscaleRow& z1() { return kGrayscales[2]; }
const GrayscaleRow& z2() { return kGrayscales[3]; }

std::string echoOf(const GrayscaleRow& row) { return std::string(command(row.command).digits); }
/// Places in a reply, counted from 0.
std::size_t countAt(const GrayscaleRow& row) { return 3 + echoOf(row).size(); }
std::size_t firstPixelAt(const GrayscaleRow& row) { return countAt(row) + 4; }

bool readReply(const GrayscaleRow& row, const std::string& reply, PixelArray& array)
{
    return readGrayscale(row, reply, array).good;
}

/// A good reply of readout 1 whose pixels are all "1A".
std::string replyOf(const GrayscaleRow& row, int count)
{
    constexpr auto kDigits = "0123456789ABCDEF";
    std::string reply = ":01" + echoOf(row);
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
    EXPECT_EQ(grayscaleQuery(x(), "01").frame, ":0165FF\r\n");
    EXPECT_EQ(grayscaleQuery(y(), "F9").frame, ":F966FF\r\n");
    EXPECT_EQ(grayscaleQuery(z1(), "0C").frame, ":0C7803FF\r\n");
    EXPECT_EQ(grayscaleQuery(z2(), "00").frame, ":007804FF\r\n");
}

TEST(Grayscale, DirectionsAreFoundByTheirNames)
{
    EXPECT_EQ(findGrayscale("X"), &x());
    EXPECT_EQ(findGrayscale("Y"), &y());
    EXPECT_EQ(findGrayscale("Z1"), &z1());
    EXPECT_EQ(findGrayscale("Z2"), &z2());
    EXPECT_EQ(findGrayscale("Z"), nullptr);
    EXPECT_EQ(findGrayscale(""), nullptr);
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

class EachDirection : public ::testing::TestWithParam<GrayscaleRow> {
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
    for (const auto& other : kGrayscales) {
        auto reply = good_;
        const auto length = echoOf(GetParam()).size();
        reply.replace(3, length, echoOf(other).substr(0, length));
        EXPECT_EQ(reads(reply), other.sensor == GetParam().sensor) << nameOf(other.sensor);
    }
}

TEST_P(EachDirection, RefusesACountThatIsNoHexadecimalNumber)
{
    for (const auto* digits : {"000G", "   5", "+005", "0x05", "-005", "00.5"}) {
        auto reply = good_;
        reply.replace(countAt(GetParam()), 4, digits);
        EXPECT_FALSE(reads(reply)) << digits;
    }
    expectUntouched();
}

TEST_P(EachDirection, APixelThatIsNotHexadecimalTakesItsLeadingNumber)
{
    struct {
        const char* digits;
        int value;
    } const cases[] = {{"G0", 0}, {"0G", 0}, {"7G", 7}, {" 1", 0}, {"\xff\xff", 0}, {":0", 0}, {"F.", 15}};
    for (const auto& [digits, value] : cases) {
        auto reply = good_;
        reply.replace(firstPixelAt(GetParam()) + 2, 2, digits);
        const auto read = readGrayscale(GetParam(), reply, array_);
        EXPECT_TRUE(read.good) << digits;
        EXPECT_THAT(read.damaged, ElementsAre(2)) << digits;
        EXPECT_THAT(array_.pixels(), ElementsAre(26, value, 26, 26, 26)) << digits;
    }
    EXPECT_TRUE(readGrayscale(GetParam(), good_, array_).damaged.empty());
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
    reply.replace(countAt(GetParam()), 4, "FFFF");
    EXPECT_FALSE(reads(reply));
    EXPECT_FALSE(reads(reply.substr(0, reply.size() - 4) + "\r\n"));
    EXPECT_FALSE(reads(replyOf(GetParam(), 0xFFFF)));
    expectUntouched();
}

TEST_P(EachDirection, ProgressKnowsTheCountAsSoonAsItsDigitsAreThere)
{
    const auto progress = [this](std::size_t length) {
        return grayscaleProgress(GetParam(), good_.substr(0, length));
    };
    const auto first = firstPixelAt(GetParam());
    EXPECT_FALSE(progress(0).begun);
    EXPECT_TRUE(progress(1).begun);
    EXPECT_EQ(progress(0).received, 0);
    EXPECT_EQ(progress(first - 1).expected, -1);
    EXPECT_EQ(progress(first).expected, 5);
    EXPECT_EQ(progress(first + 1).received, 0);
    EXPECT_EQ(progress(first + 2).received, 1);
    EXPECT_EQ(progress(good_.size()).received, 5) << "the end digits are not pixels";
}

INSTANTIATE_TEST_SUITE_P(Grayscale, EachDirection, ::testing::ValuesIn(kGrayscales),
                         [](const auto& row) { return std::string(nameOf(row.param.sensor)); });

/// An exchange with a device that answers `reply` once the whole frame has arrived.
class Fetch : public ::testing::Test {
protected:
    GrayscaleReply fetchWith(const GrayscaleRow& row, const std::string& reply)
    {
        test::ScriptedReadout readout([&reply](const std::string&) { return reply; });
        readout.device->receive("left over from before\n");
        exchange_ = readout.module1.transact(grayscaleQuery(row, "05"));
        frames_ = readout.frames;
        passed_ = readout.clock.passed();
        return exchange_.complete() ? readGrayscale(row, exchange_.reply, array_) : GrayscaleReply();
    }

    PixelArray array_ = earlier();
    link::Exchange exchange_;
    std::vector<std::string> frames_;
    double passed_ = 0;
};

TEST_F(Fetch, ThrowsAwayWhatWaitsAndReadsTheReply)
{
    EXPECT_TRUE(fetchWith(x(), ":05650001FFFF\r\n").good);
    EXPECT_THAT(frames_, ElementsAre(":0565FF"));
    EXPECT_THAT(array_.pixels(), ElementsAre(255));
}

TEST_F(Fetch, EndsTwoSecondsAfterTheLastCharacterOfAReplyWithoutLineFeed)
{
    EXPECT_FALSE(fetchWith(y(), ":05660001FFFF\r").good);
    const double sending = 0.03 + 9 * 0.005;
    EXPECT_NEAR(passed_, sending + 2, 0.02);
    EXPECT_THAT(array_.pixels(), ElementsAre(7, 8, 9));
}

TEST_F(Fetch, SilenceIsNoReply)
{
    fetchWith(z1(), "");
    EXPECT_EQ(exchange_.outcome, link::Outcome::Silent);
}

TEST_F(Fetch, AReplyThatNeverEndsIsNoReply)
{
    fetchWith(x(), std::string(link::Module1::kLongestLine + 1, '0'));
    EXPECT_EQ(exchange_.outcome, link::Outcome::Short);
}

TEST_F(Fetch, AnotherEchoIsMalformed)
{
    EXPECT_FALSE(fetchWith(y(), ":05650001FFFF\r\n").good);
    EXPECT_TRUE(exchange_.complete());
    EXPECT_THAT(array_.pixels(), ElementsAre(7, 8, 9));
}

TEST_F(Fetch, OfTwoRepliesTheFirstCounts)
{
    EXPECT_TRUE(fetchWith(x(), ":05650001FFFF\r\n:0565000111FF\r\n").good);
    EXPECT_THAT(array_.pixels(), ElementsAre(255));
}

} // namespace
} // namespace quorvel::protocol
