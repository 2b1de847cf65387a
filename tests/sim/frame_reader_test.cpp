#include "sim/frame_reader.h"

#include <gtest/gtest.h>
#include <string_view>
#include <vector>

namespace quorvelsim {
namespace {

/// Feeds one character a second; gives the texts of the frames.
std::vector<std::string> framesIn(FrameReader& reader, std::string_view characters)
{
    std::vector<std::string> texts;
    double seconds = 0;
    for (const char character : characters)
        if (auto frame = reader.push(character, seconds++)) texts.push_back(frame->text);
    return texts;
}

using Texts = std::vector<std::string>;

TEST(FrameReader, GivesAFrameWithItsTimes)
{
    FrameReader reader;
    double seconds = 10;
    for (const char character : std::string_view(":05\r"))
        EXPECT_FALSE(reader.push(character, seconds++));
    const auto frame = reader.push('\n', seconds);
    ASSERT_TRUE(frame);
    EXPECT_EQ(frame->text, ":05\r\n");
    EXPECT_EQ(frame->first, 10);
    EXPECT_EQ(frame->last, 14);
    EXPECT_EQ(reader.dropped(), 0U);
}

TEST(FrameReader, DropsNoiseBetweenFrames)
{
    FrameReader reader;
    EXPECT_EQ(framesIn(reader, "x\n\xFF:0501FF\r\nzz\r\n:0C01FF\r\n"), (Texts{":0501FF\r\n", ":0C01FF\r\n"}));
    EXPECT_EQ(reader.dropped(), 7U);
}

TEST(FrameReader, BeginsAnewAtEveryColon)
{
    FrameReader reader;
    EXPECT_EQ(framesIn(reader, ":0521:052101FF\r\n"), Texts{":052101FF\r\n"});
    EXPECT_EQ(reader.dropped(), 5U);
}

TEST(FrameReader, DropsAFrameWhoseLineEndIsBroken)
{
    FrameReader reader;
    EXPECT_EQ(framesIn(reader, ":0501FF\n:0501FF\rx\n:05\r\r\n"), Texts{});
    EXPECT_EQ(framesIn(reader, ":0501FF\r\n"), Texts{":0501FF\r\n"});
}

TEST(FrameReader, GivesUpAFrameWithoutEnd)
{
    FrameReader reader;
    const std::string endless = ":" + std::string(100000, '5') + "\r\n";
    EXPECT_EQ(framesIn(reader, endless), Texts{});
    EXPECT_EQ(reader.dropped(), endless.size());
    EXPECT_EQ(framesIn(reader, ":0501FF\r\n"), Texts{":0501FF\r\n"});
}

TEST(FrameReader, TakesTheLongestCommand)
{
    FrameReader reader;
    const std::string longest = ":21780111" + std::string(176, '0') + "FF\r\n";
    ASSERT_EQ(longest.size(), 189U);
    EXPECT_EQ(framesIn(reader, longest), Texts{longest});
}

} // namespace
} // namespace quorvelsim
