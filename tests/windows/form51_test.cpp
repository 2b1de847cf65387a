#include "settings/form51.h"
#include "windows/settings_on_the_bus.h"

namespace quorvel::test {
namespace {

/// The controls of one direction, and what they lead to.
struct DirectionCase {
    const char* name;
    const char* box;
    const char* query;
    const char* set;
    const char* setFrame;
    const char* queryFrame;
    const char* queryText;
};

const DirectionCase kDirectionCases[] = {
    {"X", "Text2", "Command3", "Command4", ":0C71+1.50000FF", ":0C72FF",
     "The reference of X-Direction is +1.50000!\n"},
    {"Y", "Text3", "Command5", "Command6", ":0C73+1.50000FF", ":0C74FF",
     "The offset of Y-Direction is +1.50000!\n"},
    {"Z", "Text4", "Command7", "Command8", ":0C7805+1.50000FF", ":0C7806FF",
     "The offset of Z-Direction is +1.50000!\n"},
};

class Form51OnTheBus : public SettingsOnTheBus<Form51> {
protected:
    Form51OnTheBus()
    {
        bench.currentAddress = "12";
        open(link::TypeC);
    }
};

class Form51Direction : public Form51OnTheBus, public ::testing::WithParamInterface<DirectionCase> {};

TEST_P(Form51Direction, SetReachesTheReadoutAndQueryReadsItBack)
{
    const auto& row = GetParam();
    box(row.box).setText("1.5");
    EXPECT_EQ(press(row.set), QStringList("Set OK!"));
    EXPECT_EQ(state("offsets", 12).value(row.name).toString(), "+1.50000");
    box(row.box).clear();
    EXPECT_EQ(press(row.query), QStringList(row.queryText));
    EXPECT_EQ(box(row.box).text(), "+1.50000");
    EXPECT_EQ(bus.frames(), QStringList({row.setFrame, row.queryFrame}));
}

TEST_P(Form51Direction, EchoThatDiffersIsSaid)
{
    bus.fault("echo@7");
    EXPECT_EQ(press(GetParam().set), QStringList("Set Failed!"));
    EXPECT_TRUE(status().startsWith("The readout answered ")) << qPrintable(status());
}

TEST_P(Form51Direction, LateCharactersAreDrainedBeforeSetAndQuery)
{
    const auto& row = GetParam();
    bus.fault("long=5@7");
    press(row.query);
    EXPECT_EQ(press(row.set), QStringList("Set OK!"));
    EXPECT_EQ(press(row.query).size(), 1);
    EXPECT_EQ(box(row.box).text(), "+0.00000");
}

// The bus knows no full-width digits, so such a text does not begin with a number.
TEST_P(Form51Direction, FullWidthDigitsAreSentAsZero)
{
    const auto& row = GetParam();
    box(row.box).setText(QStringLiteral("１.５"));
    EXPECT_EQ(press(row.set), QStringList("Set OK!"));
    EXPECT_EQ(bus.frames(), QStringList(QString(row.setFrame).replace("+1.50000", "+0.00000")));
}

INSTANTIATE_TEST_SUITE_P(All, Form51Direction, ::testing::ValuesIn(kDirectionCases),
                         [](const auto& instance) { return instance.param.name; });

TEST_F(Form51OnTheBus, StartsWithItsInstruction)
{
    EXPECT_EQ(form->windowTitle(), "Offset Setting");
    EXPECT_EQ(
        child<QLabel>(*form, "Label5")->text(),
        "Input the offset into the blank. The reading of readout will be the summation of the offset and "
        "the real place of wire.");
    EXPECT_EQ(list("Combo1").currentText(), "True");
    for (const auto& row : kDirectionCases)
        EXPECT_EQ(box(row.box).text(), "");
}

TEST_F(Form51OnTheBus, RowsFollowTheInstrumentType)
{
    struct {
        link::InstrumentType type;
        bool y, z;
    } const rows[] = {{link::TypeA, true, false},
                      {link::TypeB, true, false},
                      {link::TypeC, true, true},
                      {link::TypeD, false, false}};
    for (const auto& row : rows) {
        open(row.type);
        EXPECT_TRUE(shows("Text2"));
        EXPECT_TRUE(shows("Combo1"));
        EXPECT_EQ(shows("Frame2"), row.y) << row.type;
        EXPECT_EQ(shows("Text3"), row.y) << row.type;
        EXPECT_EQ(shows("Frame1"), row.z) << row.type;
        EXPECT_EQ(shows("Text4"), row.z) << row.type;
    }
}

TEST_F(Form51OnTheBus, AnyTextIsSent)
{
    for (const auto* text : {"", "abc", "0"}) {
        box("Text2").setText(text);
        EXPECT_EQ(press("Command4"), QStringList("Set OK!"));
        EXPECT_EQ(bus.frames(), QStringList(":0C71+0.00000FF")) << text;
    }
}

TEST_F(Form51OnTheBus, LongOffsetIsSentAndWarnedOf)
{
    box("Text2").setText("1000");
    press("Command4");
    EXPECT_EQ(bus.frames(), QStringList(":0C71+1000.000FF"));
    EXPECT_EQ(status(), kLongFrame + " The readout did not answer.");
}

TEST_F(Form51OnTheBus, FeatureIsSetAndQueried)
{
    EXPECT_EQ(press("Command2"), QStringList("Set OK!"));
    EXPECT_TRUE(bus.state(12).value("reference").toBool());
    EXPECT_EQ(press("Command1"), QStringList("Use Reference to Correct!"));

    list("Combo1").setCurrentIndex(1);
    EXPECT_EQ(press("Command2"), QStringList("Set OK!"));
    list("Combo1").setCurrentIndex(0);
    EXPECT_EQ(press("Command1"), QStringList("Not Use Reference to Correct!"));
    EXPECT_EQ(list("Combo1").currentText(), "False");
    EXPECT_EQ(bus.frames(), QStringList({":0C7501FF", ":0C76FF", ":0C7500FF", ":0C76FF"}));
}

TEST_F(Form51OnTheBus, AnotherFlagThanZeroIsUse)
{
    list("Combo1").setCurrentIndex(1);
    bus.fault("badnumber@76");
    EXPECT_EQ(press("Command1"), QStringList("Use Reference to Correct!"));
    EXPECT_EQ(list("Combo1").currentText(), "True");
}

TEST_F(Form51OnTheBus, EchoOfTheFeatureCountsUpToItsSeventhCharacter)
{
    bus.command("reply 12 75 :0C7501~~");
    EXPECT_EQ(press("Command2"), QStringList("Set OK!"));
    bus.command("reply 12 75 :0C7502FF");
    EXPECT_EQ(press("Command2"), QStringList("Set Failed!"));
}

TEST_F(Form51OnTheBus, EchoOfTheFeatureThatDiffersIsSaid)
{
    bus.fault("echo@75");
    EXPECT_EQ(press("Command2"), QStringList("Set Failed!"));
}

/// A button, and the length of the reply that it awaits.
struct ButtonCase {
    const char* button;
    const char* command;
    int replyLength;
};

const ButtonCase kButtons[] = {{"Command1", "76", 11},   {"Command2", "75", 11},  {"Command3", "72", 17},
                               {"Command4", "71", 17},   {"Command5", "74", 17},  {"Command6", "73", 17},
                               {"Command7", "7806", 19}, {"Command8", "7805", 19}};

class Form51Button : public Form51OnTheBus, public ::testing::WithParamInterface<ButtonCase> {
protected:
    /// A press whose answer is incomplete. Only the query of the feature does not enable itself.
    void pressInVain(const QString& fault)
    {
        const bool isFeatureQuery = GetParam().button == std::string("Command1");
        bus.clearFaults();
        bus.fault(fault + '@' + GetParam().command);
        button("Command1").setEnabled(isFeatureQuery);
        EXPECT_EQ(press(GetParam().button), QStringList("Comm Error"));
        EXPECT_TRUE(button("Command1").isEnabled());
    }
};

TEST_P(Form51Button, IncompleteReplyIsACommErrorAndChangesNoEntry)
{
    list("Combo1").setCurrentIndex(1);
    for (const auto& row : kDirectionCases)
        box(row.box).setText("7");
    pressInVain("silent");
    EXPECT_EQ(status(), "The readout did not answer.");
    pressInVain("short");
    EXPECT_EQ(status(), QString("Only %1 of %2 characters of the answer arrived.")
                            .arg(GetParam().replyLength - 1)
                            .arg(GetParam().replyLength));
    for (const auto& row : kDirectionCases)
        EXPECT_EQ(box(row.box).text(), "7");
    EXPECT_EQ(list("Combo1").currentText(), "False");
}

INSTANTIATE_TEST_SUITE_P(All, Form51Button, ::testing::ValuesIn(kButtons),
                         [](const auto& instance) { return instance.param.button; });

} // namespace
} // namespace quorvel::test
