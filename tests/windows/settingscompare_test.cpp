#include "settings/settingscompare.h"

#include "protocol/reset.h"
#include "support/bench_by_hand.h"
#include "windows/settings_on_the_bus.h"

#include <QFile>
#include <QJsonDocument>

#include <gtest/gtest.h>

namespace quorvel {
namespace {

using test::child;

/// The window's controls, on either bench.
template<class Base>
class CompareWindow : public Base {
protected:
    QAbstractItemModel& table() { return *child<QTableView>(*this->form, "SettingsTable")->model(); }
    int rowOf(const QString& title)
    {
        const auto found = table().match(table().index(0, 0), Qt::DisplayRole, title, 1, Qt::MatchExactly);
        EXPECT_FALSE(found.isEmpty()) << "no row " << qPrintable(title);
        return found.isEmpty() ? 0 : found.first().row();
    }
    QString cell(const QString& title, int column)
    {
        return table().index(rowOf(title), column).data().toString();
    }
    void choose(const QString& title)
    {
        EXPECT_TRUE(table().setData(table().index(rowOf(title), 0), Qt::Checked, Qt::CheckStateRole));
    }
    QString path() { return fileFolder.filePath("a.json"); }
    void write(const QByteArray& text)
    {
        QFile file(path());
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        file.write(text);
    }
    QStringList openFile()
    {
        this->messages.files = {path()};
        return this->press("SettingsOpen");
    }
    QStringList openFile(const QByteArray& text)
    {
        write(text);
        return openFile();
    }

    QTemporaryDir fileFolder;
};

class SettingsCompareOnTheBus : public CompareWindow<test::SettingsOnTheBus<SettingsCompare>> {
protected:
    void openAt(int address, link::InstrumentType type)
    {
        bench.currentAddress = QString::number(address);
        open(type);
    }
};

class BusOfAllTypes : public test::BenchOnTheBus {
protected:
    BusOfAllTypes()
        : BenchOnTheBus({"--fast", "--seed", "1", "--readout", "5:A", "--readout", "12:B", "--readout",
                         "33:C", "--readout", "100:D"})
    {}
};

struct TypeCase {
    int address;
    link::InstrumentType type;
    int changed; ///< settings that a reset changes
};

class SettingsOfEachType : public CompareWindow<test::SettingsWindow<SettingsCompare, BusOfAllTypes>>,
                           public testing::WithParamInterface<TypeCase> {
protected:
    /// What the readout holds, but for what goes on by itself and what a reset deletes for good.
    QJsonObject held()
    {
        auto state = bus.state(GetParam().address);
        for (const auto* part : {"clock", "ring", "place", "reading"}) {
            state.remove(part);
        }
        return state;
    }
};

TEST_P(SettingsOfEachType, SavedAndResetComeBackFromTheWindow)
{
    const auto [address, type, changed] = GetParam();
    for (const auto* value : {"diameter 25", "error 9", "selfcalibration off", "reference on",
                              "offsetx +1.00000", "offsety -12.5000", "offsetz +100.000", "invertx on",
                              "inverty on", "invertz on", "swap on", "interval 0 5 0", "stitching 0512"})
        bus.command(QStringLiteral("set %1 %2").arg(address).arg(value));
    const auto before = held();
    bench.currentAddress = QString::number(address);
    open(type);
    press("SettingsRead");
    messages.files = {path()};
    press("SettingsSave");
    ASSERT_TRUE(protocol::runReset(module1, bench, [](const std::string&) {}).ok);
    ASSERT_NE(held(), before);

    open(type);
    press("SettingsRead");
    EXPECT_TRUE(openFile().isEmpty());
    press("SettingsChooseDiffering");
    EXPECT_TRUE(press("SettingsSend").isEmpty()) << "the readout it was saved from: no question";
    EXPECT_EQ(status(), QStringLiteral("Set and verified: %1 of %1.").arg(changed));
    EXPECT_EQ(held(), before);
}

INSTANTIATE_TEST_SUITE_P(Types, SettingsOfEachType,
                         testing::Values(TypeCase{5, link::TypeA, 8}, TypeCase{12, link::TypeB, 8},
                                         TypeCase{33, link::TypeC, 10}, TypeCase{100, link::TypeD, 5}),
                         [](const auto& row) { return "At" + std::to_string(row.param.address); });

TEST_F(SettingsCompareOnTheBus, ReadsAllSettingsAndSavesThem)
{
    bus.command("set 5 offsetx +1.50000");
    openAt(5, link::TypeA);
    press("SettingsRead");
    EXPECT_EQ(cell("Offset X", 1), "+1.50000");
    EXPECT_EQ(cell("Wire", 1), "1.5 mm, error 0.3 mm, self-calibration on");
    EXPECT_EQ(status(), "Settings read from readout 5, type A: 9 of 9.");
    messages.files = {path()};
    EXPECT_TRUE(press("SettingsSave").isEmpty());
    QFile file(path());
    ASSERT_TRUE(file.open(QIODevice::ReadOnly));
    const auto object = QJsonDocument::fromJson(file.readAll()).object();
    EXPECT_EQ(object.value("version"), QJsonValue(1));
    EXPECT_EQ(object.value("address"), QJsonValue(5));
    EXPECT_EQ(object.value("settings").toObject().size(), 9);
}

TEST_F(SettingsCompareOnTheBus, ValuesOfAnotherReadoutAreSentWhenTheOperatorAgrees)
{
    bus.command("set 12 offsety +3.00000");
    bus.command("set 12 offsetz +4.00000");
    openAt(5, link::TypeA);
    box("SettingsOtherAddress").setText("12");
    list("SettingsOtherType").setCurrentText("C");
    press("SettingsRead");
    press("SettingsReadOther");
    EXPECT_EQ(cell("Offset Y", 4), "Other readout differs.");
    list("SettingsSource").setCurrentIndex(1);
    EXPECT_EQ(cell("Offset Z", 4), "Cannot be set: a readout of type A has no such setting.");
    press("SettingsChooseDiffering");
    const auto question =
        QStringList("The values are of readout 12, type C. Send 1 of them to readout 5, type A?");
    EXPECT_EQ(press("SettingsSend"), question);
    EXPECT_EQ(state("offsets").value("Y"), QJsonValue("+0.00000"));
    messages.answers = {true};
    EXPECT_EQ(press("SettingsSend"), question);
    EXPECT_EQ(state("offsets").value("Y"), QJsonValue("+3.00000"));
    EXPECT_EQ(cell("Offset Y", 5), "+0.00000");
    EXPECT_EQ(cell("Offset Y", 6), "+3.00000");
    EXPECT_EQ(cell("Offset Y", 7), "+3.00000");
    EXPECT_EQ(status(), "Set and verified: 1 of 1.");
}

TEST_F(SettingsCompareOnTheBus, AFileOfAnotherReadoutAsksFirst)
{
    openAt(5, link::TypeA);
    EXPECT_TRUE(openFile(R"({"format":"quorvel-settings","address":12,"type":"B","settings":{"swap":true}})")
                    .isEmpty());
    choose("Swap of X and Y");
    EXPECT_EQ(press("SettingsSend"),
              QStringList("The values are of readout 12, type B. Send 1 of them to readout 5, type A?"));
    EXPECT_TRUE(bus.frames().isEmpty());
}

TEST_F(SettingsCompareOnTheBus, AFileOfAnotherVersionIsRefused)
{
    openAt(5, link::TypeA);
    EXPECT_EQ(openFile(R"({"format":"quorvel-settings","version":2,"settings":{"swap":true}})"),
              QStringList(path() +
                          " is not a settings file: its version is 2, this program reads version 1; use the "
                          "program that wrote it."));
    EXPECT_EQ(cell("Swap of X and Y", 2), "");
}

TEST_F(SettingsCompareOnTheBus, AnAnswerThatFailsLeavesItsCellWithTheReasonAndTheRestIsRead)
{
    bus.fault("garbled@72");
    bus.fault("silent@7702");
    openAt(5, link::TypeA);
    press("SettingsRead");
    EXPECT_TRUE(cell("Offset X", 1).startsWith("The readout answered ")) << qPrintable(cell("Offset X", 1));
    EXPECT_EQ(cell("Swap of X and Y", 1), "The readout did not answer.");
    EXPECT_EQ(cell("Offset Y", 1), "+0.00000");
    EXPECT_EQ(status(), "Settings read from readout 5, type A: 7 of 9.");
    press("SettingsSave");
    EXPECT_EQ(
        status(),
        "Nothing was saved. Not read from the readout: Offset X, Swap of X and Y. Press \"Read\" first.");
}

TEST_F(SettingsCompareOnTheBus, ASilentReadoutIsGivenUpAtOnce)
{
    openAt(77, link::TypeA);
    press("SettingsRead");
    EXPECT_EQ(bus.frames().size(), 1);
    EXPECT_EQ(cell("Wire", 1), "The readout did not answer.");
    EXPECT_EQ(cell("Offset X", 1), "Not asked.");
    EXPECT_EQ(status(), "The readout did not answer. Settings read from readout 77, type A: 0 of 9.");
}

TEST_F(SettingsCompareOnTheBus, AReadoutThatKeepsAnotherValueIsReported)
{
    openAt(5, link::TypeA);
    openFile(R"({"format":"quorvel-settings","settings":{"offsetX":"+1.00000","swap":true}})");
    bus.command("reply 5 72 :0572+2.00000FF");
    bus.fault("echo@7701");
    choose("Offset X");
    choose("Swap of X and Y");
    press("SettingsSend");
    EXPECT_EQ(cell("Offset X", 7), "+2.00000 - not what was sent");
    EXPECT_TRUE(cell("Swap of X and Y", 6).startsWith("The readout answered "))
        << qPrintable(cell("Swap of X and Y", 6));
    EXPECT_EQ(cell("Swap of X and Y", 7), "on") << "asked again although it did not confirm";
    EXPECT_EQ(status(), "Set and verified: 0 of 2.");
}

TEST_F(SettingsCompareOnTheBus, ReadOnlyRefusesTheFirstAndSendsNoOther)
{
    openAt(5, link::TypeA);
    openFile(R"({"format":"quorvel-settings","settings":{"offsetX":"+1.00000","swap":true}})");
    module1.setReadOnly(true);
    choose("Offset X");
    choose("Swap of X and Y");
    press("SettingsSend");
    EXPECT_EQ(cell("Offset X", 6), "Read Only is on: nothing was sent.");
    EXPECT_EQ(cell("Offset X", 7), "");
    EXPECT_EQ(cell("Swap of X and Y", 6), "Not sent.");
    EXPECT_EQ(bus.frames(), QStringList(":0572FF"));
}

TEST_F(SettingsCompareOnTheBus, APulledAdapterEndsTheReading)
{
    bus.fault("hangup@72");
    openAt(5, link::TypeA);
    press("SettingsRead");
    EXPECT_EQ(cell("Wire", 1), "1.5 mm, error 0.3 mm, self-calibration on");
    EXPECT_EQ(cell("Offset Y", 1), "Not asked.");
    EXPECT_TRUE(status().contains(" is gone (")) << qPrintable(status());
    EXPECT_EQ(press("SettingsRead"), QStringList("CommPort not Opened"));
}

TEST_F(SettingsCompareOnTheBus, AddressesThatNameNoReadoutAreNotAsked)
{
    openAt(5, link::TypeA);
    for (const auto* address : {"", "0", "250", "255", "1x", "-1"}) {
        box("SettingsAddress").setText(address);
        press("SettingsRead");
        EXPECT_TRUE(status().endsWith("Nothing was sent: give the address of a readout, 1 to 249."))
            << address;
    }
    EXPECT_TRUE(bus.frames().isEmpty());
}

class SettingsCompareByHand : public CompareWindow<test::SettingsWindow<SettingsCompare, test::BenchByHand>> {
};

TEST_F(SettingsCompareByHand, StopEndsAfterTheExchangeThatRuns)
{
    open();
    answerWith({":01681503010000FF\r\n", ":0172+0.00000FF\r\n"});
    onFrame = [this] {
        if (frames.size() == 2) button("SettingsStop").click();
    };
    press("SettingsRead");
    EXPECT_EQ(frames.size(), 2U);
    EXPECT_EQ(cell("Offset X", 1), "+0.00000");
    EXPECT_EQ(cell("Offset Y", 1), "Not asked.");
    EXPECT_EQ(status(), "Stopped. Settings read from readout 1, type A: 2 of 9.");
    EXPECT_FALSE(button("SettingsStop").isEnabled());
}

TEST_F(SettingsCompareByHand, ShowsHowFarItIsAndHowLongItTakes)
{
    open();
    answerWith({":01681503010000FF\r\n", ":0172+0.00000FF\r\n"});
    QStringList formats;
    onFrame = [&] { formats << child<QProgressBar>(*form, "SettingsProgress")->format(); };
    press("SettingsRead");
    ASSERT_GE(formats.size(), 3);
    EXPECT_EQ(formats[0], "%v of %m");
    EXPECT_EQ(formats[2], "%v of %m, about 1 s left");
}

TEST_F(SettingsCompareByHand, TheOldValueIsReadBeforeTheNewOneIsSent)
{
    open();
    openFile(R"({"format":"quorvel-settings","settings":{"offsetX":"+1.00000","offsetY":"+1.00000"}})");
    choose("Offset X");
    choose("Offset Y");
    answerWith({":0172+0.50000FF\r\n", ":0171+1.00000FF\r\n", ":0172+1.00000FF\r\n", ""});
    press("SettingsSend");
    EXPECT_EQ(frames, (std::vector<std::string>{":0172FF", ":0171+1.00000FF", ":0172FF", ":0174FF"}))
        << "a readout that does not tell is not written to";
    EXPECT_EQ(cell("Offset Y", 5), "The readout did not answer.");
    EXPECT_EQ(cell("Offset Y", 6), "Not sent.");
}

TEST_F(SettingsCompareByHand, SaysThatCalibrationTablesAreMissing)
{
    open();
    EXPECT_TRUE(child<QLabel>(*form, "SettingsNote")->text().startsWith("Calibration tables are not among"));
}

TEST_F(SettingsCompareByHand, NothingChosenSendsNothing)
{
    open();
    press("SettingsSend");
    EXPECT_EQ(status(), "Nothing was sent: choose the settings first.");
    EXPECT_TRUE(frames.empty());
}

} // namespace
} // namespace quorvel
