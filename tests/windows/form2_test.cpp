#include "settings/form2.h"
#include "support/bench_by_hand.h"
#include "windows/settings_on_the_bus.h"

namespace quorvel::test {
namespace {

class Form2OnTheBus : public SettingsOnTheBus<Form2> {
protected:
    Form2OnTheBus() { open(); }

    QStringList change(const QString& oldAddress, const QString& newAddress)
    {
        box("Text1").setText(oldAddress);
        box("Text2").setText(newAddress);
        return press("Command1");
    }
};

TEST_F(Form2OnTheBus, StartsWithTheCurrentAddress)
{
    EXPECT_EQ(form->windowTitle(), "Change Address");
    EXPECT_EQ(box("Text1").text(), "5");
    EXPECT_EQ(box("Text2").text(), "");
}

TEST_F(Form2OnTheBus, ReadoutTakesItsNewAddress)
{
    EXPECT_EQ(change("5", "33"), QStringList("New Address Setting Successfully"));
    EXPECT_EQ(bus.frames(), QStringList(":050221FF"));
    EXPECT_EQ(bus.state(33).value("type").toString(), "A");
    EXPECT_EQ(bench.currentAddress, "5");
    EXPECT_TRUE(form->isVisible());
    EXPECT_TRUE(status().contains("still addresses readout 5")) << qPrintable(status());
}

TEST_F(Form2OnTheBus, AddressesAreCheckedBeforeAnythingIsSent)
{
    EXPECT_EQ(change("0", "250"), QStringList("Old Address Input Error"));
    EXPECT_EQ(change("five", "6"), QStringList("Old Address Input Error"));
    EXPECT_EQ(change("5", "250"), QStringList("New Address Input Error"));
    EXPECT_EQ(change("5", "0"), QStringList("New Address Input Error"));
    EXPECT_EQ(change("5", ""), QStringList("New Address Input Error"));
    EXPECT_EQ(change("5", "5"), QStringList("New Address is same as Old Address, It does not need to set."));
    EXPECT_TRUE(bus.frames().isEmpty());
}

TEST_F(Form2OnTheBus, NumbersAreRounded)
{
    EXPECT_EQ(change("4.5", "32.7x"), QStringList("New Address Setting Successfully"));
    EXPECT_EQ(bus.frames(), QStringList(":050221FF"));
}

TEST_F(Form2OnTheBus, SilenceIsAFailure)
{
    bus.fault("silent@02");
    EXPECT_EQ(change("5", "33"), QStringList("New Address Setting Failed"));
    EXPECT_EQ(status(), "The readout did not answer.");
}

TEST_F(Form2OnTheBus, AnswerOutOfTimeIsAFailure)
{
    bus.fault("late=0.5@02");
    EXPECT_EQ(change("5", "33"), QStringList("New Address Setting Failed"));
}

TEST_F(Form2OnTheBus, SixCharactersOrAnotherAddressAreAFailureAndSevenAreNot)
{
    bus.fault("short=6@02:1");
    EXPECT_EQ(change("5", "33"), QStringList("New Address Setting Failed"));
    bus.fault("echo@02:1");
    EXPECT_EQ(change("33", "5"), QStringList("New Address Setting Failed"));
    bus.fault("short=7@02:1");
    EXPECT_EQ(change("5", "33"), QStringList("New Address Setting Successfully"));
}

TEST_F(Form2OnTheBus, CancelCloses)
{
    button("Command2").click();
    EXPECT_FALSE(form->isVisible());
}

/// The same window where only time passes.
class Form2ByHand : public SettingsWindow<Form2, BenchByHand> {};

TEST_F(Form2ByHand, WhatWaitsBeforeTheAnswerIsReadWithIt)
{
    open();
    box("Text2").setText("33");
    device->receive("~");
    answerWith({":010221FF\r\n"});
    EXPECT_EQ(press("Command1"), QStringList("New Address Setting Failed"));
    answerWith({":010221FF\r\n"});
    EXPECT_EQ(press("Command1"), QStringList("New Address Setting Successfully"));
}

TEST_F(Form2ByHand, AnswerCountsWithinAQuarterOfASecond)
{
    open();
    box("Text2").setText("33");
    struct {
        double seconds; ///< after the pause behind the last character
        const char* message;
    } const rows[] = {{0.24, "New Address Setting Successfully"}, {0.26, "New Address Setting Failed"}};
    for (const auto& row : rows) {
        onFrame = [this, &row] {
            clock.plan(0.005 + row.seconds, [this] { device->receive(":010221FF\r\n"); });
        };
        const double before = clock.passed();
        EXPECT_EQ(press("Command1"), QStringList(row.message)) << row.seconds;
        EXPECT_NEAR(clock.passed() - before, 0.03 + 11 * 0.005 + 0.25, 0.003);
        clock.move(1);
        mscomm1.Input(); // what came too late
    }
}

} // namespace
} // namespace quorvel::test
