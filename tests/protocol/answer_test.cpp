#include "protocol/answer.h"

#include <gtest/gtest.h>

namespace quorvel::protocol {
namespace {

link::Exchange ended(link::Outcome outcome, const std::string& reply)
{
    link::Exchange exchange;
    exchange.transaction.frame = ":0171+1.50000FF\r\n";
    exchange.transaction.reply.count = 17;
    exchange.outcome = outcome;
    exchange.reply = reply;
    return exchange;
}

TEST(Answer, ReasonNamesSilenceLossAndDifference)
{
    using link::Outcome;
    EXPECT_EQ(whyFailed(ended(Outcome::Silent, "")), "The readout did not answer.");
    EXPECT_EQ(whyFailed(ended(Outcome::Short, ":0171")), "Only 5 of 17 characters of the answer arrived.");
    EXPECT_EQ(whyFailed(ended(Outcome::Complete, ":0171+2.50000FF\r\n")),
              "The readout answered \":0171+2.50000FF\" to \":0171+1.50000FF\".");
    EXPECT_EQ(whyFailed(ended(Outcome::Abandoned, "")), "The program was closed.");
}

TEST(Answer, LostPortIsTheReasonWhateverArrived)
{
    for (const auto* reply : {"", ":0171", ":0171+2.50000FF\r\n"}) {
        auto exchange = ended(link::Outcome::PortLost, reply);
        EXPECT_EQ(whyFailed(exchange), "The port is closed.");
        exchange.lostReason = "COM3 is gone.";
        EXPECT_EQ(whyFailed(exchange), "COM3 is gone.");
    }
}

TEST(Answer, FlagIsZeroOneOrNothing)
{
    EXPECT_EQ(flagIn("00"), false);
    EXPECT_EQ(flagIn("01"), true);
    for (const auto* other : {"02", "0", "", "1", "001"}) {
        EXPECT_EQ(flagIn(other), std::nullopt) << other;
    }
}

TEST(Answer, ControlCharactersDoNotReachASentence)
{
    EXPECT_EQ(inOneLine(std::string("a\0b\tc\x7f\x9f\xe4", 8) + "\r\n"), "a?b?c??\xe4");
    EXPECT_EQ(inOneLine("\r\n"), "");
    EXPECT_EQ(inOneLine(""), "");
}

TEST(Answer, WhatCannotBePrintedIsWrittenInHexadecimal)
{
    EXPECT_EQ(printable(std::string("a\0~\x7f\xff\r\n", 7)), "a\\x00~\\x7F\\xFF\\x0D\\x0A");
}

TEST(Answer, AFloodIsPartOfTheReason)
{
    auto exchange = ended(link::Outcome::Silent, "");
    exchange.lost = 12;
    EXPECT_EQ(whyFailed(exchange),
              "The readout did not answer. 12 characters came that nobody had asked for, and were "
              "lost. Look for what floods the line.");
}

} // namespace
} // namespace quorvel::protocol
