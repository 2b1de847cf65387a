#include "link/transaction.h"

#include "support/scripted_readout.h"

#include <gmock/gmock.h>

#include <stdexcept>

namespace quorvel::link {
namespace {

using ::testing::ElementsAre;
using Until = ReplyRule::Until;

constexpr double kFrame = 0.03 + 17 * 0.005; // s, for a frame of 17 characters
constexpr double kTolerance = 0.01;          // s

const Transaction kSet{
    .frame = ":0171+1.50000FF\r\n", .kind = Kind::Set, .reply = {.count = 17}, .echoLength = 13};

TEST(Transaction, EchoIsComparedUpToItsLength)
{
    EXPECT_TRUE(confirms(kSet, ":0171+1.50000FF\r\n"));
    EXPECT_TRUE(confirms(kSet, ":0171+1.50000~~~~"));
    EXPECT_FALSE(confirms(kSet, ":0171+1.50001FF\r\n"));
    EXPECT_FALSE(confirms(kSet, ":0271+1.50000FF\r\n"));
}

TEST(Transaction, ShortOrEmptyReplyIsNotAnEcho)
{
    EXPECT_FALSE(confirms(kSet, ":0171+1.5000"));
    EXPECT_FALSE(confirms(kSet, ""));
}

TEST(Transaction, WithoutEchoLengthAnyReplyConfirms)
{
    const Transaction any{.frame = ":0125FF\r\n", .reply = {.count = 9}};
    EXPECT_TRUE(confirms(any, "~~~~~~~~~"));
    EXPECT_TRUE(confirms(any, ""));
}

TEST(Transaction, AnswerBeginsWithAddressAndCommandAndEndsWithTheLineEnd)
{
    EXPECT_TRUE(answers(kSet, ":0171+1.50001FF\r\n")) << "another value is an answer as well";
    for (const auto* other : {":0271+1.50000FF\r\n", ":0172+1.50000FF\r\n", "\r\n:0171+1.50000FF",
                              "~:0171+1.50000FF\r", ":0171+1.50000FF\r~", ":01", ""}) {
        EXPECT_FALSE(answers(kSet, other)) << other;
    }
}

TEST(Transaction, AHeadOfThreeLooksAtTheAddressOnly)
{
    auto query = kSet;
    query.head = 3;
    EXPECT_TRUE(answers(query, ":0199+1.50001FF\r\n"));
    EXPECT_FALSE(answers(query, ":0271+1.50001FF\r\n"));
}

TEST(Transaction, AFrameForEveryReadoutIsAnsweredByAnyAddress)
{
    auto broadcast = kSet;
    broadcast.frame = ":FF71+1.50000FF\r\n";
    EXPECT_TRUE(answers(broadcast, ":0571+1.50000FF\r\n"));
    EXPECT_FALSE(answers(broadcast, ":0572+1.50000FF\r\n"));
    EXPECT_FALSE(answers(broadcast, ":"));
}

TEST(Transaction, BlanksAroundAReplyCountUnlessTheyAreIgnored)
{
    Transaction blanks{.frame = ":017501FF\r\n", .reply = {.count = 11}, .echoLength = 7};
    EXPECT_FALSE(confirms(blanks, "  :017501FF"));
    blanks.ignoresBlanks = true;
    EXPECT_TRUE(confirms(blanks, "  :017501FF"));
    EXPECT_TRUE(confirms(blanks, ":017501    "));
    EXPECT_FALSE(confirms(blanks, "           "));
}

/// Notes what it is told.
struct Notes final : ExchangeObserver {
    void sending(const Exchange& exchange) override
    {
        told.push_back("sending " + std::to_string(exchange.number) + " " +
                       exchange.transaction.frame.substr(0, 5));
        onSending();
    }
    void ended(const Exchange& exchange) override
    {
        told.push_back("ended " + std::to_string(exchange.number));
        last = exchange;
    }

    std::vector<std::string> told;
    Exchange last;
    std::function<void()> onSending = [] {};
};

class TransactionByHand : public ::testing::Test {
protected:
    TransactionByHand() { module1.addObserver(notes); }
    ~TransactionByHand() override { module1.removeObserver(notes); }

    std::string answer;
    test::ScriptedReadout readout{[this](const std::string&) { return answer; }};
    Module1& module1 = readout.module1;
    test::HandClock& clock = readout.clock;
    Notes notes;
};

TEST_F(TransactionByHand, ByCountTakesExactlyTheReply)
{
    answer = ":0171+1.50000FF\r\nmore";
    const auto exchange = module1.transact(kSet);
    EXPECT_TRUE(exchange.complete());
    EXPECT_EQ(exchange.reply, ":0171+1.50000FF\r\n");
    EXPECT_EQ(module1.ReplyText(), exchange.reply);
    EXPECT_EQ(readout.port.InBufferCount(), 4);
    EXPECT_TRUE(isConfirmed(exchange));
    EXPECT_TRUE(exchange.frameWentOut());
}

TEST_F(TransactionByHand, DrainsWhenAskedToAndKeepsWhatItThrewAway)
{
    readout.device->receive("old");
    answer = ":0171+1.50000FF\r\n";
    EXPECT_EQ(module1.transact(kSet).discarded, "old");
    readout.device->receive("old");
    auto keeping = kSet;
    keeping.drains = false;
    const auto exchange = module1.transact(keeping);
    EXPECT_EQ(exchange.reply, "old:0171+1.50000F");
    EXPECT_EQ(exchange.discarded, "");
}

TEST_F(TransactionByHand, SilenceAndAShortReplyAreToldApart)
{
    EXPECT_EQ(module1.transact(kSet).outcome, Outcome::Silent);
    answer = ":0171";
    const auto exchange = module1.transact(kSet);
    EXPECT_EQ(exchange.outcome, Outcome::Short);
    EXPECT_EQ(exchange.reply, ":0171");
    EXPECT_FALSE(isConfirmed(exchange));
}

TEST_F(TransactionByHand, UpToALineFeed)
{
    auto line = kSet;
    line.reply = {.until = Until::LineFeed};
    answer = ":0171\nmore";
    EXPECT_EQ(module1.transact(line).reply, ":0171\n");
    answer = ":0171";
    EXPECT_EQ(module1.transact(line).outcome, Outcome::Short);
}

TEST_F(TransactionByHand, ByCountOrTimeTakesTheWholeBuffer)
{
    auto whole = kSet;
    whole.reply = {.until = Until::CountOrTime, .count = 5, .seconds = 1.5F};
    answer = ":0171+1.5";
    EXPECT_EQ(module1.transact(whole).reply, ":0171+1.5");
    EXPECT_NEAR(clock.passed(), kFrame, kTolerance);
    answer = ":017";
    const auto exchange = module1.transact(whole);
    EXPECT_EQ(exchange.outcome, Outcome::Short);
    EXPECT_EQ(exchange.reply, ":017");
    EXPECT_NEAR(clock.passed(), 2 * kFrame + 1.5, kTolerance);
}

TEST_F(TransactionByHand, ByTimeWaitsItsWholeTime)
{
    auto fixed = kSet;
    fixed.reply = {.until = Until::Time, .count = 11, .seconds = 0.25F};
    answer = ":05020CFF\r\n";
    EXPECT_TRUE(module1.transact(fixed).complete());
    EXPECT_NEAR(clock.passed(), kFrame + 0.25, kTolerance);
}

TEST_F(TransactionByHand, ObserversAreToldWhenTheFrameIsSentAndWhenItHasEnded)
{
    notes.onSending = [this] { EXPECT_TRUE(readout.frames.empty()) << "told too late"; };
    module1.transact(kSet);
    EXPECT_THAT(notes.told, ElementsAre("sending 1 :0171", "ended 1"));
    notes.onSending = [] {};
    module1.transact(kSet);
    EXPECT_THAT(notes.told, ElementsAre("sending 1 :0171", "ended 1", "sending 2 :0171", "ended 2"));
    EXPECT_EQ(notes.last.outcome, Outcome::Silent);
}

TEST_F(TransactionByHand, OneThatIsBrokenOffByAnExceptionIsOver)
{
    notes.onSending = [] { throw std::runtime_error("no room"); };
    EXPECT_THROW(module1.transact(kSet), std::runtime_error);
    readout.device->receive("late");
    notes.onSending = [] {};
    answer = ":0171+1.50000FF\r\n";
    EXPECT_EQ(module1.transact(kSet).discarded, "late");
}

TEST_F(TransactionByHand, AnObserverThatWasRemovedIsToldNothing)
{
    module1.removeObserver(notes);
    module1.transact(kSet);
    EXPECT_TRUE(notes.told.empty());
    module1.addObserver(notes);
}

TEST_F(TransactionByHand, TimesOfTheFirstAndLastCharacterAreKept)
{
    clock.plan(kFrame + 0.1, [this] { readout.device->receive(":0171+1.50000FF"); });
    clock.plan(kFrame + 0.3, [this] { readout.device->receive("\r\n"); });
    const auto exchange = module1.transact(kSet);
    EXPECT_EQ(exchange.begun, clock.startNow);
    EXPECT_NEAR(exchange.firstOut.value_or(-1), 0.03, kTolerance);
    EXPECT_NEAR(exchange.lastOut.value_or(-1), kFrame - 0.005, kTolerance);
    EXPECT_NEAR(exchange.firstIn.value_or(-1), kFrame + 0.1, kTolerance);
    EXPECT_NEAR(exchange.lastIn.value_or(-1), kFrame + 0.3, kTolerance);
}

TEST_F(TransactionByHand, WithoutACharacterThereIsNoTime)
{
    EXPECT_FALSE(module1.transact(kSet).firstIn);
    readout.port.setPortOpen(false);
    const auto exchange = module1.transact(kSet);
    EXPECT_FALSE(exchange.firstOut);
    EXPECT_EQ(exchange.outcome, Outcome::PortLost);
    EXPECT_EQ(exchange.sent, 0U);
    EXPECT_FALSE(exchange.frameWentOut());
}

TEST_F(TransactionByHand, APortThatVanishesGivesItsReason)
{
    clock.plan(kFrame + 0.1, [this] { readout.device->vanish(); });
    const auto exchange = module1.transact(kSet);
    EXPECT_EQ(exchange.outcome, Outcome::PortLost);
    EXPECT_EQ(exchange.lostReason, readout.port.lostReason());
    EXPECT_FALSE(exchange.lostReason.isEmpty());
    EXPECT_TRUE(exchange.frameWentOut());
}

TEST_F(TransactionByHand, AReplyThatCameTogetherWithTheLossIsKept)
{
    clock.plan(kFrame + 0.1, [this] {
        readout.device->receive(":0171+1.50000FF\r\n");
        readout.device->vanish();
    });
    const auto exchange = module1.transact(kSet);
    EXPECT_TRUE(exchange.complete());
    EXPECT_EQ(exchange.reply, ":0171+1.50000FF\r\n");
}

TEST_F(TransactionByHand, TheEndOfTheProgramEndsIt)
{
    clock.plan(kFrame + 0.1, [this] { module1.abandon(); });
    EXPECT_EQ(module1.transact(kSet).outcome, Outcome::Abandoned);
    EXPECT_LT(clock.passed(), 1);
    EXPECT_FALSE(module1.transact(kSet).frameWentOut());
}

TEST_F(TransactionByHand, TheRestOfAReplyThatIsNotTheAnswerIsThrownAwayBeforeTheNextFrame)
{
    auto keeping = kSet;
    keeping.drains = false;
    answer = "~:0171+1.50000FF\r\n";
    module1.transact(keeping);
    EXPECT_EQ(readout.port.InBufferCount(), 1);
    answer = ":0171+1.50000FF\r\n";
    EXPECT_EQ(module1.transact(keeping).reply, ":0171+1.50000FF\r\n");
}

TEST_F(TransactionByHand, TheRestIsThrownAwayWhenAHandlerEnds)
{
    answer = "~:0171+1.50000FF\r\n";
    module1.transact(kSet);
    const double before = clock.passed();
    clock.plan(0.02, [this] { readout.device->receive("late"); });
    module1.dropRest();
    EXPECT_EQ(readout.port.InBufferCount(), 0);
    EXPECT_NEAR(clock.passed() - before, 0.05, kTolerance);
    module1.dropRest();
    EXPECT_NEAR(clock.passed() - before, 0.05, kTolerance) << "once";
}

TEST_F(TransactionByHand, WhatFollowsAnAnswerStays)
{
    answer = ":0171+1.50000FF\r\nlate";
    module1.transact(kSet);
    module1.dropRest();
    EXPECT_EQ(readout.port.InBufferCount(), 4);
}

TEST_F(TransactionByHand, WhatTheInputBufferCannotHoldIsCounted)
{
    answer = ":0171+1.50000FF\r\n";
    EXPECT_EQ(module1.transact(kSet).lost, 0U);
    readout.device->receive(std::string(MSComm::kInputBuffer + 7, 'x'));
    const auto flooded = module1.transact(kSet);
    EXPECT_EQ(flooded.lost, 7U);
    EXPECT_EQ(flooded.discarded.size(), MSComm::kInputBuffer);
    EXPECT_TRUE(isConfirmed(flooded)) << "thrown away, the flood does no harm";
    EXPECT_EQ(module1.transact(kSet).lost, 0U);
}

} // namespace
} // namespace quorvel::link
