#include "protocol/shape.h"

#include <gtest/gtest.h>

namespace quorvel::protocol {
namespace {

using Id = CommandId;

struct ShapeRow {
    const char* name;
    Id id;
    std::string reply;
    Shape shape;
};

const std::string kReading = ":052101+1.50000-2.2500000FF\r\n";
const std::string kState = ":057601FF\r\n";

const ShapeRow kShapes[] = {
    {"Reading", Id::ReadXY, kReading, Shape::Good},
    {"State", Id::QueryFeature, kState, Shape::Good},
    {"Clock", Id::QueryClock, ":0504240517090530FF\r\n", Shape::Good},
    {"Nothing", Id::ReadXY, "", Shape::Silent},
    {"OneShort", Id::ReadXY, kReading.substr(0, 28), Shape::Short},
    {"HeadOnly", Id::ReadXY, ":052101", Shape::Short},
    {"PartOfTheHead", Id::ReadXY, ":0521", Shape::Short},
    {"OneLong", Id::ReadXY, kReading + "0", Shape::Long},
    {"TwoReplies", Id::ReadXY, kReading + kReading, Shape::Twice},
    {"OneAndAHalf", Id::ReadXY, kReading + kReading.substr(0, 9), Shape::Twice},
    {"NoiseFirst", Id::ReadXY, "~~~" + kReading, Shape::NoiseBefore},
    {"NoiseAround", Id::ReadXY, "~~~" + kReading + "~", Shape::Garbled},
    {"NoiseOnly", Id::ReadXY, "~~~", Shape::Garbled},
    {"Readout6", Id::QueryFeature, ":067601FF\r\n", Shape::OtherReadout},
    {"Command77", Id::QueryFeature, ":057701FF\r\n", Shape::OtherCommand},
    {"Command2102", Id::ReadXY, ":052102+1.50000-2.2500000FF\r\n", Shape::OtherCommand},
    {"TwoCharactersLess", Id::ReadXY, ":052101+1.50000-2.25000FF\r\n", Shape::Brief},
    {"Letters", Id::ReadXY, ":052101XYZABCDE-2.2500000FF\r\n", Shape::BadValue},
    {"Month13", Id::QueryClock, ":0504241332090530FF\r\n", Shape::BadValue},
    {"NoState", Id::QueryFeature, ":057602FF\r\n", Shape::BadValue},
    {"HighBits", Id::ReadXY, ":05\x92\x81\xF0\x01+1.50000-2.250000\xC6\x46\r\n", Shape::Garbled},
    {"HighBitsBehindTheHead", Id::ReadXY,
     ":052101+1.5\xB0"
     "000-2.2500000FF\r\n",
     Shape::Garbled},
    {"TooManyBehindTheHead", Id::QueryFeature, ":0576010101010101", Shape::Garbled},
    {"AnotherEndMark", Id::ReadXY, ":052101+1.50000-2.2500000FG\r\n", Shape::Garbled},
    {"NoAddress", Id::QueryFeature, ":zz7601FF\r\n", Shape::Garbled},
};

class ShapeOf : public ::testing::TestWithParam<ShapeRow> {};

TEST_P(ShapeOf, IsTold) { EXPECT_EQ(shapeOf(GetParam().id, "05", GetParam().reply), GetParam().shape); }

INSTANTIATE_TEST_SUITE_P(All, ShapeOf, ::testing::ValuesIn(kShapes),
                         [](const auto& row) { return row.param.name; });

// Bytes from the line are anything: each prefix of a reply has a shape, and only the whole is good.
TEST(Shape, NoPartOfAReplyIsGood)
{
    for (std::size_t length = 0; length < kReading.size(); ++length) {
        const auto shape = shapeOf(Id::ReadXY, "05", kReading.substr(0, length));
        EXPECT_EQ(shape, length == 0 ? Shape::Silent : Shape::Short) << length;
    }
}

TEST(Shape, AnEchoIsTakenOffTheBeginningOnly)
{
    EXPECT_EQ(withoutEcho(":0576FF\r\n", ":0576FF\r\n" + kState), kState);
    EXPECT_EQ(withoutEcho(":0576FF\r\n", ":0576FF\r\n"), "");
    EXPECT_EQ(withoutEcho(":0576FF\r\n", kState), kState);
    EXPECT_EQ(withoutEcho("", kState), kState);
}

TEST(Shape, AProbeIsTheQueryAndTakesWhatFollowsItsReply)
{
    const auto query = probe(Id::ReadXY, "05", 1.5F);
    EXPECT_EQ(query.frame, ":052101FF\r\n");
    EXPECT_EQ(query.kind, link::Kind::Query);
    EXPECT_TRUE(query.drains);
    EXPECT_EQ(query.reply.count, 29);
    EXPECT_GE(query.reply.longest, 2 * 29);
}

} // namespace
} // namespace quorvel::protocol
