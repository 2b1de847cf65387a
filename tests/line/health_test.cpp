#include "line/health.h"

#include "support/bench_by_hand.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <random>

namespace quorvel::line {
namespace {

using protocol::Verdict;

TEST(Durations, OfNothingAreZero)
{
    const Durations none;
    EXPECT_EQ(none.count(), 0);
    EXPECT_EQ(none.mean(), 0);
    EXPECT_EQ(none.percentile(95), 0);
}

// Beside the exact answer of a sorted list, over five powers of ten.
TEST(Durations, PercentileIsRightWithinOnePercent)
{
    std::mt19937 random(4711);
    std::lognormal_distribution<double> spread(3, 2);
    std::vector<double> all;
    Durations durations;
    for (int i = 0; i < 100'000; ++i) {
        const double ms = std::clamp(spread(random), 0.2, 500'000.0);
        all.push_back(ms);
        durations.add(ms);
    }
    std::sort(all.begin(), all.end());
    for (const double percent : {1.0, 50.0, 95.0, 99.0, 100.0}) {
        const auto place = static_cast<std::size_t>(std::ceil(100'000 * percent / 100)) - 1;
        EXPECT_NEAR(durations.percentile(percent) / all[place], 1, 0.01) << percent;
    }
    EXPECT_EQ(durations.worst(), all.back());
}

TEST(Durations, TheHighestOfFewIsTheWorst)
{
    Durations durations;
    for (const double ms : {21.9, 20.1, 23.4}) {
        durations.add(ms);
        EXPECT_EQ(durations.percentile(95), durations.worst());
    }
}

TEST(Durations, TakesConstantMemory) { EXPECT_LT(sizeof(Durations), 8192U); }

TEST(Durations, OutOfRangeCountsAsTheEdge)
{
    Durations durations;
    durations.add(0);
    durations.add(1e9);
    EXPECT_EQ(durations.count(), 2);
    EXPECT_LE(durations.percentile(50), 0.11);
    EXPECT_EQ(durations.worst(), 1e9);
}

class HealthByHand : public test::BenchByHand {
protected:
    HealthByHand() { module1.addObserver(health); }
    ~HealthByHand() override { module1.removeObserver(health); }

    void ask(const std::string& answer, const char* address = "05")
    {
        answerWith({answer});
        module1.transact(protocol::transaction(protocol::CommandId::QueryOffsetX, address));
    }
    const ReadoutHealth& of(int address) const { return health.readouts().at(address); }

    Health health;
};

TEST_F(HealthByHand, CountsHowEachExchangeEnded)
{
    ask(":0572+1.50000FF\r\n");
    ask(":0572+1.50000FF\r\n");
    ask("");
    ask(":0572");
    ask(":0574+1.50000FF\r\n");
    EXPECT_EQ(of(5).exchanges(), 5);
    EXPECT_EQ(of(5).endedAs(Verdict::Complete), 2);
    EXPECT_EQ(of(5).endedAs(Verdict::Silent), 1);
    EXPECT_EQ(of(5).endedAs(Verdict::Short), 1);
    EXPECT_EQ(of(5).endedAs(Verdict::NotTheAnswer), 1);
}

TEST_F(HealthByHand, TimesAreThoseOfGoodAnswersOnly)
{
    onFrame = [this] { clock.plan(0.1, [this] { device->receive(":0572+1.50000FF\r\n"); }); };
    ask("");
    onFrame = nullptr;
    ask("");
    EXPECT_EQ(of(5).answerMs.count(), 1);
    EXPECT_NEAR(of(5).answerMs.mean(), 100, 1);
    EXPECT_EQ(of(5).lastGood, clock.startNow);
}

TEST_F(HealthByHand, ReadoutsAreKeptApartAndTheSearchIsNone)
{
    ask(":0572+1.50000FF\r\n");
    ask("", "0C");
    module1.transact(protocol::transaction(protocol::CommandId::Search, "FF"));
    EXPECT_EQ(health.readouts().size(), 2U);
    EXPECT_EQ(of(12).endedAs(Verdict::Silent), 1);
}

TEST_F(HealthByHand, WhatWasRefusedSaysNothingAboutTheLine)
{
    module1.setReadOnly(true);
    module1.transact(protocol::transaction(protocol::CommandId::DeleteRecords, "05"));
    EXPECT_TRUE(health.readouts().empty());
}

TEST_F(HealthByHand, CsvHasAHeaderAndARowForEachReadout)
{
    ask("");
    const auto rows = health.csv().split('\n');
    ASSERT_EQ(rows.size(), 3);
    EXPECT_EQ(rows[0], "address,exchanges,complete,silent,short,notTheAnswer,meanMs,p95Ms,worstMs,lastGood");
    EXPECT_EQ(rows[1], "5,1,0,1,0,0,,,,");
    health.reset();
    EXPECT_EQ(health.csv().count('\n'), 1);
}

} // namespace
} // namespace quorvel::line
