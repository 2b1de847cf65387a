#include "windows/celebration1_on_the_bus.h"

#include <QApplication>

namespace quorvel::test {
namespace {

class Celebration1Typing : public Celebration1OnTheBus {
protected:
    /// A click of the mouse, which takes the focus from the editor first.
    void press(const char* name) { QTest::mouseClick(&button(name), Qt::LeftButton); }
    void fillWithARefusedText()
    {
        fill({1, 2});
        goTo(3, 1);
        type("1,5");
    }
    void expectRefusal()
    {
        EXPECT_TRUE(status().contains("\"1,5\" is not a number and was not taken: 3 stays"))
            << qPrintable(status());
    }
};

TEST_F(Celebration1Typing, ReturnWritesAndGoesDownTheColumn)
{
    open("X");
    goTo(0, 1);
    enter("1.5");
    EXPECT_EQ(grid().currentIndex(), grid().model()->index(1, 1));
    enter("abc");
    EXPECT_EQ(grid().currentIndex(), grid().model()->index(1, 1)) << "what is refused keeps its cell";
    EXPECT_EQ(cell(1, 1), "");
    EXPECT_TRUE(status().contains("abc")) << qPrintable(status());
}

// As from a dial gauge with a keyboard plug: a key comes before the events after the last one have been handled.
TEST_F(Celebration1Typing, FastKeysGoIntoTheirCells)
{
    open("X");
    activate();
    goTo(0, 1);
    for (int row = 0; row < 11; ++row) {
        for (const char key : std::to_string(row * 1.25)) {
            QTest::keyClick(QApplication::focusWidget(), key);
        }
        QTest::keyClick(QApplication::focusWidget(), Qt::Key_Return);
    }
    for (int row = 0; row < 11; ++row) {
        EXPECT_EQ(cell(row, 1).toDouble(), row * 1.25);
    }
}

TEST_F(Celebration1Typing, MeasuresByKeyboard)
{
    open("X");
    put(5, "x", 7);
    goTo(2, 2);
    QTest::keyClick(&grid(), Qt::Key_Space);
    EXPECT_EQ(cell(2, 2), "7");
    QTest::keyClick(&grid(), Qt::Key_Down);
    QTest::keyClick(&grid(), Qt::Key_F4);
    EXPECT_EQ(cell(3, 2), "7");
    QTest::mouseClick(grid().cellButton(), Qt::LeftButton);
    EXPECT_EQ(bus.frames().count(":052101FF"), 3);
}

TEST_F(Celebration1Typing, MeasuresZFromPointToPointByKeyboard)
{
    bench.currentAddress = "33";
    open("Z");
    goTo(0, 2);
    for (const int place : {5, 6}) {
        put(33, "z1", place);
        put(33, "z2", place + 1);
        QTest::keyClick(&grid(), Qt::Key_Space);
        QTest::keyClick(&grid(), Qt::Key_Down);
    }
    EXPECT_EQ(cell(0, 2), "5");
    EXPECT_EQ(cell(0, 3), "6");
    EXPECT_EQ(cell(1, 2), "6");
    EXPECT_EQ(cell(1, 3), "7");
    goTo(5, 1);
    QTest::keyClick(&grid(), Qt::Key_F4);
    EXPECT_EQ(bus.frames().count(":212102FF"), 2) << "a dial reading is typed, not measured";
}

// The editor is still open each time.
TEST_F(Celebration1Typing, LosesNothingThatWasTyped)
{
    open("X");
    goTo(0, 1);
    type("1.5");
    goTo(5, 1);
    EXPECT_EQ(cell(0, 1), "1.5");
    for (const auto* name : {"Command1", "Command2", "Command3", "Command4"}) {
        const int row = name[7] - '0';
        goTo(row, 1);
        type("2.5");
        button(name).click();
        EXPECT_EQ(cell(row, 1), "2.5") << name;
    }
    goTo(6, 2);
    type("3.5");
    mscomm1.setPortOpen(false);
    grid().cellButton()->click();
    EXPECT_EQ(cell(6, 2), "3.5");
    goTo(10, 1);
    type("4.5");
    window->close();
    EXPECT_FALSE(window->isVisible());
    window.reset();
    const auto rows = rowsOf(inFolder("XDirection.mdb"));
    EXPECT_EQ(rows[0], "0 1.5 -");
    EXPECT_EQ(rows[1], "1 2.5 -");
    EXPECT_EQ(rows[6], "6 - 3.5");
    EXPECT_EQ(rows[10], "10 4.5 -");
}

TEST_F(Celebration1Typing, WritesWhatIsTypedWhenItIsDestroyed)
{
    open("X");
    goTo(3, 1);
    type("1.5");
    window.reset();
    EXPECT_EQ(rowsOf(inFolder("XDirection.mdb"))[3], "3 1.5 -");
}

/// Buttons that use the points, and what they show when they do.
struct PointButton {
    const char* name;
    const char* message;
    bool asksForAFile = false;
};

class RefusedText : public Celebration1Typing, public ::testing::WithParamInterface<PointButton> {};

TEST_P(RefusedText, StopsTheButtonThatIsPressedWhileItIsOpen)
{
    open("X");
    fillWithARefusedText();
    messages.files = {inFolder("saved")};
    button(GetParam().name).click();
    expectRefusal();
    EXPECT_TRUE(messages.shown.isEmpty());
    EXPECT_EQ(messages.files.size(), 1U) << "no file was asked for";
    EXPECT_TRUE(bus.frames().isEmpty());
    button(GetParam().name).click();
    EXPECT_EQ(lastMessage(), GetParam().message) << "once it is known, the old value is used";
    EXPECT_EQ(messages.files.empty(), GetParam().asksForAFile);
}

TEST_P(RefusedText, StopsTheMouseToo)
{
    open("X");
    activate();
    fillWithARefusedText();
    messages.files = {inFolder("saved")};
    press(GetParam().name);
    expectRefusal();
    EXPECT_TRUE(messages.shown.isEmpty());
    EXPECT_EQ(messages.files.size(), 1U);
    EXPECT_TRUE(bus.frames().isEmpty());
    press(GetParam().name);
    EXPECT_EQ(lastMessage(), GetParam().message);
    EXPECT_EQ(messages.files.empty(), GetParam().asksForAFile);
}

INSTANTIATE_TEST_SUITE_P(
    Buttons, RefusedText,
    ::testing::Values(PointButton{"Command1", "X向标定参数下载完毕！"},
                      PointButton{"Command2",
                                  "X: Y=1.0000*X+(0.000)\r\nNonlinear Error: 0.000, Max Error: 0.000"},
                      PointButton{"Command4", "", true}),
    [](const auto& row) { return std::string(row.param.name); });

TEST_F(Celebration1Typing, LoadingAndClosingAskBeforeTheyLoseARefusedText)
{
    open("X");
    fillWithARefusedText();
    button("Command3").click();
    EXPECT_TRUE(lastMessage().contains("Go on and lose it?\n\n\"1,5\" is not a number"))
        << qPrintable(lastMessage());

    messages.shown.clear();
    goTo(4, 1);
    type("1,5");
    window->close();
    EXPECT_TRUE(window->isVisible());
    EXPECT_TRUE(lastMessage().contains("\"1,5\" is not a number and was not taken: 4 stays"))
        << qPrintable(lastMessage());

    messages.shown.clear();
    type("2.5");
    window->close();
    EXPECT_FALSE(window->isVisible());
    EXPECT_TRUE(messages.shown.isEmpty());
}

TEST_F(Celebration1Typing, RefusedTextThatWasLeftBehindStopsNothing)
{
    open("X");
    fillWithARefusedText();
    goTo(5, 1);
    expectRefusal();
    button("Command2").click();
    EXPECT_TRUE(lastMessage().startsWith("X: Y=1.0000*X")) << qPrintable(lastMessage());
    goTo(3, 1);
    enter("1,5");
    expectRefusal();
    messages.shown.clear();
    button("Command2").click();
    EXPECT_TRUE(lastMessage().startsWith("X: Y=1.0000*X")) << qPrintable(lastMessage());
}

TEST_F(Celebration1Typing, TabReachesTheCellButtonAndDigitsStayInTheGrid)
{
    bench.currentAddress = "33";
    put(33, "z1", 5);
    put(33, "z2", 6);
    open("Z");
    activate();
    goTo(0, 2);
    QTest::keyClick(&grid(), Qt::Key_Tab);
    ASSERT_EQ(window->focusWidget(), grid().cellButton());
    QTest::keyClick(grid().cellButton(), Qt::Key_Space);
    EXPECT_EQ(cell(0, 2), "5");
    EXPECT_EQ(cell(0, 3), "6");
    EXPECT_EQ(window->focusWidget(), &grid()) << "and not the address, which the next digits would replace";
    QTest::keyClick(&grid(), Qt::Key_Down);
    QTest::keyClick(&grid(), Qt::Key_Space);
    EXPECT_EQ(cell(1, 2), "5");
}

} // namespace
} // namespace quorvel::test
