#include "protocol/record.h"

#include <gmock/gmock.h>

namespace quorvel::protocol {

namespace {

using ::testing::ElementsAre;

std::string reply(const std::string& time, const std::string& readings)
{
    return ":01240007" + time + readings + "FF\r\n";
}

const std::string kXY = "+012.345-001.500";

TEST(Record, OfTwoDirections)
{
    const auto read = readRecord(reply("240517090530", kXY), kTwoDirections);
    EXPECT_TRUE(read.unreadable.empty());
    EXPECT_EQ(read.record.time.value().iso(), "2024-05-17T09:05:30");
    EXPECT_EQ(read.record.readings[0], 12.345F);
    EXPECT_EQ(read.record.readings[1], -1.5F);
}

TEST(Record, OfThreeDirections)
{
    const auto read = readRecord(reply("240517090530", kXY + " 3.25000+0.00001"), kThreeDirections);
    EXPECT_TRUE(read.unreadable.empty());
    EXPECT_EQ(read.record.readings[2], 3.25F);
    EXPECT_EQ(read.record.readings[3], 0.00001F);
}

TEST(Record, LeapDayToItsLastSecond)
{
    const auto read = readRecord(reply("240229235959", kXY), kTwoDirections);
    EXPECT_TRUE(read.unreadable.empty());
    EXPECT_EQ(read.record.time.value().iso(), "2024-02-29T23:59:59");
}

TEST(Record, CenturyIsAlwaysThePresentOne)
{
    const auto read = readRecord(reply("990101000000", kXY), kTwoDirections);
    EXPECT_TRUE(read.unreadable.empty());
    EXPECT_EQ(read.record.time.value().iso(), "2099-01-01T00:00:00");
}

/// What could not be read, one sentence each.
std::vector<std::string> unreadableIn(const RecordReply& read)
{
    std::vector<std::string> words;
    for (const auto& field : read.unreadable) {
        words.push_back(unreadableText(field));
    }
    return words;
}

class BadTimes : public ::testing::TestWithParam<const char*> {};

TEST_P(BadTimes, AreMissingAndTheRestIsRead)
{
    const std::string time = GetParam();
    const auto read = readRecord(reply(time, kXY), kTwoDirections);
    EXPECT_FALSE(read.record.time);
    EXPECT_THAT(unreadableIn(read), ElementsAre("no valid date and time: \"" + time + "\""));
    EXPECT_EQ(read.record.readings[0], 12.345F);
    EXPECT_EQ(read.record.readings[1], -1.5F);
}

INSTANTIATE_TEST_SUITE_P(Record, BadTimes,
                         ::testing::Values("230229000000", "241301000000", "240001000000", "240100000000",
                                           "240132000000", "240431000000", "240101240000", "240101006000",
                                           "240101000060", "000000000000", "2401 1000000", "24-1-1000000",
                                           "XX0101000000", "24010100:0:0"));

class BadNumbers : public ::testing::TestWithParam<const char*> {};

TEST_P(BadNumbers, AreMissingAndTheRestIsRead)
{
    const std::string number = GetParam();
    const auto x = readRecord(reply("240517090530", number + "+001.500"), kTwoDirections);
    EXPECT_FALSE(x.record.readings[0]);
    EXPECT_EQ(x.record.readings[1], 1.5F);
    EXPECT_THAT(unreadableIn(x), ElementsAre("no number for x: \"" + number + "\""));
    const auto z2 = readRecord(reply("240517090530", kXY + "+000.000" + number), kThreeDirections);
    EXPECT_FALSE(z2.record.readings[3]);
    EXPECT_THAT(unreadableIn(z2), ElementsAre("no number for z2: \"" + number + "\""));
}

INSTANTIATE_TEST_SUITE_P(Record, BadNumbers,
                         ::testing::Values("XYZABCDE", "        ", "+-12.345", "12.34.56", "1.5 2.5 ",
                                           "+01O.345", "+012,345", "+0012.3F", "1.0E+039", "-1E+9999",
                                           "........", "inf     ", "nan     ", "0x10    "));

TEST(Record, LineEndInsideANumberIsNoNumber)
{
    const auto read = readRecord(reply("240517090530", "\r\n 12.34+001.500"), kTwoDirections);
    EXPECT_THAT(unreadableIn(read), ElementsAre("no number for x: \"\\x0D\\x0A 12.34\""));
}

TEST(Record, OfAnyLengthAndNoiseIsReadAsFarAsItGoes)
{
    const auto whole = reply("240517090530", kXY);
    EXPECT_THAT(
        unreadableIn(readRecord("", kTwoDirections)),
        ElementsAre("no valid date and time: \"\"", "no number for x: \"\"", "no number for y: \"\""));
    EXPECT_THAT(unreadableIn(readRecord(whole.substr(0, 29), kTwoDirections)),
                ElementsAre("no number for y: \"\""));
    EXPECT_EQ(readRecord(std::string(57, '\xFF'), kThreeDirections).unreadable.size(), 5U);
    EXPECT_EQ(readRecord(std::string(41, '\0'), kTwoDirections).unreadable.size(), 3U);
    for (std::size_t shift = 1; shift < 41; ++shift) {
        const auto shifted = (std::string(shift, '~') + whole).substr(0, 41);
        EXPECT_FALSE(misfitsOf(":01240007FF\r\n", shifted, kTwoDirections).empty()) << shifted;
    }
}

const std::string kQuestion = ":01240007FF\r\n";

TEST(RecordMisfit, IsNoneInTheAnswerToTheQuestion)
{
    EXPECT_THAT(misfitsOf(kQuestion, reply("240517090530", kXY), kTwoDirections), ::testing::IsEmpty());
    EXPECT_THAT(misfitsOf(kQuestion, reply("240517090530", kXY + kXY), kThreeDirections),
                ::testing::IsEmpty());
}

/// A reply that does not fit, and how it is described.
struct Odd {
    const char* name;
    std::size_t at;
    const char* characters;
    Misfit misfit;
    const char* words;
};

class OddReply : public ::testing::TestWithParam<Odd> {};

TEST_P(OddReply, IsSeen)
{
    auto odd = reply("240517090530", kXY);
    odd.replace(GetParam().at, std::string(GetParam().characters).size(), GetParam().characters);
    ASSERT_THAT(misfitsOf(kQuestion, odd, kTwoDirections), ElementsAre(GetParam().misfit));
    EXPECT_EQ(misfitText(GetParam().misfit, odd), GetParam().words);
}

INSTANTIATE_TEST_SUITE_P(
    Record, OddReply,
    ::testing::Values(Odd{"Address", 1, "11", Misfit::Address, "it is of the readout at 11"},
                      Odd{"Start", 0, ";", Misfit::Address, "it is of the readout at 01"},
                      Odd{"Command", 3, "34", Misfit::Command, "it answers the command 34"},
                      Odd{"Slot", 5, "0017", Misfit::Slot, "it is of slot 0017"},
                      Odd{"EndMark", 37, "GF", Misfit::EndMark, "it has no end mark"},
                      Odd{"LineEnd", 40, "\x0B", Misfit::EndMark, "it has no end mark"}),
    [](const auto& odd) { return std::string(odd.param.name); });

TEST(RecordMisfit, ZThatFollowsIsNamed)
{
    const auto three = reply("240517090530", kXY + "+003.000+004.000").substr(0, 41);
    ASSERT_THAT(misfitsOf(kQuestion, three, kTwoDirections), ElementsAre(Misfit::HasZ));
    EXPECT_EQ(misfitText(Misfit::HasZ, three), "Z follows, so the readout is of type C");
}

TEST(RecordLayout, IsToldByLengthAndEnd)
{
    const auto two = reply("240517090530", kXY);
    const auto three = reply("240517090530", kXY + kXY);
    EXPECT_EQ(layoutOfReply(two), kTwoDirections);
    EXPECT_EQ(layoutOfReply(three), kThreeDirections);
    for (const auto& neither :
         {std::string(), two + "0", three.substr(0, 41), three.substr(0, 56), two + two}) {
        EXPECT_EQ(layoutOfReply(neither), std::nullopt) << neither;
    }
}

TEST(Record, TextsOfAProgress)
{
    EXPECT_EQ(receivedText(1000, 1000), "Total 1000 records. 1000 records have been received.");
    EXPECT_EQ(receivedText(5, 1), "Total 5 records. 1 records have been received.");
    EXPECT_EQ(brokenText(0), "0 records have been received, Comm Error");
    EXPECT_EQ(brokenText(999), "999 records have been received, Comm Error");
}

} // namespace

} // namespace quorvel::protocol
