#include "site/track.h"

#include <gtest/gtest.h>

namespace quorvel::site {
namespace {

using protocol::Sensor;

Reading readingOf(int address, const char* x, const char* outcome = "complete")
{
    Reading reading;
    reading.address = address;
    if (x) reading.received[0] = x;
    reading.outcome = outcome;
    return reading;
}

TEST(Track, ChangesAreThoseSinceTheValueBefore)
{
    Track track;
    EXPECT_EQ(track.latest(5), nullptr);
    EXPECT_EQ(track.changeSinceBefore(5, Sensor::X), std::nullopt);
    track.take(readingOf(5, "+1.50000"));
    EXPECT_EQ(track.changeSinceBefore(5, Sensor::X), std::nullopt);
    track.take(readingOf(5, "+1.75000"));
    EXPECT_DOUBLE_EQ(track.changeSinceBefore(5, Sensor::X).value(), 0.25);
    EXPECT_EQ(track.changeSinceBefore(5, Sensor::Y), std::nullopt);
    EXPECT_EQ(track.changeSinceBefore(6, Sensor::X), std::nullopt);
}

TEST(Track, AFailureInBetweenHidesNoJump)
{
    Track track;
    track.take(readingOf(5, "+1.50000"));
    track.take(readingOf(5, nullptr, "silent"));
    EXPECT_EQ(track.changeSinceBefore(5, Sensor::X), std::nullopt);
    EXPECT_EQ(track.latest(5)->outcome, "silent");
    track.take(readingOf(5, "+4.50000"));
    EXPECT_DOUBLE_EQ(track.changeSinceBefore(5, Sensor::X).value(), 3);
    EXPECT_EQ(track.asked(5), 3);
    EXPECT_EQ(track.answered(5), 2);
}

TEST(Track, ZeroIsWhatWasMarked)
{
    Track track;
    track.markZero(5); // nothing was read yet
    EXPECT_FALSE(track.hasZero(5));
    track.take(readingOf(5, "+1.00000"));
    track.take(readingOf(6, "+2.00000"));
    track.markZero();
    track.take(readingOf(5, "+1.50000"));
    track.take(readingOf(6, nullptr, "silent"));
    EXPECT_DOUBLE_EQ(track.changeSinceZero(5, Sensor::X).value(), 0.5);
    EXPECT_EQ(track.changeSinceZero(6, Sensor::X), std::nullopt);
    track.markZero(5);
    EXPECT_DOUBLE_EQ(track.changeSinceZero(5, Sensor::X).value(), 0);
    track.markZero(6); // has no value now and keeps its zero
    track.take(readingOf(6, "+2.25000"));
    EXPECT_DOUBLE_EQ(track.changeSinceZero(6, Sensor::X).value(), 0.25);
    track.forgetZero();
    EXPECT_EQ(track.changeSinceZero(5, Sensor::X), std::nullopt);
}

} // namespace
} // namespace quorvel::site
