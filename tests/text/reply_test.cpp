#include "text/reply.h"

#include <climits>
#include <string>

#include <gtest/gtest.h>

namespace quorvel::text {
namespace {

TEST(Mid, CountsPositionsFromOne)
{
    EXPECT_EQ(mid(":05X+1.25", 1, 1), ":");
    EXPECT_EQ(mid(":05X+1.25", 2, 2), "05");
    EXPECT_EQ(mid(":05X+1.25", 9, 1), "5");
}

TEST(Mid, GivesWhatThereIsOfAShortReply)
{
    EXPECT_EQ(mid(":05", 2, 8), "05");
    EXPECT_EQ(mid(":05", 3, INT_MAX), "5");
    EXPECT_EQ(mid(":05", 1, 3), ":05");
}

TEST(Mid, IsEmptyOutsideTheReply)
{
    EXPECT_EQ(mid(":05", 4, 1), "");
    EXPECT_EQ(mid(":05", INT_MAX, INT_MAX), "");
    EXPECT_EQ(mid(":05", 0, 2), "");
    EXPECT_EQ(mid(":05", -1, 2), "");
    EXPECT_EQ(mid(":05", INT_MIN, 2), "");
    EXPECT_EQ(mid("", 1, 1), "");
}

TEST(Mid, TakesNothingForNoneOrFewer)
{
    EXPECT_EQ(mid(":05", 1, 0), "");
    EXPECT_EQ(mid(":05", 1, -1), "");
    EXPECT_EQ(mid(":05", 1, INT_MIN), "");
}

TEST(Mid, KeepsBytesThatAreNoText)
{
    const std::string noise("\0\xFF:", 3);
    EXPECT_EQ(mid(noise, 1, 2), std::string("\0\xFF", 2));
}

TEST(Left, GivesTheFirstCharactersOrAll)
{
    EXPECT_EQ(left(":05X", 3), ":05");
    EXPECT_EQ(left(":05X", 4), ":05X");
    EXPECT_EQ(left(":05X", 5), ":05X");
    EXPECT_EQ(left(":05X", 0), "");
    EXPECT_EQ(left(":05X", -1), "");
    EXPECT_EQ(left("", 3), "");
}

TEST(TrimBlanks, TakesBlanksFromBothEndsOnly)
{
    EXPECT_EQ(trimBlanks("  1.25 mm  "), "1.25 mm");
    EXPECT_EQ(trimBlanks("1.25"), "1.25");
    EXPECT_EQ(trimBlanks(" x"), "x");
    EXPECT_EQ(trimBlanks("x "), "x");
    EXPECT_EQ(trimBlanks("   "), "");
    EXPECT_EQ(trimBlanks(""), "");
}

TEST(TrimBlanks, LeavesTabsAndLineEnds) { EXPECT_EQ(trimBlanks(" \t1\r\n "), "\t1\r\n"); }

TEST(Echoes, ComparesTheFirstCharacters)
{
    EXPECT_TRUE(echoes(":0171+1.50000FF\r\n", ":0171+1.50000AB\r\n", 13));
    EXPECT_FALSE(echoes(":0171+1.50000FF\r\n", ":0171+1.50000AB\r\n", 14));
    EXPECT_FALSE(echoes(":0171+1.50000FF\r\n", ":0171+1.50001FF\r\n", 13));
    EXPECT_FALSE(echoes(":0171", ":0271", 5));
    EXPECT_TRUE(echoes(":0171", ":0171", 5));
}

TEST(Echoes, IsFalseWhenEitherIsTooShort)
{
    EXPECT_FALSE(echoes(":0171", ":01", 5));
    EXPECT_FALSE(echoes(":01", ":0171", 5));
    EXPECT_FALSE(echoes(":01", ":01", 5));
    EXPECT_FALSE(echoes("", "", 1));
}

TEST(Echoes, IsTrueForNoCharacters)
{
    EXPECT_TRUE(echoes("a", "b", 0));
    EXPECT_TRUE(echoes("a", "b", -1));
    EXPECT_TRUE(echoes("", "", 0));
}

TEST(WithLineEnd, AddsCarriageReturnAndLineFeed)
{
    EXPECT_EQ(withLineEnd(":FF01FF"), ":FF01FF\r\n");
    EXPECT_EQ(withLineEnd(""), "\r\n");
}

} // namespace
} // namespace quorvel::text
