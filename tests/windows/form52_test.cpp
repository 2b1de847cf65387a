#include "protocol/values.h"
#include "settings/form52.h"
#include "support/bench_by_hand.h"
#include "windows/settings_on_the_bus.h"

namespace quorvel::test {
namespace {

const QString kMayBeLost = QStringLiteral("The former offset may have been overwritten with zero: the "
                                          "readout did not answer completely. Query it.");
constexpr auto kLost = "The former offset was overwritten with zero and is lost.";
const QString kNoReading = QStringLiteral("\"Error\" is not a reading; it was counted as 0.");

class Form52OnTheBus : public SettingsOnTheBus<Form52> {
protected:
    Form52OnTheBus()
    {
        bench.currentAddress = "12";
        open(link::TypeC);
    }
};

TEST_F(Form52OnTheBus, XReportsItsReferenceFromThenOn)
{
    bus.command("set 12 x 2.5");
    bus.command("set 12 offsetx +1.00000");
    box("Text2").setText("10.000");
    EXPECT_EQ(press("Command4"),
              QStringList("Set OK!The current value is +2.50000, the Internal Offset Value is +7.50000."));
    EXPECT_EQ(state("offsets", 12).value("X").toString(), "+7.50000");
    EXPECT_TRUE(
        QString::fromStdString(protocol::ReadSensorValues(module1, 12, bench)).startsWith("  X: +10.0000"));
}

TEST_F(Form52OnTheBus, ZReportsItsReferenceFromThenOn)
{
    bus.command("set 12 z1 3");
    box("Text4").setText("-1");
    EXPECT_EQ(press("Command8"),
              QStringList("Set OK!The current value is +3.00000, the Internal Offset Value is -4.00000."));
    EXPECT_EQ(state("offsets", 12).value("Z").toString(), "-4.00000");
}

TEST_F(Form52OnTheBus, QueriesShowOffsetAndRealValue)
{
    bus.command("set 12 x 2.5");
    bus.command("set 12 y 1.25");
    bus.command("set 12 z1 3");
    bus.command("set 12 offsetx +1.00000");
    bus.command("set 12 offsety -0.25000");
    bus.command("set 12 offsetz +0.50000");
    EXPECT_EQ(press("Command3"), QStringList("The reference of X-Direction is +1.00000!\n"
                                             "The current value without reference is 2.5!"));
    EXPECT_EQ(press("Command5"), QStringList("The offset of Y-Direction is -0.25000!\n"
                                             "The real value without corrention is 1.25!"));
    EXPECT_EQ(press("Command7"), QStringList("The offset of Z-Direction is +0.50000!\n"
                                             "The real value without corrention is 3!"));
    EXPECT_EQ(box("Text2").text(), "+1.00000");
    EXPECT_EQ(box("Text3").text(), "-0.25000");
    EXPECT_EQ(box("Text4").text(), "+0.50000");
}

TEST_F(Form52OnTheBus, ReferenceFeatureIsThatOfTheOffsetWindow)
{
    EXPECT_EQ(press("Command2"), QStringList("Set OK!"));
    EXPECT_EQ(press("Command1"), QStringList("Use Reference to Correct!"));
    EXPECT_EQ(form->windowTitle(), "Reference Setting");
    EXPECT_EQ(
        child<QLabel>(*form, "Label5")->text(),
        "Input the reference into the blank. The reading of readout will be the input reference value.");
}

TEST_F(Form52OnTheBus, RowsFollowTheInstrumentType)
{
    open(link::TypeD);
    EXPECT_FALSE(shows("Frame2"));
    EXPECT_FALSE(shows("Frame1"));
    open(link::TypeB);
    EXPECT_TRUE(shows("Frame2"));
    EXPECT_FALSE(shows("Frame1"));
}

TEST_F(Form52OnTheBus, LongOffsetIsSentAndWarnedOfAlthoughItIsNotAnswered)
{
    bus.command("set 12 offsetx +1.00000");
    bus.command("set 12 x 2.5");
    box("Text2").setText("1002.5");
    EXPECT_EQ(press("Command4"), QStringList("Comm Error"));
    EXPECT_EQ(bus.frames().last(), ":0C71+1000.000FF");
    EXPECT_EQ(status(), kLongFrame + " The readout did not answer. " + kLost);
    EXPECT_EQ(state("offsets", 12).value("X").toString(), "+0.00000");
}

TEST_F(Form52OnTheBus, RealValueHasNoNoise)
{
    bus.command("set 12 x 0.3");
    bus.command("set 12 offsetx +12.0000");
    EXPECT_EQ(press("Command3"), QStringList("The reference of X-Direction is +12.0000!\n"
                                             "The current value without reference is 0.3!"));
}

/// The same window where only time passes.
class Form52ByHand : public SettingsWindow<Form52, BenchByHand> {
protected:
    Form52ByHand() { open(link::TypeC); }
};

TEST_F(Form52ByHand, SilenceToTheZeroingIsACommError)
{
    for (const auto* name : {"Command4", "Command6", "Command8"}) {
        frames.clear();
        EXPECT_EQ(press(name), QStringList("Comm Error"));
        EXPECT_EQ(frames.size(), 1U);
        EXPECT_EQ(status(), "The readout did not answer. " + kMayBeLost);
    }
}

/// A run that sets a reference of 10: what goes out, and what comes back.
struct RunCase {
    const char* name;
    const char* box;
    const char* set;
    std::vector<std::string> frames; ///< the zeroing first, the new offset last
    std::string reading;             ///< the answer to the frame before the last
    int replyLength;
};

const RunCase kRuns[] = {
    {"X",
     "Text2",
     "Command4",
     {":0171+0.00000FF", ":012101FF", ":0171+7.50000FF"},
     ":012101+2.50000+1.0000000FF\r\n",
     17},
    {"Y",
     "Text3",
     "Command6",
     {":0173+0.00000FF", ":012101FF", ":0173+9.00000FF"},
     ":012101+2.50000+1.0000000FF\r\n",
     17},
    {"Z",
     "Text4",
     "Command8",
     {":017805+0.00000FF", ":012102FF", ":017805+7.00000FF"},
     ":012102+3.00000+9.0000000FF\r\n",
     19},
};

class Form52Run : public Form52ByHand, public ::testing::WithParamInterface<RunCase> {
protected:
    Form52Run()
    {
        // X and Y are read with one command; type C would be asked for Z besides.
        open(GetParam().name == std::string("Z") ? link::TypeC : link::TypeA);
        box(GetParam().box).setText("10");
    }

    /// Sets the reference; `echo` answers the new offset.
    QStringList set(const std::string& echo)
    {
        frames.clear();
        button("Command1").setEnabled(false);
        answerWith({GetParam().frames.front() + "\r\n", GetParam().reading, echo});
        return press(GetParam().set);
    }
};

TEST_P(Form52Run, IncompleteReplyToTheWritingLeavesTheOffsetLost)
{
    const auto echo = GetParam().frames.back() + "\r\n";
    struct {
        std::string echo;
        QString reason;
    } const rows[] = {
        {"", "The readout did not answer. "},
        {echo.substr(0, echo.size() - 1), QString("Only %1 of %2 characters of the answer arrived. ")
                                              .arg(GetParam().replyLength - 1)
                                              .arg(GetParam().replyLength)}};
    for (const auto& row : rows) {
        EXPECT_EQ(set(row.echo), QStringList("Comm Error"));
        EXPECT_EQ(status(), row.reason + kLost);
        EXPECT_TRUE(button("Command1").isEnabled());
        EXPECT_EQ(frames, GetParam().frames);
    }
}

TEST_P(Form52Run, EchoThatDiffersIsSaidAndNothingRestoresTheOffset)
{
    auto echo = GetParam().frames.back() + "\r\n";
    echo[3] = '~';
    EXPECT_EQ(set(echo), QStringList("Set Failed!"));
    EXPECT_TRUE(status().startsWith("The readout answered ")) << qPrintable(status());
    EXPECT_TRUE(status().endsWith(kLost)) << qPrintable(status());
    EXPECT_FALSE(button("Command1").isEnabled());
    EXPECT_EQ(frames, GetParam().frames);
}

INSTANTIATE_TEST_SUITE_P(All, Form52Run, ::testing::ValuesIn(kRuns),
                         [](const auto& instance) { return instance.param.name; });

TEST_F(Form52ByHand, SetOfXAndYTakesWhatWaitsAsTheAnswer)
{
    open(link::TypeA);
    for (const auto* name : {"Command4", "Command6"}) {
        const std::string code = name == std::string("Command4") ? "71" : "73";
        device->receive("17 that wait here");
        answerWith({"", ":012101+0.00000+0.0000000FF\r\n", ":01" + code + "+0.00000FF\r\n"});
        EXPECT_TRUE(press(name).first().startsWith("Set OK!")) << name;
    }
}

TEST_F(Form52ByHand, OffsetOfYThatWhatWaitedHasShiftedIsTold)
{
    open(link::TypeA);
    device->receive("\r\n");
    answerWith({":0174+1.50000FF\r\n", ":012101+0.00000+2.5000000FF\r\n"});
    press("Command5");
    EXPECT_EQ(box("Text3").text(), "74+1.500");
    EXPECT_TRUE(status().startsWith("\"74+1.500\" is not a valid offset.")) << qPrintable(status());
    answerWith({":0174+1.50000FF\r\n", ":012101+0.00000+2.5000000FF\r\n"});
    press("Command5");
    EXPECT_EQ(box("Text3").text(), "+1.50000");
    EXPECT_EQ(status(), "");
}

TEST_F(Form52ByHand, SetOfZDrainsBeforeEachOfItsTwoSets)
{
    device->receive("19 waiting already.");
    answerWith({"", ":012102+0.00000+0.0000000FF\r\n", ":017805+0.00000FF\r\n"});
    EXPECT_EQ(press("Command8"), QStringList("Comm Error"));

    onFrame = [this] {
        if (frames.back() == ":012102FF") clock.plan(0.5, [this] { device->receive("late"); });
    };
    answerWith({":017805+0.00000FF\r\n", ":012102+0.00000+0.0000000FF\r\n", ":017805+0.00000FF\r\n"});
    EXPECT_TRUE(press("Command8").first().startsWith("Set OK!"));
}

TEST_F(Form52ByHand, IncompleteReplyToAFlagButtonIsACommError)
{
    for (const auto* answer : {"", ":017"}) {
        answerWith({answer});
        EXPECT_EQ(press("Command1"), QStringList("Comm Error"));
        button("Command1").setEnabled(false);
        answerWith({answer});
        EXPECT_EQ(press("Command2"), QStringList("Comm Error"));
        EXPECT_TRUE(button("Command1").isEnabled());
    }
}

TEST_F(Form52ByHand, EchoOfTheFlagThatDiffersIsSaid)
{
    answerWith({":017500FF\r\n"});
    EXPECT_EQ(press("Command2"), QStringList("Set Failed!"));
    EXPECT_TRUE(status().startsWith("The readout answered ")) << qPrintable(status());
}

TEST_F(Form52ByHand, SilenceToTheReadingOfZIsACommError)
{
    answerWith({":017805+0.00000FF\r\n"});
    EXPECT_EQ(press("Command8"), QStringList("Comm Error"));
    EXPECT_EQ(frames.back(), ":012102FF");
    answerWith({":017806+1.00000FF\r\n"});
    EXPECT_EQ(press("Command7"), QStringList("Comm Error"));
    EXPECT_EQ(box("Text4").text(), "+1.00000");
}

TEST_F(Form52ByHand, SilenceToAQueryIsACommError)
{
    for (const auto* name : {"Command3", "Command5", "Command7"})
        EXPECT_EQ(press(name), QStringList("Comm Error")) << name;
}

TEST_F(Form52ByHand, ReadingThatFailsCountsAsZeroAndIsWarnedOf)
{
    answerWith({":0171+0.00000FF\r\n", "", ":0171+10.0000FF\r\n"});
    box("Text2").setText("10");
    EXPECT_EQ(press("Command4"),
              QStringList("Set OK!The current value is Error, the Internal Offset Value is +10.0000."));
    EXPECT_EQ(status(), "\"Error\" is not a reading; it was counted as 0.");
}

TEST_F(Form52ByHand, EveryWarningOfALongOffsetIsShownTogether)
{
    struct {
        const char* echo;
        QString message, status;
    } const rows[] = {
        {":0171+1000.000FF\r", "Set OK!The current value is Error, the Internal Offset Value is +1000.000.",
         kNoReading + ' ' + kLongFrame},
        {":0171+9999.000FF\r", "Set Failed!",
         kNoReading + ' ' + kLongFrame +
             " The readout answered \":0171+9999.000FF\" to \":0171+1000.000FF\". " + kLost},
        {":0171", "Comm Error",
         kNoReading + ' ' + kLongFrame + " Only 5 of 17 characters of the answer arrived. " + kLost},
    };
    box("Text2").setText("1000");
    for (const auto& row : rows) {
        answerWith({":0171+0.00000FF\r\n", "", row.echo});
        EXPECT_EQ(press("Command4"), QStringList(row.message));
        EXPECT_EQ(status(), row.status);
    }
}

TEST_F(Form52ByHand, PortThatVanishesInAnyStepIsTheReason)
{
    for (const std::size_t step : {1U, 2U, 3U}) {
        mscomm1.setPortOpen(true);
        frames.clear();
        answerWith({":0171+0.00000FF\r\n", ":012101+2.50000+1.0000000FF\r\n", ":0171-2.50000FF\r\n"});
        onFrame = [this, step] {
            if (frames.size() == step) device->vanish();
        };
        EXPECT_EQ(press("Command4"), QStringList("Comm Error")) << step;
        EXPECT_TRUE(status().contains("by hand is gone (pulled).")) << qPrintable(status());
        EXPECT_EQ(status().contains(kLost), step > 1) << qPrintable(status());
        EXPECT_EQ(status().contains(kMayBeLost), step == 1) << qPrintable(status());
    }
}

TEST_F(Form52ByHand, WindowShowsThatItWaits)
{
    open(link::TypeA);
    QStringList seen;
    clock.onEvents = [&] {
        if (!status().isEmpty() && !seen.contains(status())) seen << status();
    };
    answerWith({":0171+0.00000FF\r\n", ":012101+2.50000+1.0000000FF\r\n", ":0171-2.50000FF\r\n"});
    press("Command4");
    EXPECT_EQ(seen, QStringList("Waiting 2 seconds for the readout to settle ..."));
    EXPECT_EQ(status(), "");
}

} // namespace
} // namespace quorvel::test
