#include "settings/form4.h"
#include "settings/form52.h"
#include "settings/settime.h"
#include "settings/setwire.h"
#include "support/bench_by_hand.h"
#include "windows/settings_on_the_bus.h"

namespace quorvel::test {
namespace {

using Frames = std::vector<std::string>;
using Texts = QStringList;

constexpr double kPauseAfterCharacter = 0.005; // s
constexpr double kTolerance = 0.002;           // s

/// A press whose frame is answered whole, but by something else, behind which more is on the way.
struct NotAnswerCase {
    const char* name;
    std::unique_ptr<QDialog> (*make)(const Workplace&);
    const char* button; ///< the first of this name
    std::string reply;  ///< as long as the answer, and two characters that belong to it behind
    QString text;       ///< shown at once
    std::string answer; ///< the answer proper, to the next press
    QString answerText;
    bool told = true; ///< the status line shows the reply
};

template<class Window>
std::unique_ptr<QDialog> newWindow(const Workplace& workplace)
{
    return std::make_unique<Window>(workplace);
}

QString clockQuestion(const char* dateAndTime)
{
    return QStringLiteral(
               "Current time is %1.\r\nAre you sure to change Pendulum's RTC time same as PC'time?")
        .arg(QLatin1String(dateAndTime));
}

const NotAnswerCase kNotAnswers[] = {
    {"Form4Query", newWindow<Form4>, "Command1", "~~:01770401FF\r\n", "", ":01770401FF\r\n",
     "X direction invert function opened!"},
    {"Form4Set", newWindow<Form4>, "Command2", "~~:01770300FF\r\n", "", ":01770300FF\r\n", "Set OK!"},
    {"SetTime", newWindow<SetTime>, "Command1", "~~:0104240517090530FF\r\n",
     clockQuestion("2004-24-05  17:09:05"), ":0104240517090530FF\r\n", clockQuestion("2024-05-17  09:05:30")},
    {"SetWireQuery", newWindow<SetWire>, "Command3", "~~:01681503010000FF\r\n",
     "Diameter and permitted Error is set as 6.8mm, 1.5mm\r\n", ":01681503010000FF\r\n",
     "Diameter and permitted Error is set as 1.5mm, 0.3mm\r\n"},
    {"SetWireSet", newWindow<SetWire>, "Command1", "~~:01671503010000FF\r\n", "Diameter Parameters Setted OK",
     ":01671503010000FF\r\n", "Diameter Parameters Setted OK", false},
};

class NotAnswer : public BenchByHand, public ::testing::WithParamInterface<NotAnswerCase> {
protected:
    NotAnswer()
    {
        window = GetParam().make(workplace);
        window->show();
        for (const auto* name : {"Dia", "Dia_error"}) {
            if (auto* box = window->findChild<QLineEdit*>(name)) box->setText("1.5");
        }
        onFrame = [this] { lastOut = clock.passed(); };
        messages.onShow = [this](const QString&) {
            shownAt = clock.passed();
            waitingWhenShown = mscomm1.InBufferCount();
        };
    }

    QStringList press()
    {
        messages.shown.clear();
        child<QPushButton>(*window, GetParam().button)->click();
        return messages.shown;
    }
    QString status() { return child<QLabel>(*window, "Status")->text(); }

    std::unique_ptr<QDialog> window;
    double lastOut = 0; ///< when the last character of the last frame went out
    double shownAt = 0;
    int waitingWhenShown = 0;
};

TEST_P(NotAnswer, DelaysNoTextAndLeavesNothingBehind)
{
    const auto& row = GetParam();
    answerWith({row.reply});
    EXPECT_EQ(press(), row.text.isEmpty() ? Texts() : Texts(row.text));
    EXPECT_EQ(status().contains("The readout answered \"~~:01"), row.told) << qPrintable(status());
    if (!row.text.isEmpty()) {
        EXPECT_NEAR(shownAt - lastOut, kPauseAfterCharacter, kTolerance)
            << "nothing is waited for before the text";
        EXPECT_EQ(waitingWhenShown, 2) << "what is left behind stays until the box is closed";
    }
    EXPECT_EQ(mscomm1.InBufferCount(), 0);

    answerWith({row.answer});
    EXPECT_EQ(press(), Texts(row.answerText));
    EXPECT_EQ(status(), "");
}

INSTANTIATE_TEST_SUITE_P(All, NotAnswer, ::testing::ValuesIn(kNotAnswers),
                         [](const auto& instance) { return instance.param.name; });

/// The clock window, whose second frame follows the box at once.
class SetTimeNotAnswer : public SettingsWindow<SetTime, BenchByHand> {};

TEST_F(SetTimeNotAnswer, LeavesNothingToTheFrameThatFollowsTheQuestion)
{
    open();
    answerWith({"~~:0104240517090530FF\r\n", ":0103240517090530FF\r\n"});
    messages.answers = {true};
    messages.onShow = [this](const QString& text) {
        // The end of the reply is still on the line when the question is answered.
        if (text.startsWith("Current time")) clock.plan(0.02, [this] { device->receive("late"); });
    };
    EXPECT_EQ(press("Command1").last(), "Set OK");
    ASSERT_EQ(frames.size(), 2U);
    EXPECT_EQ(module1.ReplyText(), ":0103240517090530FF\r\n");
    EXPECT_EQ(mscomm1.InBufferCount(), 0);
}

/// A direction of the reference window.
struct ReferenceCase {
    const char* name;
    const char* query;
    const char* set;
    std::string offset;  ///< the answer to the query of the offset
    std::string zero;    ///< the answer to the zero
    std::string reading; ///< the answer to the question for the reading
    std::string written; ///< the answer to the new offset; the reference is 0
    QString setText;
    QString shiftedText; ///< what a query shows when two characters stand before its answer
};

const ReferenceCase kReferenceCases[] = {
    {"X", "Command3", "Command4", ":0172+0.50000FF\r\n", ":0171+0.00000FF\r\n",
     ":012101+2.50000+1.0000000FF\r\n", ":0171-2.50000FF\r\n",
     "Set OK!The current value is +2.50000, the Internal Offset Value is -2.50000.",
     "The reference of X-Direction is 72+0.500!\nThe current value without reference is -69.5!"},
    {"Y", "Command5", "Command6", ":0174+0.50000FF\r\n", ":0173+0.00000FF\r\n",
     ":012101+2.50000+1.0000000FF\r\n", ":0173-1.00000FF\r\n",
     "Set OK!The current value is +1.00000, the Internal Offset Value is -1.00000.",
     "The offset of Y-Direction is 74+0.500!\nThe real value without corrention is -73!"},
    {"Z", "Command7", "Command8", ":017806+0.50000FF\r\n", ":017805+0.00000FF\r\n",
     ":012102+3.00000+9.0000000FF\r\n", ":017805-3.00000FF\r\n",
     "Set OK!The current value is +3.00000, the Internal Offset Value is -3.00000.",
     "The offset of Z-Direction is 06+0.500!\nThe real value without corrention is -3!"},
};

class ReferenceNotAnswer : public SettingsWindow<Form52, BenchByHand>,
                           public ::testing::WithParamInterface<ReferenceCase> {
protected:
    ReferenceNotAnswer()
    {
        // X and Y are read with one command; type C would be asked for Z besides.
        open(GetParam().name == std::string("Z") ? link::TypeC : link::TypeA);
        onFrame = [this] { lastOut = clock.passed(); };
        messages.onShow = [this](const QString&) { shownAt = clock.passed(); };
    }
    double lastOut = 0;
    double shownAt = 0;
};

TEST_P(ReferenceNotAnswer, ToTheZeroLeavesNothingToTheReading)
{
    const auto& row = GetParam();
    answerWith({"~~" + row.zero, row.reading, row.written});
    EXPECT_EQ(press(row.set), QStringList(row.setText));
}

TEST_P(ReferenceNotAnswer, ToTheNewOffsetIsSaidAtOnceAndLeavesNothingToTheNextPress)
{
    const auto& row = GetParam();
    answerWith({row.zero, row.reading, "~~" + row.written});
    EXPECT_EQ(press(row.set), QStringList("Set Failed!"));
    EXPECT_NEAR(shownAt - lastOut, kPauseAfterCharacter, kTolerance);
    EXPECT_EQ(mscomm1.InBufferCount(), 0);
    answerWith({row.zero, row.reading, row.written});
    EXPECT_EQ(press(row.set), QStringList(row.setText));
}

TEST_P(ReferenceNotAnswer, ToAQueryLeavesNothingToTheReading)
{
    const auto& row = GetParam();
    answerWith({"~~" + row.offset, row.reading});
    EXPECT_EQ(press(row.query), QStringList(row.shiftedText));
    EXPECT_TRUE(status().contains("is not a valid offset. Query again.")) << qPrintable(status());
    EXPECT_EQ(mscomm1.InBufferCount(), 0);
}

INSTANTIATE_TEST_SUITE_P(All, ReferenceNotAnswer, ::testing::ValuesIn(kReferenceCases),
                         [](const auto& instance) { return instance.param.name; });

} // namespace
} // namespace quorvel::test
