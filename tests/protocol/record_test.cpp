#include "protocol/record.h"

#include <gtest/gtest.h>

namespace quorvel::protocol {

namespace {

std::string reply(const std::string& time, const std::string& readings)
{
    return ":01240007" + time + readings + "FF\r\n";
}

const std::string kXY = "+012.345-001.500";

TEST(Record, OfTwoDirections)
{
    const auto read = readRecord(reply("240517090530", kXY), kTwoDirections);
    ASSERT_TRUE(read.record) << read.fault;
    EXPECT_EQ(read.record->time.iso(), "2024-05-17T09:05:30");
    EXPECT_EQ(read.record->readings[0], 12.345F);
    EXPECT_EQ(read.record->readings[1], -1.5F);
}

TEST(Record, OfThreeDirections)
{
    const auto read = readRecord(reply("240517090530", kXY + " 3.25000+0.00001"), kThreeDirections);
    ASSERT_TRUE(read.record) << read.fault;
    EXPECT_EQ(read.record->readings[2], 3.25F);
    EXPECT_EQ(read.record->readings[3], 0.00001F);
}

TEST(Record, LeapDayToItsLastSecond)
{
    const auto read = readRecord(reply("240229235959", kXY), kTwoDirections);
    ASSERT_TRUE(read.record) << read.fault;
    EXPECT_EQ(read.record->time.iso(), "2024-02-29T23:59:59");
}

TEST(Record, CenturyIsAlwaysThePresentOne)
{
    const auto read = readRecord(reply("990101000000", kXY), kTwoDirections);
    ASSERT_TRUE(read.record) << read.fault;
    EXPECT_EQ(read.record->time.iso(), "2099-01-01T00:00:00");
}

class BadTimes : public ::testing::TestWithParam<const char*> {};

TEST_P(BadTimes, AreNoRecord)
{
    const std::string time = GetParam();
    const auto read = readRecord(reply(time, kXY), kTwoDirections);
    EXPECT_FALSE(read.record);
    EXPECT_EQ(read.fault, "no valid date and time: \"" + time + "\"");
}

INSTANTIATE_TEST_SUITE_P(Record, BadTimes,
                         ::testing::Values("230229000000", "241301000000", "240001000000", "240100000000",
                                           "240132000000", "240431000000", "240101240000", "240101006000",
                                           "240101000060", "000000000000", "2401 1000000", "24-1-1000000",
                                           "XX0101000000", "24010100:0:0"));

class BadNumbers : public ::testing::TestWithParam<const char*> {};

TEST_P(BadNumbers, AreNoRecord)
{
    const std::string number = GetParam();
    const auto x = readRecord(reply("240517090530", number + "+001.500"), kTwoDirections);
    EXPECT_FALSE(x.record);
    EXPECT_EQ(x.fault, "no number for x: \"" + number + "\"");
    const auto z2 = readRecord(reply("240517090530", kXY + "+000.000" + number), kThreeDirections);
    EXPECT_FALSE(z2.record);
    EXPECT_EQ(z2.fault, "no number for z2: \"" + number + "\"");
}

INSTANTIATE_TEST_SUITE_P(Record, BadNumbers,
                         ::testing::Values("XYZABCDE", "        ", "+-12.345", "12.34.56", "1.5 2.5 ",
                                           "+01O.345", "+012,345", "+0012.3F", "1.0E+039", "-1E+9999",
                                           "........", "inf     ", "nan     ", "0x10    "));

TEST(Record, LineEndInsideANumberIsNoNumber)
{
    const auto read = readRecord(reply("240517090530", "\r\n 12.34+001.500"), kTwoDirections);
    EXPECT_FALSE(read.record);
    EXPECT_EQ(read.fault, "no number for x: \"\\x0D\\x0A 12.34\"");
}

TEST(Record, OfAnotherLengthIsNone)
{
    const auto whole = reply("240517090530", kXY);
    ASSERT_EQ(whole.size(), 41U);
    for (const auto& received : {std::string(), whole.substr(0, 40), whole + "0", whole + whole,
                                 std::string(57, '~'), whole.substr(3)}) {
        EXPECT_FALSE(readRecord(received, kTwoDirections).record) << received;
    }
    EXPECT_FALSE(readRecord(whole, kThreeDirections).record);
    EXPECT_FALSE(readRecord(reply("240517090530", kXY + kXY), kTwoDirections).record);
}

TEST(Record, OfThreeDirectionsCutAnywhereIsNone)
{
    const auto whole = reply("240517090530", kXY + kXY);
    ASSERT_EQ(whole.size(), 57U);
    for (std::size_t length = 41; length < 57; ++length) {
        EXPECT_FALSE(readRecord(whole.substr(0, length), kThreeDirections).record) << length;
    }
}

TEST(Record, NoiseThatShiftsTheReplyIsNone)
{
    const auto whole = reply("240517090530", kXY);
    for (std::size_t shift = 1; shift < 41; ++shift) {
        const auto shifted = (std::string(shift, '~') + whole).substr(0, 41);
        EXPECT_FALSE(readRecord(shifted, kTwoDirections).record) << shifted;
    }
    EXPECT_FALSE(readRecord(std::string(41, '\xFF'), kTwoDirections).record);
    EXPECT_FALSE(readRecord(std::string(41, '\0'), kTwoDirections).record);
}

TEST(Record, TextsOfAProgress)
{
    EXPECT_EQ(receivedText(1000, 1000), "Total 1000 records. 1000 records have been received.");
    EXPECT_EQ(receivedText(5, 1), "Total 5 records. 1 records have been received.");
    EXPECT_EQ(brokenText(0), "0 records have been received, Comm Error");
    EXPECT_EQ(brokenText(999), "999 records have been received, Comm Error");
}

TEST(Record, BadOneIsNamedWithItsCharacters)
{
    EXPECT_EQ(badRecordText(7, "no valid date and time: \"24133\\xFF\"", ":0124000724133\xFF\r\n", 3),
              "Record 0007 of the readout holds no valid date and time: \"24133\\xFF\". Characters received: "
              "\":0124000724133\\xFF\". The download has stopped; the 3 records before it are in the file. "
              "Check the instrument "
              "type and try again; the readout still has all its data.");
}

} // namespace

} // namespace quorvel::protocol
