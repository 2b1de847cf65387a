#include "line/healthwindow.h"

#include "support/bench_by_hand.h"
#include "support/bench_on_the_bus.h"

#include <QApplication>
#include <QClipboard>
#include <QPushButton>
#include <QTest>

#include <gtest/gtest.h>

namespace quorvel::line {
namespace {

using test::child;

class HealthWindowByHand : public test::BenchByHand {
protected:
    HealthWindowByHand() { module1.addObserver(health); }
    ~HealthWindowByHand() override { module1.removeObserver(health); }

    void ask(const std::string& answer)
    {
        answerWith({answer});
        module1.transact(protocol::transaction(protocol::CommandId::QueryOffsetX, "05"));
    }
    QString cell(int column) { return table().item(0, column)->text(); }
    QTableWidget& table() { return *child<QTableWidget>(window, "LineHealthReadouts"); }

    Health health;
    HealthWindow window{health};
};

TEST_F(HealthWindowByHand, ShowsEachReadoutAndGoesOnWhileItIsOpen)
{
    ask(":0572+1.50000FF\r\n");
    window.show();
    ASSERT_EQ(table().rowCount(), 1);
    EXPECT_EQ(cell(0), "5");
    EXPECT_EQ(cell(1), "1");
    EXPECT_EQ(cell(9), "2024-05-17 09:05:30");
    ask("");
    EXPECT_TRUE(QTest::qWaitFor([this] { return cell(3) == "1"; }, 10'000)) << "a silent one";
    EXPECT_EQ(cell(1), "2");
}

TEST_F(HealthWindowByHand, CopiesCsvAndStartsAnew)
{
    ask("");
    window.show();
    child<QPushButton>(window, "LineHealthCopy")->click();
    EXPECT_EQ(QApplication::clipboard()->text(), health.csv());
    child<QPushButton>(window, "LineHealthReset")->click();
    EXPECT_EQ(table().rowCount(), 0);
    EXPECT_TRUE(health.readouts().empty());
}

} // namespace
} // namespace quorvel::line
