#include "main/msgboxnew.h"
#include "main/qtmessages.h"
#include "support/bench_on_the_bus.h"

#include <QApplication>
#include <QLabel>
#include <QMessageBox>
#include <QPushButton>
#include <QTimer>

namespace quorvel::test {
namespace {

TEST(ResultBox, ShowsItsTwoLines)
{
    msgboxnew box;
    box.setFirstLine("The offset of Y-Direction is +1.50000!");
    box.setSecondLine("The real value without corrention is 3.5!");
    box.show();
    EXPECT_EQ(box.windowTitle(), "Set Result");
    EXPECT_EQ(child<QLabel>(box, "Label1")->text(), "The offset of Y-Direction is +1.50000!");
    EXPECT_EQ(child<QLabel>(box, "Label2")->text(), "The real value without corrention is 3.5!");
    child<QPushButton>(box, "Command1")->click();
    EXPECT_FALSE(box.isVisible());
}

/// Presses a button of the message box that is about to open.
void answerNextBox(QMessageBox::StandardButton answer, QString& text)
{
    QTimer::singleShot(200, qApp, [answer, &text] {
        auto* box = qobject_cast<QMessageBox*>(QApplication::activeModalWidget());
        ASSERT_TRUE(box);
        text = box->text();
        box->button(answer)->click();
    });
}

TEST(QtsBoxes, SayAndAskWithTheirUsualButtons)
{
    link::Gate gate;
    QtMessages messages(gate);
    QString text;
    answerNextBox(QMessageBox::Ok, text);
    messages.say(nullptr, "Two\r\nlines");
    EXPECT_EQ(text, "Two\nlines");
    answerNextBox(QMessageBox::Yes, text);
    EXPECT_TRUE(messages.ask(nullptr, "Are you sure?"));
    answerNextBox(QMessageBox::No, text);
    EXPECT_FALSE(messages.ask(nullptr, "Are you sure?"));
}

TEST(QtsBoxes, TheResultBoxShowsTheLinesInTheirOrder)
{
    link::Gate gate;
    QtMessages messages(gate);
    QStringList lines;
    QTimer::singleShot(200, qApp, [&lines] {
        auto* box = qobject_cast<msgboxnew*>(QApplication::activeModalWidget());
        ASSERT_TRUE(box);
        lines << child<QLabel>(*box, "Label1")->text() << child<QLabel>(*box, "Label2")->text();
        child<QPushButton>(*box, "Command1")->click();
    });
    messages.showResult(nullptr, "first", "second");
    EXPECT_EQ(lines, QStringList({"first", "second"}));
}

TEST(QtsBoxes, AnswerThroughTheGateOfARunningHandler)
{
    link::Gate gate;
    InputFilter filter(gate);
    qApp->installEventFilter(&filter);
    QtMessages messages(gate);
    QString text;
    bool answer = false;
    gate.run([&] {
        answerNextBox(QMessageBox::Yes, text);
        answer = messages.ask(nullptr, "Overwrite?");
        EXPECT_FALSE(gate.boxOpen());
    });
    EXPECT_TRUE(answer);
}

} // namespace
} // namespace quorvel::test
