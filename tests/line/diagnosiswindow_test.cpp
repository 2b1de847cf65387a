#include "line/diagnosiswindow.h"

#include "main/inputfilter.h"
#include "settings/form51.h"
#include "support/bench_by_hand.h"
#include "support/bench_on_the_bus.h"

#include <QApplication>
#include <QClipboard>
#include <QTest>

#include <gtest/gtest.h>

namespace quorvel::line {
namespace {

using test::child;

class DiagnosisWindowByHand : public test::BenchByHand {
protected:
    DiagnosisWindowByHand()
    {
        qApp->installEventFilter(&filter);
        window.show();
    }

    QTableWidget& steps() { return *child<QTableWidget>(window, "WhyNoAnswerSteps"); }
    QString result(Step step) { return steps().item(static_cast<int>(step), 1)->text(); }
    QString verdict() { return child<QLabel>(window, "WhyNoAnswerVerdict")->text(); }
    QString status() { return child<QLabel>(window, "Status")->text(); }
    QPushButton& button(const char* name) { return *child<QPushButton>(window, name); }

    link::PortList ports{{"by hand"}, [] { return std::vector<link::PortInfo>(); }};
    InputFilter filter{gate};
    DiagnosisWindow window{workplace, ports};
};

TEST_F(DiagnosisWindowByHand, TestsTheReadoutOfTheMainWindow)
{
    EXPECT_EQ(child<QLineEdit>(window, "WhyNoAnswerAddress")->text(), "1");
    button("WhyNoAnswerStart").click();
    EXPECT_EQ(frames.front(), ":0076FF");
    EXPECT_EQ(frames[1], ":FF01FF");
    EXPECT_EQ(frames[2], ":0176FF");
    EXPECT_EQ(result(Step::Port), "COM1 by hand is open.");
    EXPECT_EQ(result(Step::Search), "No readout answers the search.");
    EXPECT_TRUE(verdict().startsWith("Most likely: No readout answers")) << qPrintable(verdict());
    EXPECT_TRUE(verdict().contains("\nNext step: ") && verdict().contains("\nNot known: "));
    EXPECT_FALSE(gate.busy());
    EXPECT_TRUE(messages.shown.isEmpty());
}

TEST_F(DiagnosisWindowByHand, WellIsSaidWithoutALikelyFault)
{
    answerWith({"", ":01\r\n", ":017601FF\r\n", ":012101+1.50000-2.2500000FF\r\n",
                ":012101+1.50000-2.2500000FF\r\n", ":012101+1.50000-2.2500000FF\r\n",
                ":0104240517090530FF\r\n"});
    window.start();
    EXPECT_TRUE(verdict().startsWith("Readout 1 answers as it should.\n")) << qPrintable(verdict());
}

TEST_F(DiagnosisWindowByHand, ShowsTheStepAndTheTimeLeftAndCanBeStopped)
{
    QString format;
    QString running;
    onFrame = [&] {
        if (frames.back() != ":FF01FF") return;
        format = child<QProgressBar>(window, "WhyNoAnswerProgress")->format();
        running = result(Step::Search);
        EXPECT_FALSE(button("WhyNoAnswerStart").isEnabled());
        QTest::mouseClick(&button("WhyNoAnswerStop"), Qt::LeftButton);
    };
    window.start();
    EXPECT_TRUE(format.startsWith("about ") && format.endsWith(" s left")) << qPrintable(format);
    EXPECT_EQ(running, "...");
    EXPECT_EQ(frames.size(), 2U) << "nothing after the search";
    EXPECT_TRUE(verdict().contains("stopped before its end")) << qPrintable(verdict());
    EXPECT_EQ(result(Step::Search), "");
    EXPECT_TRUE(button("WhyNoAnswerStart").isEnabled());
    EXPECT_FALSE(button("WhyNoAnswerStop").isEnabled());
}

TEST_F(DiagnosisWindowByHand, ClosingEndsTheTestFirst)
{
    onFrame = [this] { window.reject(); };
    window.start();
    EXPECT_EQ(frames.size(), 1U);
    EXPECT_FALSE(window.isVisible());
}

TEST_F(DiagnosisWindowByHand, AClosedPortIsTheVerdictAndNothingIsSent)
{
    mscomm1.setPortOpen(false);
    window.start();
    EXPECT_EQ(result(Step::Port), "No port is open.");
    EXPECT_TRUE(verdict().startsWith("Most likely: No port is open.")) << qPrintable(verdict());
    EXPECT_TRUE(frames.empty());
}

TEST_F(DiagnosisWindowByHand, AnAddressThatNamesNoReadoutIsTheVerdict)
{
    window.setAddress("250");
    EXPECT_EQ(status(), "No readout has the address \"250\". Addresses are 1 to 249.");
    window.start();
    EXPECT_TRUE(verdict().contains("\"250\" names no readout")) << qPrintable(verdict());
    window.setAddress("");
    EXPECT_EQ(status(), "") << "the line alone is tested";
}

TEST_F(DiagnosisWindowByHand, CopyTakesStepsAndVerdict)
{
    window.start();
    button("WhyNoAnswerCopy").click();
    const auto lines = QApplication::clipboard()->text().split('\n');
    EXPECT_EQ(lines.front(), "Port: COM1 by hand is open.");
    EXPECT_TRUE(lines[kSteps].startsWith("Most likely: ")) << qPrintable(lines[kSteps]);
}

TEST_F(DiagnosisWindowByHand, EveryControlIsReachedByKeyboard)
{
    window.activateWindow();
    ASSERT_TRUE(QTest::qWaitForWindowActive(&window));
    child<QLineEdit>(window, "WhyNoAnswerAddress")->setFocus();
    QStringList visited;
    for (int i = 0; i < 5; ++i) {
        visited << QApplication::focusWidget()->objectName();
        QTest::keyClick(QApplication::focusWidget(), Qt::Key_Tab);
    }
    EXPECT_EQ(visited, QStringList({"WhyNoAnswerAddress", "WhyNoAnswerStart", "WhyNoAnswerCopy",
                                    "WhyNoAnswerSteps", "WhyNoAnswerVerdict"}));
    child<QLineEdit>(window, "WhyNoAnswerAddress")->setFocus();
    QTest::keyClick(QApplication::focusWidget(), Qt::Key_Return);
    EXPECT_FALSE(verdict().isEmpty()) << "Return in the address box tests";
}

/// The offsets before a workplace that can test.
class OfferByHand : public test::BenchByHand {
protected:
    OfferByHand()
    {
        workplace.whyNoAnswer = [this](QWidget* parent, const QString& address) {
            EXPECT_EQ(parent, form.get());
            asked << address;
        };
        form = std::make_unique<Form51>(workplace);
        form->show();
    }

    QPushButton& link() { return *child<QPushButton>(*form, "WhyLink"); }
    void query(const std::string& answer)
    {
        answerWith({answer});
        child<QPushButton>(*form, "Command3")->click();
    }

    std::unique_ptr<Form51> form;
    QStringList asked;
};

TEST_F(OfferByHand, StandsInTheStatusLineAfterAFailureOnly)
{
    EXPECT_FALSE(link().isVisible());
    for (const auto* failure : {"", ":0172", "~0172+1.50000FF\r\n"}) {
        query(failure);
        EXPECT_TRUE(link().isVisible()) << failure;
        EXPECT_EQ(link().text(), "Why no answer?");
        query(":0172+1.50000FF\r\n");
        EXPECT_FALSE(link().isVisible()) << "answered again";
    }
}

TEST_F(OfferByHand, LeavesTheTextsOfTheWindowAsTheyAre)
{
    query("");
    EXPECT_EQ(messages.last(), "Comm Error");
    EXPECT_EQ(child<QLabel>(*form, "Status")->text(), "The readout did not answer.");
    EXPECT_EQ(frames, std::vector<std::string>({":0172FF"}));
}

TEST_F(OfferByHand, LeadsToTheTestByMouseAndKeyboard)
{
    query("");
    QTest::mouseClick(&link(), Qt::LeftButton);
    for (const auto key : {Qt::Key_Space, Qt::Key_Return}) {
        link().setFocus();
        QTest::keyClick(&link(), key);
    }
    EXPECT_EQ(asked, QStringList({"1", "1", "1"}));
    EXPECT_EQ(frames.size(), 1U) << "Return presses no button of the window";
}

TEST_F(OfferByHand, ARefusedCommandIsNoFailureOfTheLine)
{
    module1.setReadOnly(true);
    child<QPushButton>(*form, "Command4")->click();
    EXPECT_EQ(messages.last(), "Comm Error");
    EXPECT_FALSE(link().isVisible());
}

TEST_F(OfferByHand, WithoutATestNothingIsOffered)
{
    workplace.whyNoAnswer = nullptr;
    const Form51 alone(workplace);
    EXPECT_EQ(alone.findChild<QPushButton*>("WhyLink"), nullptr);
}

} // namespace
} // namespace quorvel::line
