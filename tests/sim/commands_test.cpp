#include "sim/commands.h"

#include "sim/text.h"
#include "tests/sim/test_bus.h"

#include <gtest/gtest.h>

namespace quorvelsim {
namespace {

struct Exchange {
    const char* name;
    const char* command;
    const char* answer;
};

void PrintTo(const Exchange& exchange, std::ostream* out) { *out << exchange.command; }

/// A fresh readout 5 (type A) or 33 (type C) answers this exactly.
class Answers : public testing::TestWithParam<Exchange> {};

TEST_P(Answers, ToTheLetter)
{
    TestBus test;
    EXPECT_EQ(test.talk(GetParam().command), GetParam().answer);
}

constexpr Exchange kExchanges[] = {
    {"Address", ":05020CFF", ":05020CFF\r\n"},
    {"AddressOutOfRange", ":0502FAFF", ""},
    {"AddressZero", ":050200FF", ""},
    {"Clock", ":0504FF", ":0504240517090530FF\r\n"},
    {"SetClock", ":0503240229235959FF", ":0503240229235959FF\r\n"},
    {"SetClockToNoDate", ":0503240230235959FF", ""},
    {"Mode", ":0506FF", ":05060101000000FF\r\n"},
    {"SetInterval", ":05050100050000FF", ":05050100050000FF\r\n"},
    {"SetIntervalWithoutCode", ":050501FF", ""},
    {"SetIntervalOfZero", ":05050100000000FF", ""},
    {"RingPointers", ":0522FF", ":0522100000000200FF\r\n"},
    {"RecordBeyondTheRing", ":05241000FF", ""},
    {"RecordNeverWritten", ":05240200FF", ":05240200000000000000+000.000+000.000FF\r\n"},
    {"Delete", ":0525FF", ":0525FF\r\n"},
    {"Wire", ":0568FF", ":05681503010000FF\r\n"},
    {"SetWire", ":05671204000000FF", ":05671204000000FF\r\n"},
    {"SetWireTooThick", ":056712304000000FF", ""},
    {"Offset", ":0572FF", ":0572+0.00000FF\r\n"},
    {"OffsetY", ":0574FF", ":0574+0.00000FF\r\n"},
    {"OffsetZ", ":217806FF", ":217806+0.00000FF\r\n"},
    {"SetOffset", ":0571-12.5000FF", ":0571-12.5000FF\r\n"},
    {"SetOffsetY", ":0573+1.50000FF", ":0573+1.50000FF\r\n"},
    {"SetOffsetZ", ":217805+123.400FF", ":217805+123.400FF\r\n"},
    {"SetOffsetTooLong", ":0571+1000.000FF", ""},
    {"SetOffsetWithoutNumber", ":0571+1.5x000FF", ""},
    {"Reference", ":0576FF", ":057600FF\r\n"},
    {"SetReference", ":057501FF", ":057501FF\r\n"},
    {"SetReferenceToNonsense", ":057502FF", ""},
    {"Swap", ":057702FF", ":05770200FF\r\n"},
    {"InvertX", ":057704FF", ":05770400FF\r\n"},
    {"InvertY", ":057706FF", ":05770600FF\r\n"},
    {"InvertZ", ":217708FF", ":21770800FF\r\n"},
    {"SetSwap", ":05770101FF", ":05770101FF\r\n"},
    {"SetInvertZ", ":21770701FF", ":21770701FF\r\n"},
    {"Stitching", ":0C7822FF", ":0C78223665FF\r\n"},
    {"SetStitching", ":0C78210512FF", ":0C78210512FF\r\n"},
    {"SetStitchingToLetters", ":0C7821abcdFF", ":0C7821abcdFF\r\n"},
    {"SetStitchingToFiveCharacters", ":0C7821 1234FF", ""},
    {"ZReadingOfTypeA", ":052102FF", ""},
    {"YGrayscaleOfTypeD", ":6466FF", ""},
    {"Z1GrayscaleOfTypeB", ":0C7803FF", ""},
    {"UnknownCommand", ":0599FF", ""},
    {"NoCommand", ":05", ""},
    {"NoAddress", ":", ""},
    {"NoEnd", ":052101", ""},
    {"TooMuch", ":0521010FF", ""},
    {"NobodyThere", ":062101FF", ""},
    {"LowerCaseAddress", ":0c7822FF", ":0C78223665FF\r\n"},
    {"ControlCharacter", ":0C7821a\tbcFF", ""},
};

INSTANTIATE_TEST_SUITE_P(Readout, Answers, testing::ValuesIn(kExchanges), caseName);

struct Setting {
    const char* name;
    const char* set;
    const char* query;
    const char* answer;
};

void PrintTo(const Setting& setting, std::ostream* out) { *out << setting.set; }

class Settings : public testing::TestWithParam<Setting> {};

TEST_P(Settings, AreKept)
{
    TestBus test;
    EXPECT_EQ(test.talk(GetParam().set, 1), std::string(GetParam().set) + "\r\n");
    EXPECT_EQ(test.talk(GetParam().query), std::string(GetParam().answer) + "\r\n");
}

constexpr Setting kSettings[] = {
    {"Clock", ":0503240229235958FF", ":0504FF", ":0504240229235959FF"},
    {"Interval", ":05050100002000FF", ":0506FF", ":05060100002000FF"},
    {"Wire", ":05671204000000FF", ":0568FF", ":05681204000000FF"},
    {"OffsetX", ":0571-12.5000FF", ":0572FF", ":0572-12.5000FF"},
    {"OffsetY", ":0573+1.50000FF", ":0574FF", ":0574+1.50000FF"},
    {"OffsetZ", ":217805+123.400FF", ":217806FF", ":217806+123.400FF"},
    {"Reference", ":057501FF", ":0576FF", ":057601FF"},
    {"Swap", ":05770101FF", ":057702FF", ":05770201FF"},
    {"InvertX", ":05770301FF", ":057704FF", ":05770401FF"},
    {"InvertY", ":05770501FF", ":057706FF", ":05770601FF"},
    {"InvertZ", ":21770701FF", ":217708FF", ":21770801FF"},
    {"Stitching", ":0C7821abcdFF", ":0C7822FF", ":0C7822abcdFF"},
    {"Delete", ":0525FF", ":0522FF", ":0522100000000000FF"},
    {"Address", ":050207FF", ":0772FF", ":0772+0.00000FF"},
};

INSTANTIATE_TEST_SUITE_P(Readout, Settings, testing::ValuesIn(kSettings), caseName);

class Readings : public testing::Test {
protected:
    Readings()
    {
        auto& readout = *test.bus.find(33);
        readout.pinned = {12.5, 30.25, 1.5, 2.5};
    }
    std::string xy() { return test.talk(":212101FF"); }
    std::string z() { return test.talk(":212102FF"); }

    TestBus test;
};

TEST_F(Readings, ShowWhereTheWireHangs)
{
    EXPECT_EQ(xy(), ":212101+12.5000+30.250000FF\r\n");
    EXPECT_EQ(z(), ":212102+1.50000+2.5000000FF\r\n");
}

TEST_F(Readings, AddOffsets)
{
    test.talk(":2171+1.50000FF");
    test.talk(":2173-30.2500FF");
    test.talk(":217805-2.00000FF");
    EXPECT_EQ(xy(), ":212101+14.0000+0.0000000FF\r\n");
    EXPECT_EQ(z(), ":212102-0.50000+0.5000000FF\r\n");
}

TEST_F(Readings, AreInvertedBeforeTheOffsetIsAdded)
{
    test.talk(":21770301FF");
    test.talk(":21770701FF");
    test.talk(":2171+1.00000FF");
    EXPECT_EQ(xy(), ":212101-11.5000+30.250000FF\r\n");
    EXPECT_EQ(z(), ":212102-1.50000-2.5000000FF\r\n");
}

TEST_F(Readings, AreSwapped)
{
    test.talk(":21770101FF");
    EXPECT_EQ(xy(), ":212101+30.2500+12.500000FF\r\n");
}

TEST_F(Readings, FollowADownloadedCalibration)
{
    for (const std::string code : {"6111", "6311", "780111", "781111"}) {
        std::string download = ":21" + code;
        for (int i = 0; i < 11; ++i)
            download += recordField(5.0 * i) + recordField(10.0 * i);
        download += "FF";
        ASSERT_EQ(download.size(), code.size() == 4 ? 185U : 187U);
        EXPECT_EQ(test.talk(download), download + "\r\n");
    }
    EXPECT_EQ(xy(), ":212101+25.0000+60.500000FF\r\n");
    EXPECT_EQ(z(), ":212102+3.00000+5.0000000FF\r\n");
}

TEST_F(Readings, MayHave27Characters)
{
    test.bus.find(33)->readingLength = 27;
    EXPECT_EQ(xy(), ":212101+12.5000+30.2500FF\r\n");
    EXPECT_EQ(xy().size(), 27U);
}

TEST_F(Readings, OfTypeDHaveNoY)
{
    test.bus.find(100)->pinned[0] = 4;
    EXPECT_EQ(test.talk(":642101FF"), ":642101+4.00000+0.0000000FF\r\n");
}

TEST(Records, HaveFieldsByType)
{
    TestBus test;
    const auto two = test.talk(":05240199FF");
    ASSERT_EQ(two.size(), 41U);
    EXPECT_EQ(two.substr(0, 21), ":05240199240517090000");
    EXPECT_TRUE(signedNumber(two.substr(21, 8)) && signedNumber(two.substr(29, 8)));
    EXPECT_EQ(two.substr(37), "FF\r\n");
    const auto four = test.talk(":21240199FF");
    ASSERT_EQ(four.size(), 57U);
    EXPECT_TRUE(signedNumber(four.substr(37, 8)) && signedNumber(four.substr(45, 8)));
}

TEST(Calibration, OfADirectionThatIsNotThereIsNotAnswered)
{
    TestBus test;
    std::string points;
    for (int i = 0; i < 22; ++i)
        points += "+000.000";
    EXPECT_EQ(test.talk(":05780111" + points + "FF"), "");
    EXPECT_EQ(test.talk(":646311" + points + "FF"), "");
    EXPECT_EQ(test.talk(":646111" + points + "FF").size(), 187U);
}

} // namespace
} // namespace quorvelsim
