#include "main/inputfilter.h"

#include <QApplication>
#include <QPushButton>
#include <QTest>
#include <QWidget>

#include <gtest/gtest.h>

#include <memory>

namespace quorvel::test {
namespace {

TEST(InputFilter, EveryWindowAskedToCloseInMidTransactionClosesAfterIt)
{
    link::Gate gate;
    InputFilter filter(gate);
    qApp->installEventFilter(&filter);
    QWidget first;
    QWidget second;
    for (int round = 1; round <= 2; ++round) {
        first.show();
        second.show();
        gate.run([&] {
            first.close();
            first.close();
            second.close();
            EXPECT_TRUE(first.isVisible());
            EXPECT_TRUE(second.isVisible());
        });
        EXPECT_FALSE(first.isVisible());
        EXPECT_FALSE(second.isVisible());
    }
}

/// A button in another window, clicked while a handler runs.
class ClickElsewhere : public ::testing::Test {
protected:
    ClickElsewhere()
    {
        qApp->installEventFilter(&filter);
        button.show();
        QObject::connect(&button, &QPushButton::clicked, [this] { ++clicks; });
    }
    void click() { QTest::mouseClick(&button, Qt::LeftButton); }

    link::Gate gate;
    InputFilter filter{gate};
    QPushButton button;
    int clicks = 0;
};

TEST_F(ClickElsewhere, HasNoEffectWhileACommandRuns)
{
    gate.run([this] { click(); });
    QTest::qWait(1);
    EXPECT_EQ(clicks, 0);
}

TEST_F(ClickElsewhere, IsDoneAfterAHandlerThatNobodyAskedFor)
{
    gate.runUnasked([this] {
        click();
        click();
        EXPECT_EQ(clicks, 0);
    });
    EXPECT_TRUE(QTest::qWaitFor([this] { return clicks > 0; }));
    EXPECT_EQ(clicks, 1) << "a second one meets what the first has begun";
    EXPECT_FALSE(button.isDown());
    click();
    EXPECT_EQ(clicks, 2);
}

TEST_F(ClickElsewhere, IsWholeWhereverTheHandlerBeginsAndEnds)
{
    QTest::mousePress(&button, Qt::LeftButton);
    gate.runUnasked([this] { QTest::mouseRelease(&button, Qt::LeftButton); });
    EXPECT_TRUE(QTest::qWaitFor([this] { return clicks == 1; }));
    gate.runUnasked([this] { QTest::mousePress(&button, Qt::LeftButton); });
    QTest::mouseRelease(&button, Qt::LeftButton); // before the press could be sent
    EXPECT_TRUE(QTest::qWaitFor([this] { return clicks == 2; }));
    EXPECT_FALSE(button.isDown());
}

TEST_F(ClickElsewhere, IsLetGoOfWhenItsWindowIsGoneOrACommandRunsByThen)
{
    auto other = std::make_unique<QPushButton>();
    other->show();
    gate.runUnasked([&] {
        QTest::mouseClick(other.get(), Qt::LeftButton);
        other.reset();
    });
    QTest::qWait(1);
    gate.runUnasked([this] { click(); });
    gate.run([] { QTest::qWait(1); });
    QTest::qWait(1);
    EXPECT_EQ(clicks, 0);
}

} // namespace
} // namespace quorvel::test
