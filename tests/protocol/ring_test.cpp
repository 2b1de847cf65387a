#include "protocol/ring.h"

#include "protocol/record.h"

#include <gtest/gtest.h>

#include <set>

namespace quorvel::protocol {

namespace {

TEST(Ring, Frames)
{
    EXPECT_EQ(pointersQuery("01").frame, ":0122FF\r\n");
    EXPECT_EQ(recordFetch("01", 7, kTwoDirections).frame, ":01240007FF\r\n");
    EXPECT_EQ(recordFetch("F9", 9999, kTwoDirections).frame, ":F9249999FF\r\n");
    EXPECT_EQ(recordsDelete("01").frame, ":0125FF\r\n");
}

TEST(Ring, EqualPointersAreAnEmptyRing)
{
    EXPECT_TRUE(readPointers(":0122100000050005FF\r\n").isEmpty());
    EXPECT_FALSE(readPointers(":0122100000000001FF\r\n").isEmpty());
}

TEST(Ring, FiveRecordsInARow)
{
    const auto span = spanOf(readPointers(":0122100000100015FF\r\n"));
    EXPECT_EQ(span.count(), 5);
    EXPECT_EQ(span.indexOf(span.first), 10);
    EXPECT_EQ(span.indexOf(span.end - 1), 14);
}

TEST(Ring, OneRecordAtTheBeginning)
{
    const auto span = spanOf(readPointers(":0122100000000001FF\r\n"));
    EXPECT_EQ(span.count(), 1);
    EXPECT_EQ(span.indexOf(span.first), 0);
}

TEST(Ring, WrappedRingIsFetchedWhole)
{
    const auto span = spanOf(readPointers(":0122100009980002FF\r\n"));
    EXPECT_EQ(span.first, 998);
    EXPECT_EQ(span.end, 1998);
    EXPECT_EQ(span.count(), 1000);
    EXPECT_EQ(span.indexOf(998), 998);
    EXPECT_EQ(span.indexOf(999), 999);
    EXPECT_EQ(span.indexOf(1000), 0);
    EXPECT_EQ(span.indexOf(1001), 1);
    EXPECT_EQ(span.indexOf(1997), 997);
    std::set<int> indices;
    for (int count = span.first; count < span.end; ++count) {
        indices.insert(span.indexOf(count));
    }
    EXPECT_EQ(indices.size(), 1000U);
}

TEST(Ring, PointersThatLeadNowhereAreRefusedInWords)
{
    EXPECT_EQ(
        whyNotFetchable({0, 5, 7}),
        "The readout reports a ring without slots (capacity 0, first 5, next 7), so nothing can be fetched "
        "and no file was made. Try again; if it stays so, check the readout.");
    EXPECT_NE(whyNotFetchable({-100, 5, 7}).find("without slots"), std::string::npos);
    EXPECT_NE(whyNotFetchable({1000, -1, 7}).find("a negative position"), std::string::npos);
    EXPECT_NE(whyNotFetchable({1000, 5, -7}).find("a negative position"), std::string::npos);
}

TEST(Ring, EndUpTo32767IsFetched)
{
    EXPECT_EQ(whyNotFetchable({32000, 767, 0}), "");
    EXPECT_EQ(spanOf({32000, 767, 0}).end, 32767);
    EXPECT_NE(whyNotFetchable({32000, 768, 0}).find("records beyond number 32767"), std::string::npos);
}

struct PointersReply {
    const char* name;
    std::string reply;
    RingPointers pointers;
    bool plain;
};

class PointersReplies : public ::testing::TestWithParam<PointersReply> {};

TEST_P(PointersReplies, AreReadByPosition)
{
    const auto pointers = readPointers(GetParam().reply);
    EXPECT_EQ(pointers.capacity, GetParam().pointers.capacity);
    EXPECT_EQ(pointers.first, GetParam().pointers.first);
    EXPECT_EQ(pointers.next, GetParam().pointers.next);
    EXPECT_EQ(isPlainPointersReply(GetParam().reply), GetParam().plain);
}

INSTANTIATE_TEST_SUITE_P(
    Ring, PointersReplies,
    ::testing::Values(
        PointersReply{"Whole", ":0122100009980002FF\r\n", {1000, 998, 2}, true},
        PointersReply{"Nothing", "", {0, 0, 0}, false},
        PointersReply{"OneCharacterShort", ":0122100009980002FF\r", {1000, 998, 2}, false},
        PointersReply{"CutInNext", ":0122100009980", {1000, 998, 0}, false},
        PointersReply{"OneCharacterLong", ":0122100009980002FF\r\n0", {1000, 998, 2}, false},
        PointersReply{"TwoReplies", ":0122100009980002FF\r\n:0122100009980002FF\r\n", {1000, 998, 2}, false},
        PointersReply{"Noise", "\xFF\x80~~~~~~~~~~~~~~~~~~~", {0, 0, 0}, false},
        PointersReply{"NoiseBefore", "~~~:0122100009980002F", {1221, 0, 9980}, false},
        PointersReply{"Huge", ":01221E99-1E91E-9FF\r\n", {32767, -32768, 0}, false},
        PointersReply{"Letters", ":0122XXXX00030007FF\r\n", {0, 3, 7}, false}),
    [](const auto& tested) { return tested.param.name; });

} // namespace

} // namespace quorvel::protocol
