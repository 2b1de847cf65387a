#include "settings/resetsetting.h"
#include "support/bench_on_the_bus.h"

namespace quorvel::test {
namespace {

constexpr auto kQuestion =
    "Do you want to reset all settings (set diameter as 1.5mm, set permitted error as 0.3mm, turn off the "
    "offset, turn off the reference, turn off the invert, turn off the swap, set clock the same as "
    "computer's "
    "time, set interval as 1 hour) and delete all data of pendulum cann't be recover?";

class ResetOnTheBus : public BenchOnTheBus {
protected:
    /// Chooses the menu item and answers its questions.
    QStringList reset(std::initializer_list<bool> answers, link::InstrumentType type = link::TypeA)
    {
        bench.instrumentType = type;
        messages.answers = answers;
        messages.shown.clear();
        ResetSetting_Click(workplace, nullptr, [this](const QString& text) { statuses << text; });
        return messages.shown;
    }

    QStringList statuses;
};

TEST_F(ResetOnTheBus, PutsEverySettingBack)
{
    bench.currentAddress = "12";
    for (const auto* setting :
         {"diameter 25", "error 9", "selfcalibration off", "reference on", "offsetx +1.00000",
          "offsety +1.00000", "offsetz +1.00000", "invertx on", "inverty on", "invertz on", "swap on",
          "clock 2031-02-03T04:05:06", "fixed 1 2 3 4"})
        bus.command(QString("set 12 ") + setting);
    bus.command("take 12 3");
    EXPECT_EQ(reset({true, true}, link::TypeC), QStringList({kQuestion, "Are you sure?", "Reset OK!"}));

    const auto state = bus.state(12);
    const auto part = [&](const char* name) { return state.value(name).toObject(); };
    EXPECT_EQ(part("wire").value("diameter").toDouble(), 1.5);
    EXPECT_EQ(part("wire").value("error").toDouble(), 0.3);
    EXPECT_TRUE(part("wire").value("selfCalibration").toBool());
    EXPECT_FALSE(state.value("reference").toBool());
    for (const auto* name : {"X", "Y", "Z"})
        EXPECT_EQ(part("offsets").value(name).toString(), "+0.00000");
    for (const auto* name : {"invertX", "invertY", "invertZ", "swap"})
        EXPECT_FALSE(part("switches").value(name).toBool()) << name;
    EXPECT_EQ(part("auto").value("mode").toInt(), 1);
    EXPECT_EQ(part("auto").value("values").toArray().first().toInt(), 1);
    EXPECT_EQ(part("ring").value("stored").toInt(), 0);
    EXPECT_EQ(statuses.size(), 13);
    EXPECT_EQ(statuses.first(), "Resetting readout 12: step 1 of 12 (wire parameters) ...");
    EXPECT_EQ(statuses.last(), "Readout 12 is reset.");
}

TEST_F(ResetOnTheBus, AnyAnswerButYesSendsNothing)
{
    EXPECT_EQ(reset({false}), QStringList(kQuestion));
    EXPECT_EQ(reset({true, false}), QStringList({kQuestion, "Are you sure?"}));
    EXPECT_TRUE(bus.frames().isEmpty());
}

TEST_F(ResetOnTheBus, ClosedPortHasAMessageOfItsOwn)
{
    mscomm1.setPortOpen(false);
    EXPECT_EQ(reset({true, true}), QStringList("Please open the com port and search CCD first!"));
}

TEST_F(ResetOnTheBus, StatusTellsWhichStepFailedAndWhy)
{
    bus.fault("echo@75");
    EXPECT_EQ(reset({true, true}).last(), "Reset Failed!");
    EXPECT_EQ(bus.frames().size(), 2);
    EXPECT_EQ(statuses.last(),
              "The reset of readout 5 failed at step 2 of 10 (reference feature off). The readout "
              "answered \":057501FF\" to \":057500FF\". The step before it stays in force.");
}

TEST_F(ResetOnTheBus, SilenceEndsTheReset)
{
    bus.fault("silent@7701");
    EXPECT_EQ(reset({true, true}).last(), "Reset Failed!");
    EXPECT_TRUE(statuses.last().contains("step 6 of 10 (swap of X and Y off). The readout did not answer."))
        << qPrintable(statuses.last());
}

TEST_F(ResetOnTheBus, AdapterPulledInMidResetEndsIt)
{
    bus.fault("hangup@71");
    EXPECT_EQ(reset({true, true}).last(), "Reset Failed!");
    EXPECT_FALSE(mscomm1.PortOpen());
    EXPECT_EQ(statuses.last(), "The reset of readout 5 failed at step 3 of 10 (X offset to zero). " +
                                   mscomm1.lostReason() + " The 2 steps before it stay in force.");
    EXPECT_TRUE(mscomm1.lostReason().startsWith(bus.device() + " is gone")) << qPrintable(statuses.last());
}

TEST_F(ResetOnTheBus, WhileAHandlerRunsItDoesNotStart)
{
    gate.run([this] { EXPECT_TRUE(reset({true, true}).isEmpty()); });
    EXPECT_TRUE(bus.frames().isEmpty());
}

} // namespace
} // namespace quorvel::test
