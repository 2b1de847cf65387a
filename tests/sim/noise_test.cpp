#include "sim/noise.h"

#include "tests/sim/test_bus.h"

#include <bit>
#include <gtest/gtest.h>

namespace quorvelsim {
namespace {

/// `count` characters as they come out of a cable that was set up like this.
std::string passed(std::string_view setting, std::size_t count, Direction direction = Direction::FromReadouts)
{
    BitErrors errors;
    EXPECT_EQ(errors.set(setting), "");
    std::string out;
    for (std::size_t i = 0; i < count; ++i)
        out += errors.pass('0', direction);
    return out;
}

TEST(BitErrors, AGoodCableChangesNothing)
{
    EXPECT_EQ(passed("0", 1000), std::string(1000, '0'));
    BitErrors errors;
    EXPECT_EQ(errors.pass('x', Direction::ToReadouts), 'x');
}

TEST(BitErrors, TurnOneBitOfACharacterAtTheRate)
{
    std::size_t hit = 0;
    std::array<int, 8> bits{};
    for (const char character : passed("0.1,7", 100000)) {
        const auto wrong = static_cast<unsigned>(static_cast<unsigned char>(character) ^ unsigned{'0'});
        if (wrong == 0) continue;
        ++hit;
        ASSERT_EQ(std::popcount(wrong), 1);
        ++bits[static_cast<std::size_t>(std::countr_zero(wrong))];
    }
    EXPECT_NEAR(static_cast<double>(hit), 10000, 500);
    for (const int count : bits)
        EXPECT_NEAR(count, 1250, 200);
}

TEST(BitErrors, FollowFromTheSeed)
{
    EXPECT_EQ(passed("0.1,7", 1000), passed("0.1,7", 1000));
    EXPECT_NE(passed("0.1,7", 1000), passed("0.1,8", 1000));
    EXPECT_NE(passed("0.1,7", 1000), passed("0.1,7", 1000, Direction::ToReadouts));
}

TEST(BitErrors, WithoutASeedKeepTheLastOneAndBeginAnew)
{
    BitErrors errors(7);
    ASSERT_EQ(errors.set("1e-1"), "");
    EXPECT_EQ(errors.seed(), 7U);
    std::string out;
    for (int i = 0; i < 100; ++i)
        out += errors.pass('0', Direction::FromReadouts);
    EXPECT_EQ(out, passed("0.1,7", 100));
    EXPECT_EQ(errors.count(Direction::FromReadouts).passed, 100U);
    ASSERT_EQ(errors.set("1"), "");
    EXPECT_EQ(errors.count(Direction::FromReadouts).passed, 0U);
    errors.pass('0', Direction::ToReadouts);
    EXPECT_EQ(errors.count(Direction::ToReadouts).hit, 1U);
}

TEST(BitErrors, RefuseWhatIsNoRateOrSeed)
{
    BitErrors errors(7);
    ASSERT_EQ(errors.set("0.25"), "");
    for (const char* bad : {"", "x", "-0.1", "1.1", "nan", "inf", "0.1,", "0.1,x", "0.1,-1", "0.1 7", ",7"})
        EXPECT_NE(errors.set(bad), "") << bad;
    EXPECT_EQ(errors.rate(), 0.25);
    EXPECT_EQ(errors.seed(), 7U);
}

TEST(BitErrors, SpoilQuestionsAndAnswers)
{
    TestBus test;
    ASSERT_EQ(test.bus.bitErrors().set("0.02,3"), "");
    int good = 0;
    int wrong = 0;
    int unanswered = 0;
    for (int i = 0; i < 400; ++i) {
        const auto answer = test.talk(":05240003FF");
        ++(answer.empty()                                              ? unanswered
           : answer.substr(0, 9) == ":05240003" && answer.size() == 41 ? good
                                                                       : wrong);
    }
    EXPECT_GT(good, 100);
    EXPECT_GT(wrong, 10);
    EXPECT_GT(unanswered, 10);
    ASSERT_EQ(test.bus.bitErrors().set("0"), "");
    test.talk("");
    EXPECT_EQ(test.talk(":0572FF"), ":0572+0.00000FF\r\n");
}

} // namespace
} // namespace quorvelsim
