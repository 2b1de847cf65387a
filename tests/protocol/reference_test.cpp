#include "protocol/reference.h"

#include "support/bench_by_hand.h"

namespace quorvel::protocol {
namespace {

using Frames = std::vector<std::string>;

const ReferenceRow& kReferenceX = kReferences[0];
const ReferenceRow& kReferenceY = kReferences[1];
const ReferenceRow& kReferenceZ = kReferences[2];

/// What a readout at address 1 answers to a question for values.
std::string values(const std::string& first, const std::string& second, const std::string& code = "2101")
{
    return ":01" + code + first + second + "00FF\r\n";
}

class Reference : public test::BenchByHand {
protected:
    ReferenceRun set(const ReferenceRow& row, double reference)
    {
        return setReference(module1, bench, row, reference, [this] { settledFrom = clock.passed(); });
    }
    ReferenceRun query(const ReferenceRow& row)
    {
        return queryReference(module1, bench, row, [this](const std::string& offset) { received = offset; });
    }

    double settledFrom = -1;
    std::string received;
};

TEST_F(Reference, XWritesTheDifferenceToTheReading)
{
    answerWith({":0171+0.00000FF\r\n", values("+2.50000", "+1.00000"), ":0171+7.50000FF\r\n"});
    const auto run = set(kReferenceX, 10);
    EXPECT_TRUE(run.confirmed);
    EXPECT_EQ(frames, (Frames{":0171+0.00000FF", ":012101FF", ":0171+7.50000FF"}));
    EXPECT_EQ(referenceSetText(run),
              "Set OK!The current value is +2.50000, the Internal Offset Value is +7.50000.");
}

TEST_F(Reference, ZeroAtAReadingOfTwelveAndAHalfWritesItsNegative)
{
    answerWith({":0171+0.00000FF\r\n", values("+12.5000", "+1.00000"), ":0171-12.5000FF\r\n"});
    EXPECT_EQ(set(kReferenceX, 0).offset, "-12.5000");
}

TEST_F(Reference, YTakesTheSecondValue)
{
    answerWith({":0173+0.00000FF\r\n", values("+2.50000", "-1.00000"), ":0173+11.0000FF\r\n"});
    const auto run = set(kReferenceY, 10);
    EXPECT_TRUE(run.confirmed);
    EXPECT_EQ(run.reading, "-1.00000");
    EXPECT_EQ(frames.back(), ":0173+11.0000FF");
}

TEST_F(Reference, ReadoutSettlesForTwoSecondsBeforeItIsRead)
{
    double askedAt = 0;
    onFrame = [&] {
        if (frames.back() == ":012101FF") askedAt = clock.passed();
    };
    answerWith({":0171+0.00000FF\r\n", values("+2.50000", "+1.00000"), ":0171+7.50000FF\r\n"});
    set(kReferenceX, 10);
    EXPECT_NEAR(askedAt - settledFrom, 2 + 0.03 + 11 * 0.005, 0.02);
}

TEST_F(Reference, ZReadsItsOwnValueAndWaitsAnotherSecond)
{
    double readAt = 0;
    double writtenAt = 0;
    onFrame = [&] { (frames.back() == ":012102FF" ? readAt : writtenAt) = clock.passed(); };
    bench.instrumentType = link::TypeC;
    answerWith({":017805+0.00000FF\r\n", values("+3.00000", "+9.00000", "2102"), ":017805+1.00000FF\r\n"});
    const auto run = set(kReferenceZ, 4);
    EXPECT_TRUE(run.confirmed);
    EXPECT_EQ(frames, (Frames{":017805+0.00000FF", ":012102FF", ":017805+1.00000FF"}));
    EXPECT_NEAR(writtenAt - readAt, 1 + 0.03 + 19 * 0.005, 0.02);
}

TEST_F(Reference, ZEchoCountsUpToItsTenthCharacter)
{
    answerWith({":017805+0.00000FF\r\n", values("+3.00000", "+9.00000", "2102"), ":017805+1.~~~~~FF\r\n"});
    EXPECT_TRUE(set(kReferenceZ, 4).confirmed);
    answerWith({":017805+0.00000FF\r\n", values("+3.00000", "+9.00000", "2102"), ":017805+2.00000FF\r\n"});
    EXPECT_FALSE(set(kReferenceZ, 4).confirmed);
}

TEST_F(Reference, XEchoCountsUpToItsThirteenthCharacter)
{
    answerWith({":0171+0.00000FF\r\n", values("+2.50000", "+1.00000"), ":0171+7.50001FF\r\n"});
    const auto run = set(kReferenceX, 10);
    EXPECT_TRUE(run.complete);
    EXPECT_FALSE(run.confirmed);
}

TEST_F(Reference, ReplyToTheZeroingIsNotCompared)
{
    answerWith({"~~~~~~~~~~~~~~~~~", values("+2.50000", "+1.00000"), ":0171+7.50000FF\r\n"});
    EXPECT_TRUE(set(kReferenceX, 10).confirmed);
}

// The zero went out: a readout whose answer was lost may have taken it.
TEST_F(Reference, SilenceOrAShortReplyToTheZeroMayHaveLostTheOffset)
{
    for (const auto* reply : {"", ":0171+0.000"}) {
        frames.clear();
        answerWith({reply});
        const auto run = set(kReferenceX, 10);
        EXPECT_FALSE(run.complete);
        EXPECT_EQ(run.formerOffset, FormerOffset::MayBeLost);
        EXPECT_EQ(lossText(run),
                  "The former offset may have been overwritten with zero: the readout did not answer "
                  "completely. Query it.");
        EXPECT_EQ(frames.size(), 1U);
    }
}

TEST_F(Reference, AZeroThatNeverWentOutLosesNothing)
{
    mscomm1.setPortOpen(false);
    const auto run = set(kReferenceX, 10);
    EXPECT_EQ(run.formerOffset, FormerOffset::Untouched);
    EXPECT_EQ(lossText(run), "");
}

TEST_F(Reference, SilenceAfterTheZeroingLosesTheOffset)
{
    answerWith({":017805+0.00000FF\r\n", values("+3.00000", "+9.00000", "2102").substr(1)});
    const auto run = set(kReferenceZ, 4);
    EXPECT_FALSE(run.complete);
    EXPECT_EQ(run.formerOffset, FormerOffset::Lost);
    EXPECT_EQ(lossText(run), "The former offset was overwritten with zero and is lost.");
    EXPECT_EQ(frames.size(), 2U);
}

TEST_F(Reference, FailedReadingOfXCountsAsZero)
{
    answerWith({":0171+0.00000FF\r\n", "", ":0171+10.0000FF\r\n"});
    const auto run = set(kReferenceX, 10);
    EXPECT_TRUE(run.confirmed);
    EXPECT_EQ(run.reading, "Error");
    EXPECT_EQ(run.offset, "+10.0000");
}

TEST_F(Reference, QueryOfXGivesOffsetAndTheReadingWithoutIt)
{
    answerWith({":0172+2.50000FF\r\n", values("+12.5000", "+1.00000")});
    const auto run = query(kReferenceX);
    EXPECT_TRUE(run.complete);
    EXPECT_EQ(received, "+2.50000");
    EXPECT_EQ(realValueText(kReferenceX, run.realValue), "The current value without reference is 10!");
}

TEST_F(Reference, QueryOfYHasItsOwnWords)
{
    answerWith({":0174+0.10000FF\r\n", values("+12.5000", "+0.30000")});
    const auto run = query(kReferenceY);
    EXPECT_EQ(realValueText(kReferenceY, run.realValue), "The real value without corrention is 0.2!");
}

TEST_F(Reference, RealValueHasNoMoreDecimalsThanItsOperands)
{
    answerWith({":0172+12.0000FF\r\n", values("+12.3000", "+0.30000")});
    EXPECT_EQ(query(kReferenceX).realValue, 0.3);
    answerWith({":0172+0.00001FF\r\n", values("+0.00003", "+0.30000")});
    EXPECT_EQ(query(kReferenceX).realValue, 0.00002);
    answerWith({":0172+999.999FF\r\n", values("-999.999", "+0.30000")});
    EXPECT_EQ(query(kReferenceX).realValue, -1999.998);
}

TEST_F(Reference, QueryOfZReadsItsOwnReply)
{
    answerWith({":017806-0.50000FF\r\n", values("+3.00000", "+9.00000", "2102")});
    const auto run = query(kReferenceZ);
    EXPECT_TRUE(run.complete);
    EXPECT_EQ(frames, (Frames{":017806FF", ":012102FF"}));
    EXPECT_EQ(realValueText(kReferenceZ, run.realValue), "The real value without corrention is 3.5!");
}

TEST_F(Reference, QueryOfZWithoutReadingIsIncompleteButGivesTheOffset)
{
    answerWith({":017806-0.50000FF\r\n", ":012102"});
    EXPECT_FALSE(query(kReferenceZ).complete);
    EXPECT_EQ(received, "-0.50000");
}

TEST_F(Reference, QueriesOfXAndZDrainTheInputAndThatOfYDoesNot)
{
    device->receive("stale");
    answerWith({":0172+2.50000FF\r\n", values("+12.5000", "+1.00000")});
    EXPECT_EQ(query(kReferenceX).offset, "+2.50000");

    device->receive("stale");
    answerWith({":0174+2.50000FF\r\n", values("+12.5000", "+1.00000")});
    EXPECT_EQ(query(kReferenceY).offset, ":0174+2.");

    device->receive("stale");
    answerWith({":017806-0.50000FF\r\n", values("+3.00000", "+9.00000", "2102")});
    EXPECT_EQ(query(kReferenceZ).offset, "-0.50000");
}

TEST_F(Reference, PortThatVanishesEndsARunAtOnce)
{
    onFrame = [this] { device->vanish(); };
    const auto run = set(kReferenceX, 10);
    EXPECT_FALSE(run.complete);
    EXPECT_LT(clock.passed(), 0.5);
}

} // namespace
} // namespace quorvel::protocol
