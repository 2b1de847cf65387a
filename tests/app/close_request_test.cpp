#include "app/close_request.h"

#include "main/qtmessages.h"

#include <QAbstractButton>
#include <QApplication>
#include <QDialog>
#include <QMessageBox>
#include <QTest>
#include <QTimer>

#include <gtest/gtest.h>

#include <csignal>
#include <optional>

namespace quorvel::test {
namespace {

constexpr int kPatience = 10'000; // ms
constexpr int kSomeLooks = 700;   // ms

/// A main window with a window open over it. Each test is a process of its own: a request cannot be taken back.
class CloseRequested : public ::testing::Test {
protected:
    CloseRequested()
    {
        main.show();
        over.setModal(true);
        over.show();
    }
    bool closes(QWidget& window)
    {
        return QTest::qWaitFor([&window] { return !window.isVisible(); }, kPatience);
    }

    link::Gate gate;
    QWidget main;
    QDialog over{&main};
    CloseRequest request{gate, main};
};

TEST_F(CloseRequested, NothingClosesBefore)
{
    QTest::qWait(kSomeLooks);
    EXPECT_TRUE(over.isVisible());
}

TEST_F(CloseRequested, OneWindowClosesAfterTheOther)
{
    std::raise(SIGTERM);
    EXPECT_TRUE(closes(over));
    EXPECT_TRUE(closes(main));
}

TEST_F(CloseRequested, AQuestionIsTheUsersToAnswer)
{
    std::optional<link::Gate::Box> question(std::in_place, gate);
    std::raise(SIGTERM);
    QTest::qWait(kSomeLooks);
    EXPECT_TRUE(over.isVisible());
    question.reset();
    EXPECT_TRUE(closes(main));
}

TEST_F(CloseRequested, AMessageThatNobodyReadsCloses)
{
    QtMessages messages(gate);
    QTimer::singleShot(0, [] { std::raise(SIGTERM); });
    messages.say(&over, QStringLiteral("Set OK!"));
    messages.showResult(&over, QStringLiteral("X"), QStringLiteral("Y"));
    EXPECT_TRUE(closes(main));
}

TEST_F(CloseRequested, AYesOrNoIsTheUsersToAnswer)
{
    QtMessages messages(gate);
    bool open = false;
    QTimer::singleShot(0, [] { std::raise(SIGTERM); });
    QTimer::singleShot(kSomeLooks, [&open] {
        auto* box = qobject_cast<QMessageBox*>(QApplication::activeModalWidget());
        open = box != nullptr;
        if (box) box->button(QMessageBox::Yes)->click();
    });
    EXPECT_TRUE(messages.ask(&over, QStringLiteral("Sure?")));
    EXPECT_TRUE(open);
    EXPECT_TRUE(closes(main));
}

/// A window that asks before it closes, and whose user says no.
class Unwilling final : public QDialog {
public:
    explicit Unwilling(link::Gate& gate) : gate_(gate) {}
    int asked = 0;

    void reject() override
    {
        ++asked;
        const link::Gate::Box question(gate_);
        QTest::qWait(kSomeLooks);
    }

private:
    link::Gate& gate_;
};

TEST(CloseRequest, WhoSaysNoIsNotAskedAgain)
{
    link::Gate gate;
    QWidget main;
    Unwilling over(gate);
    main.show();
    over.setModal(true);
    over.show();
    const CloseRequest request(gate, main);
    std::raise(SIGTERM);
    ASSERT_TRUE(QTest::qWaitFor([&over] { return over.asked > 0; }, kPatience));
    QTest::qWait(3 * kSomeLooks);
    EXPECT_EQ(over.asked, 1);
    EXPECT_TRUE(main.isVisible());
}

} // namespace
} // namespace quorvel::test
