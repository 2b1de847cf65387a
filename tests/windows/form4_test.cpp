#include "settings/form4.h"
#include "windows/settings_on_the_bus.h"

namespace quorvel::test {
namespace {

struct SwitchCase {
    const char* name; ///< of its state in the simulated readout
    const char* caption;
    const char* list;
    const char* query;
    const char* set;
    const char* queryFrame;
    const char* setOn;
    const char* setOff;
    const char* offText;
    const char* onText;
};

const SwitchCase kSwitches[] = {
    {"invertX", "X Direction", "Combo1", "Command1", "Command2", ":057704FF", ":05770301FF", ":05770300FF",
     "X direction invert function closed!", "X direction invert function opened!"},
    {"invertY", "Y Direction", "Combo2", "Command1", "Command2", ":057706FF", ":05770501FF", ":05770500FF",
     "Y direction invert function closed!", "Z direction invert function opened!"},
    {"invertZ", "Z Direction", "Combo3", "Command1", "Command2", ":057708FF", ":05770701FF", ":05770700FF",
     "Z direction invert function closed!", "Z direction invert function opened!"},
    {"swap", "Swap X and Y", "Combo4", "Command3", "Command4", ":057702FF", ":05770101FF", ":05770100FF",
     "X and Y isn't swaped!", "X and Y has swaped!"},
};

class Form4OnTheBus : public SettingsOnTheBus<Form4>, public ::testing::WithParamInterface<SwitchCase> {
protected:
    Form4OnTheBus() { open(); }

    QPushButton& inFrame(const char* name)
    {
        for (auto* frame : form->findChildren<QGroupBox*>())
            if (frame->title() == GetParam().caption) return *child<QPushButton>(*frame, name);
        ADD_FAILURE() << "no frame " << GetParam().caption;
        std::abort();
    }
    QPushButton& query() { return inFrame(GetParam().query); }
    QPushButton& set() { return inFrame(GetParam().set); }
    QComboBox& switchList() { return list(GetParam().list); }
};

TEST_P(Form4OnTheBus, StartsWithFalseAndAsksNothing)
{
    bus.command(QString("set 5 %1 on").arg(QString(GetParam().name).toLower()));
    open();
    EXPECT_EQ(form->windowTitle(), "Invert and Swap");
    EXPECT_EQ(switchList().currentText(), "False");
    EXPECT_EQ(switchList().itemText(0), "True");
    EXPECT_EQ(switchList().count(), 2);
    EXPECT_TRUE(bus.frames().isEmpty());
}

TEST_P(Form4OnTheBus, SetReachesTheReadoutAndQueryReadsItBack)
{
    const auto& row = GetParam();
    switchList().setCurrentIndex(0);
    EXPECT_EQ(press(set()), QStringList("Set OK!"));
    EXPECT_TRUE(state("switches").value(row.name).toBool());
    switchList().setCurrentIndex(1);
    EXPECT_EQ(press(query()), QStringList(row.onText));
    EXPECT_EQ(switchList().currentText(), "True");
    switchList().setCurrentIndex(1);
    EXPECT_EQ(press(set()), QStringList("Set OK!"));
    switchList().setCurrentIndex(0);
    EXPECT_EQ(press(query()), QStringList(row.offText));
    EXPECT_EQ(switchList().currentText(), "False");
    EXPECT_EQ(bus.frames(), QStringList({row.setOn, row.queryFrame, row.setOff, row.queryFrame}));
}

TEST_P(Form4OnTheBus, EchoThatDiffersIsSilent)
{
    bus.fault("echo@77");
    switchList().setCurrentIndex(0);
    EXPECT_TRUE(press(set()).isEmpty());
    EXPECT_TRUE(status().startsWith("The readout answered ")) << qPrintable(status());
}

TEST_P(Form4OnTheBus, StateThatIsNoneIsSilentAndChangesNothing)
{
    bus.fault("badnumber@77");
    switchList().setCurrentIndex(0);
    EXPECT_TRUE(press(query()).isEmpty());
    EXPECT_EQ(switchList().currentText(), "True");
}

TEST_P(Form4OnTheBus, SilenceAndShortAnswersAreCommErrors)
{
    switchList().setCurrentIndex(0);
    for (auto* pressed : {&query(), &set()}) {
        bus.clearFaults();
        bus.fault("silent@77");
        EXPECT_EQ(press(*pressed), QStringList("Comm Error"));
        EXPECT_EQ(status(), "The readout did not answer.");
        bus.clearFaults();
        bus.fault("short@77");
        EXPECT_EQ(press(*pressed), QStringList("Comm Error"));
        EXPECT_EQ(status(), "Only 12 of 13 characters of the answer arrived.");
    }
    EXPECT_EQ(switchList().currentText(), "True");
}

TEST_P(Form4OnTheBus, LateCharactersAreDrainedBeforeQueryAndSet)
{
    bus.fault("long=5@77");
    EXPECT_EQ(press(query()), QStringList(GetParam().offText));
    EXPECT_EQ(press(set()), QStringList("Set OK!"));
    EXPECT_EQ(press(query()), QStringList(GetParam().offText));
}

TEST_P(Form4OnTheBus, NoSelectionSendsOff)
{
    switchList().setCurrentIndex(-1);
    press(set());
    EXPECT_EQ(bus.frames(), QStringList(GetParam().setOff));
}

TEST_P(Form4OnTheBus, AnotherAddressInAReplyDoesNotMatterToAQueryAndSilencesASet)
{
    const auto& row = GetParam();
    const QString queried(row.queryFrame);
    bus.command("reply 5 " + queried.mid(3, 4) + " :0C" + queried.mid(3, 4) + "01FF");
    EXPECT_EQ(press(query()), QStringList(row.onText));
    EXPECT_EQ(switchList().currentText(), "True");
    EXPECT_TRUE(status().startsWith("The readout answered \":0C")) << qPrintable(status());

    const QString set_(row.setOn);
    bus.command("reply 5 " + set_.mid(3, 4) + " :0C" + set_.mid(3));
    EXPECT_EQ(press(set()), QStringList());
    EXPECT_TRUE(status().startsWith("The readout answered \":0C")) << qPrintable(status());
}

INSTANTIATE_TEST_SUITE_P(All, Form4OnTheBus, ::testing::ValuesIn(kSwitches),
                         [](const auto& instance) { return instance.param.name; });

class Form4OfAllTypes : public SettingsOnTheBus<Form4> {};

TEST_F(Form4OfAllTypes, EveryTypeKeepsAllFourRows)
{
    for (const auto type : {link::TypeA, link::TypeB, link::TypeC, link::TypeD}) {
        open(type);
        for (const auto& row : kSwitches) {
            EXPECT_TRUE(shows(row.list)) << type;
            EXPECT_TRUE(list(row.list).isEnabled()) << type;
        }
    }
}

} // namespace
} // namespace quorvel::test
