#include "main/buswindow.h"

#include "settings/form2.h"
#include "settings/form4.h"
#include "settings/form51.h"
#include "settings/form52.h"
#include "settings/settime.h"
#include "settings/setwire.h"
#include "support/bench_by_hand.h"
#include "windows/settings_on_the_bus.h"

#include <QApplication>

namespace quorvel::test {
namespace {

/// What all settings windows do, shown with the offset window.
class SettingsByHand : public SettingsWindow<Form51, BenchByHand> {
protected:
    SettingsByHand()
    {
        open(link::TypeC);
        QApplication::setActiveWindow(form.get());
    }

    /// Presses Return. @return the frame that goes out.
    std::string enterIn(QWidget& field)
    {
        frames.clear();
        QTest::keyClick(&field, Qt::Key_Return);
        return frames.empty() ? std::string() : frames.front();
    }
    /// What happens while the readout is awaited.
    void meanwhile(std::function<void()> action)
    {
        onFrame = [action = std::move(action)] { action(); };
    }
};

struct EnterRow {
    const char* field;
    const char* query;
    const char* set;
};
const EnterRow kEnterRows[] = {{"Combo1", "76FF", "7500FF"},
                               {"Text2", "72FF", "71+2"},
                               {"Text3", "74FF", "73+2"},
                               {"Text4", "7806FF", "7805+2"}};

// An empty box would otherwise send an offset of zero.
TEST_F(SettingsByHand, EnterQueriesItsRowUntilTheValueWasEdited)
{
    for (const auto& row : kEnterRows) {
        auto* field = child<QWidget>(*form, row.field);
        field->setFocus();
        EXPECT_EQ(enterIn(*field), std::string(":01") + row.query) << row.field;
        QTest::keyClick(field, qobject_cast<QLineEdit*>(field) ? Qt::Key_2 : Qt::Key_Down);
        EXPECT_TRUE(enterIn(*field).starts_with(std::string(":01") + row.set))
            << row.field << ' ' << frames[0];
    }
}

TEST_F(SettingsByHand, AValueThatTheReadoutToldIsNotEdited)
{
    auto& typed = box("Text2");
    typed.setFocus();
    QTest::keyClick(&typed, Qt::Key_2);
    answerWith({":0172+1.50000FF\r\n"});
    press("Command3");
    EXPECT_EQ(typed.text(), "+1.50000");
    EXPECT_EQ(enterIn(typed), ":0172FF");
}

TEST_F(SettingsByHand, EscapeCloses)
{
    QTest::keyClick(form.get(), Qt::Key_Escape);
    EXPECT_FALSE(form->isVisible());
}

TEST_F(SettingsByHand, ClosingWaitsForTheRunningCommand)
{
    meanwhile([this] {
        form->reject();
        EXPECT_TRUE(form->isVisible());
    });
    answerWith({":0171+0.00000FF\r\n"});
    EXPECT_EQ(press("Command4"), QStringList("Set OK!"));
    EXPECT_FALSE(form->isVisible());
}

TEST_F(SettingsByHand, SecondPressStartsNothing)
{
    meanwhile([this] { button("Command6").click(); });
    answerWith({":0171+0.00000FF\r\n"});
    EXPECT_EQ(press("Command4"), QStringList("Set OK!"));
    EXPECT_EQ(frames.size(), 1U);
}

TEST_F(SettingsByHand, PortThatVanishesGivesItsReasonAndEndsTheCommand)
{
    meanwhile([this] {
        if (device) device->vanish();
    });
    EXPECT_EQ(press("Command4"), QStringList("Comm Error"));
    EXPECT_TRUE(status().startsWith("by hand is gone (pulled).")) << qPrintable(status());
    EXPECT_EQ(status(), mscomm1.lostReason());
}

TEST_F(SettingsByHand, EveryPressAfterALossGivesItsReason)
{
    device->vanish();
    EXPECT_EQ(status(), mscomm1.lostReason());
    for (const auto* name :
         {"Command1", "Command2", "Command3", "Command4", "Command5", "Command6", "Command7", "Command8"}) {
        EXPECT_EQ(press(name), QStringList("Comm Error")) << name;
        EXPECT_EQ(status(), mscomm1.lostReason()) << name;
    }
}

TEST_F(SettingsByHand, WarningStaysBesideTheReasonOfALoss)
{
    box("Text2").setText("1000");
    meanwhile([this] {
        if (device) device->vanish();
    });
    press("Command4");
    EXPECT_EQ(status(), kLongFrame + (' ' + mscomm1.lostReason()));
}

TEST_F(SettingsByHand, PortThatIsClosedByHandIsNamed)
{
    mscomm1.setPortOpen(false);
    EXPECT_EQ(press("Command4"), QStringList("Comm Error"));
    EXPECT_EQ(status(), "The port is closed.");
}

TEST_F(SettingsByHand, EndOfTheProgramEndsTheCommand)
{
    meanwhile([this] { module1.abandon(); });
    press("Command4");
    EXPECT_LT(clock.passed(), 1);
}

TEST_F(SettingsByHand, NextCommandEmptiesTheStatusLine)
{
    press("Command4");
    EXPECT_FALSE(status().isEmpty());
    answerWith({":0171+0.00000FF\r\n"});
    press("Command4");
    EXPECT_EQ(status(), "");
}

TEST_F(SettingsByHand, NoiseOfAnyLengthIsHandled)
{
    const std::string noise(40, '\xff');
    for (const auto* name :
         {"Command1", "Command2", "Command3", "Command4", "Command5", "Command6", "Command7", "Command8"}) {
        answerWith({noise});
        EXPECT_EQ(press(name).size(), 1) << name;
    }
}

/// Each window: the fields as Tab goes through them, round to the first.
struct TabCase {
    const char* name;
    std::unique_ptr<QDialog> (*make)(const Workplace&);
    link::InstrumentType type;
    const char* edition;
    QStringList order;
};

template<class Window>
std::unique_ptr<QDialog> make(const Workplace& workplace)
{
    return std::make_unique<Window>(workplace);
}

const QStringList kX{"Combo1", "Command1", "Command2", "Text2", "Command3", "Command4"};
const QStringList kY{"Text3", "Command5", "Command6"};
const QStringList kZ{"Text4", "Command7", "Command8"};

const TabCase kTabs[] = {
    {"Form2", make<Form2>, link::TypeA, "USER", {"Text1", "Text2", "Command1", "Command2"}},
    {"Form4",
     make<Form4>,
     link::TypeA,
     "USER",
     {"Combo1", "Command1", "Command2", "Combo2", "Command1", "Command2", "Combo3", "Command1", "Command2",
      "Combo4", "Command3", "Command4"}},
    {"Form51TypeA", make<Form51>, link::TypeA, "USER", kX + kY},
    {"Form51TypeC", make<Form51>, link::TypeC, "USER", kX + kY + kZ},
    {"Form51TypeD", make<Form51>, link::TypeD, "USER", kX},
    {"Form52TypeC", make<Form52>, link::TypeC, "USER", kX + kY + kZ},
    {"SetTime", make<SetTime>, link::TypeA, "USER", {"Text1", "Command1", "Command2"}},
    {"SetWire",
     make<SetWire>,
     link::TypeA,
     "USER",
     {"Dia", "Dia_error", "SensorNo", "Command1", "Command3", "Command2"}},
    {"SetWireFactory",
     make<SetWire>,
     link::TypeA,
     "FACTORY",
     {"Dia", "Dia_error", "SensorNo", "Combo1", "Command1", "Command3", "Command2"}},
};

class TabIn : public BenchByHand, public ::testing::WithParamInterface<TabCase> {};

TEST_P(TabIn, GoesThroughTheFieldsAsTheyAreShown)
{
    const auto& row = GetParam();
    bench.instrumentType = row.type;
    bench.edition = row.edition;
    const auto window = row.make(workplace);
    window->show();
    QApplication::setActiveWindow(window.get());
    child<QWidget>(*window, row.order.first())->setFocus();
    QStringList order;
    for (qsizetype i = 0; i < row.order.size(); ++i) {
        order << QApplication::focusWidget()->objectName();
        QTest::keyClick(QApplication::focusWidget(), Qt::Key_Tab);
    }
    EXPECT_EQ(order, row.order);
    EXPECT_EQ(QApplication::focusWidget()->objectName(), row.order.first());
}

INSTANTIATE_TEST_SUITE_P(All, TabIn, ::testing::ValuesIn(kTabs),
                         [](const auto& instance) { return instance.param.name; });

/// Each window: in which field Enter sends what.
template<class Window>
class EnterIn : public SettingsWindow<Window, BenchByHand> {
protected:
    std::string sent(const char* field)
    {
        this->open();
        QApplication::setActiveWindow(this->form.get());
        auto* widget = child<QWidget>(*this->form, field);
        widget->setFocus();
        this->frames.clear();
        QTest::keyClick(widget, Qt::Key_Return);
        return this->frames.empty() ? this->messages.last().toStdString() : this->frames.front();
    }
};
using EnterInForm2 = EnterIn<Form2>;
using EnterInForm4 = EnterIn<Form4>;
using EnterInSetTime = EnterIn<SetTime>;
using EnterInSetWire = EnterIn<SetWire>;

TEST_F(EnterInForm2, PressesOk)
{
    EXPECT_EQ(sent("Text1"), "New Address Input Error");
    EXPECT_EQ(sent("Text2"), "New Address Input Error");
}

// The lists show "False" until they are queried, whatever the readout holds.
TEST_F(EnterInForm4, QueriesTheRowUntilItWasChanged)
{
    EXPECT_EQ(sent("Combo1"), ":017704FF");
    EXPECT_EQ(sent("Combo4"), ":017702FF");
    frames.clear();
    QTest::keyClick(&list("Combo4"), Qt::Key_Up);
    QTest::keyClick(&list("Combo4"), Qt::Key_Return);
    EXPECT_EQ(frames, std::vector<std::string>{":01770101FF"});
}

TEST_F(EnterInSetTime, PressesSet) { EXPECT_EQ(sent("Text1"), ":0104FF"); }

TEST_F(EnterInSetWire, PressesSet)
{
    for (const auto* field : {"Dia", "Dia_error", "SensorNo"})
        EXPECT_EQ(sent(field), "Diameter Input Error");
}

} // namespace
} // namespace quorvel::test
