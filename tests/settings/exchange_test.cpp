#include "settings/exchange.h"

#include "support/bench_by_hand.h"

#include <gtest/gtest.h>

namespace quorvel::settings {
namespace {

const Exchange kExchange{.frame = ":0171+1.50000FF\r\n", .replyLength = 17, .echoLength = 13};

TEST(Exchange, FrameIsAddressCommandAndLineEnd) { EXPECT_EQ(frameOf("F9", "72FF"), ":F972FF\r\n"); }

TEST(Exchange, EchoIsComparedUpToItsLength)
{
    EXPECT_TRUE(confirms(kExchange, ":0171+1.50000FF\r\n"));
    EXPECT_TRUE(confirms(kExchange, ":0171+1.50000~~~~"));
    EXPECT_FALSE(confirms(kExchange, ":0171+1.50001FF\r\n"));
    EXPECT_FALSE(confirms(kExchange, ":0271+1.50000FF\r\n"));
}

TEST(Exchange, ShortOrEmptyReplyIsNoEcho)
{
    EXPECT_FALSE(confirms(kExchange, ":0171+1.5000"));
    EXPECT_FALSE(confirms(kExchange, ""));
}

TEST(Exchange, WithoutEchoLengthAnyReplyConfirms)
{
    const Exchange any{.frame = ":0125FF\r\n", .replyLength = 9};
    EXPECT_TRUE(confirms(any, "~~~~~~~~~"));
    EXPECT_TRUE(confirms(any, ""));
}

TEST(Exchange, AnswerBeginsWithAddressAndCommandAndEndsWithTheLineEnd)
{
    EXPECT_TRUE(answers(kExchange, ":0171+1.50001FF\r\n")) << "another value is an answer as well";
    for (const auto* other : {":0271+1.50000FF\r\n", ":0172+1.50000FF\r\n", "\r\n:0171+1.50000FF",
                              "~:0171+1.50000FF\r", ":0171+1.50000FF\r~", ":01", ""}) {
        EXPECT_FALSE(answers(kExchange, other)) << other;
    }
}

TEST(Exchange, BlanksAroundAReplyCountUnlessTheyAreIgnored)
{
    Exchange blanks{.frame = ":017501FF\r\n", .replyLength = 11, .echoLength = 7};
    EXPECT_FALSE(confirms(blanks, "  :017501FF"));
    blanks.ignoresBlanks = true;
    EXPECT_TRUE(confirms(blanks, "  :017501FF"));
    EXPECT_TRUE(confirms(blanks, ":017501    "));
    EXPECT_FALSE(confirms(blanks, "           "));
}

TEST(Exchange, ReasonNamesSilenceLossAndDifference)
{
    EXPECT_EQ(whyFailed(kExchange, ""), "The readout did not answer.");
    EXPECT_EQ(whyFailed(kExchange, ":0171"), "Only 5 of 17 characters of the answer arrived.");
    EXPECT_EQ(whyFailed(kExchange, ":0171+2.50000FF\r\n"),
              "The readout answered \":0171+2.50000FF\" to \":0171+1.50000FF\".");
}

TEST(Exchange, FlagIsZeroOneOrNothing)
{
    EXPECT_EQ(flagAt(":017600FF\r\n", 6), false);
    EXPECT_EQ(flagAt(":017601FF\r\n", 6), true);
    EXPECT_EQ(flagAt(":017602FF\r\n", 6), std::nullopt);
    EXPECT_EQ(flagAt(":01760", 6), std::nullopt);
    EXPECT_EQ(flagAt("", 6), std::nullopt);
}

class ExchangeByHand : public test::BenchByHand {};

TEST_F(ExchangeByHand, ClosedPortIsTheReasonWhateverArrived)
{
    EXPECT_EQ(whyFailed(kExchange, "", mscomm1), "The readout did not answer.");
    device->vanish();
    for (const auto* reply : {"", ":0171", ":0171+2.50000FF\r\n"})
        EXPECT_EQ(whyFailed(kExchange, reply, mscomm1), mscomm1.lostReason());
    mscomm1.setPortOpen(false);
    EXPECT_EQ(whyFailed(kExchange, "", mscomm1), "The port is closed.");
}

TEST(Exchange, ControlCharactersDoNotReachASentence)
{
    EXPECT_EQ(inOneLine(std::string("a\0b\tc\x7f\x9f\xe4", 8) + "\r\n"), "a?b?c??\xe4");
    EXPECT_EQ(inOneLine("\r\n"), "");
    EXPECT_EQ(inOneLine(""), "");
}

} // namespace
} // namespace quorvel::settings
