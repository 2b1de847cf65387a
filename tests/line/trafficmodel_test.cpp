#include "line/trafficfilter.h"

#include "support/bench_by_hand.h"

#include <gtest/gtest.h>

namespace quorvel::line {
namespace {

using protocol::CommandId;

class TrafficByHand : public test::BenchByHand {
protected:
    TrafficByHand()
    {
        filter.setSourceModel(&model);
        module1.addObserver(model);
    }
    ~TrafficByHand() override { module1.removeObserver(model); }

    void ask(CommandId id, const char* address, const std::string& answer = {}, const char* parameter = "")
    {
        answerWith({answer});
        module1.transact(protocol::transaction(id, address, parameter));
        model.flush();
    }
    QStringList row(const QAbstractItemModel& of, int number) const
    {
        QStringList cells;
        for (int column = 0; column < TrafficModel::kColumns; ++column) {
            cells << of.index(number, column).data().toString();
        }
        return cells;
    }

    TrafficModel model;
    TrafficFilter filter;
};

TEST_F(TrafficByHand, ALineSaysWhatWasSaidInWordsAndInCharacters)
{
    ask(CommandId::SetOffsetX, "05", ":0571+1.50000FF\r\n", "+1.50000");
    ASSERT_EQ(model.rowCount(), 1);
    const auto cells = row(model, 0);
    EXPECT_EQ(cells.mid(0, 6),
              QStringList({"09:05:30.000", "5", "Set the offset of X to +1.50000",
                           R"(:0571+1.50000FF\x0D\x0A)", R"(:0571+1.50000FF\x0D\x0A)", "complete"}));
    EXPECT_FALSE(cells[6].isEmpty());
}

TEST_F(TrafficByHand, TheLineAppearsWhenTheFrameIsSentAndIsCompletedLater)
{
    QStringList early;
    onFrame = [&] {
        model.flush();
        early = row(model, 0);
    };
    ask(CommandId::QueryOffsetX, "05");
    EXPECT_EQ(early[5], "waiting ...");
    EXPECT_EQ(row(model, 0)[5], "silent");
    EXPECT_EQ(model.rowCount(), 1);
}

TEST_F(TrafficByHand, ManyExchangesBetweenTwoTurnsKeepTheirOrder)
{
    for (int i = 0; i < 5; ++i) {
        module1.transact(protocol::transaction(CommandId::FetchRecord, "05", "000" + std::to_string(i)));
    }
    model.flush();
    ASSERT_EQ(model.rowCount(), 5);
    for (int i = 0; i < 5; ++i) {
        EXPECT_EQ(row(model, i)[2], "Fetch a stored record 000" + QString::number(i));
    }
}

TEST_F(TrafficByHand, TheOldestLinesGiveWay)
{
    link::Exchange exchange;
    exchange.transaction.frame = ":0572FF\r\n";
    for (int i = 1; i <= TrafficModel::kMostLines + 10; ++i) {
        exchange.number = static_cast<std::uint64_t>(i);
        model.ended(exchange);
    }
    model.flush();
    EXPECT_LE(model.rowCount(), TrafficModel::kMostLines);
    EXPECT_GT(model.rowCount(), TrafficModel::kMostLines - 2000);
    EXPECT_EQ(model.line(model.rowCount() - 1).exchange.number, exchange.number);
}

TEST_F(TrafficByHand, LongRepliesTakeNoMoreThanTheirShareOfTheMemory)
{
    link::Exchange exchange;
    exchange.transaction.frame = ":0572FF\r\n";
    exchange.reply.assign(1'000'000, 'x');
    exchange.discarded = exchange.reply;
    const int fitting = static_cast<int>(TrafficModel::kMostCharacters / exchange.reply.size());
    for (int i = 1; i <= 2 * fitting; ++i) {
        exchange.number = static_cast<std::uint64_t>(i);
        model.sending(exchange);
        model.ended(exchange);
        model.flush();
    }
    EXPECT_EQ(model.rowCount(), fitting);
    EXPECT_EQ(model.line(fitting - 1).exchange.number, exchange.number);
    EXPECT_TRUE(model.line(0).exchange.discarded.empty());
}

TEST_F(TrafficByHand, PauseAddsNothing)
{
    model.setPaused(true);
    ask(CommandId::QueryOffsetX, "05");
    model.setPaused(false);
    EXPECT_EQ(model.rowCount(), 0);
    ask(CommandId::QueryOffsetX, "05");
    EXPECT_EQ(model.rowCount(), 1);
    model.clear();
    EXPECT_EQ(model.rowCount(), 0);
}

TEST_F(TrafficByHand, FilteredByReadoutKindAndOutcome)
{
    ask(CommandId::QueryOffsetX, "05", ":0572+1.50000FF\r\n");
    ask(CommandId::QueryOffsetX, "0C");
    ask(CommandId::SetOffsetX, "0C", ":0C71+1.50000FF\r\n", "+1.50000");
    EXPECT_EQ(filter.rowCount(), 3);
    filter.setReadout(12);
    EXPECT_EQ(filter.rowCount(), 2);
    filter.setKind(link::Kind::Set);
    EXPECT_EQ(filter.rowCount(), 1);
    filter.setKind(std::nullopt);
    filter.setVerdict(protocol::Verdict::Silent);
    ASSERT_EQ(filter.rowCount(), 1);
    EXPECT_EQ(row(filter, 0)[5], "silent");
    filter.setReadout(std::nullopt);
    filter.setVerdict(std::nullopt);
    EXPECT_EQ(filter.rowCount(), 3);
}

} // namespace
} // namespace quorvel::line
