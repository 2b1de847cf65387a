#include "autoread/exported.h"
#include "windows/setauto_on_the_bus.h"

#include <QFile>

#include <gmock/gmock.h>

namespace quorvel::test {

namespace {

TEST_F(SetAutoOnTheBus, DownloadsFiveRecords)
{
    download("a.mdb");
    EXPECT_EQ(messages.shown, QStringList());
    EXPECT_EQ(bus.frames(), QStringList({":0522FF", ":05240010FF", ":05240011FF", ":05240012FF",
                                         ":05240013FF", ":05240014FF"}));
    EXPECT_TRUE(controls.Label3().isVisible());
    EXPECT_EQ(controls.Label3().text(), "Total 5 records. 5 records have been received.");
    EXPECT_EQ(controls.progress().value(), 5);
    EXPECT_EQ(controls.progress().maximum(), 5);
    EXPECT_EQ(rowsIn(exported(path("a.mdb"))), 5);
    EXPECT_EQ(controls.status(),
              "All 5 records that readout 5 held when it was last asked have been downloaded.");
}

TEST_F(SetAutoOnTheBus, DownloadsOneRecord)
{
    bus.command("set 5 ring 1000,0,1");
    download("a.mdb");
    EXPECT_EQ(messages.shown, QStringList());
    EXPECT_EQ(bus.frames(), QStringList({":0522FF", ":05240000FF"}));
    EXPECT_EQ(controls.Label3().text(), "Total 1 records. 1 records have been received.");
    EXPECT_EQ(rowsIn(exported(path("a.mdb"))), 1);
}

TEST_F(SetAutoOnTheBus, RowsHoldWhatTheReadoutSent)
{
    bus.command("set 5 ring 1000,0,1");
    bus.command("reply 5 24 :05240000240229235959+012.500-001.250FF");
    download("a.mdb");
    download("a.csv");
    EXPECT_EQ(exported(path("a.mdb")), "time,x,y\n2024-02-29T23:59:59,12.5,-1.25\n");
    EXPECT_EQ(contents(path("a.csv")), "time,x,y\n2024-02-29T23:59:59,12.5,-1.25\n");
}

TEST_F(SetAutoOnTheBus, CsvHasTheFewestDigitsOfSinglePrecision)
{
    bus.command("set 5 ring 1000,0,1");
    bus.command("reply 5 24 :05240000240229235959+021.294-000.001FF");
    download("a.csv");
    EXPECT_EQ(contents(path("a.csv")), "time,x,y\n2024-02-29T23:59:59,21.294,-0.001\n");
}

TEST_F(SetAutoOnTheBus, ThreeDirectionsHaveTwoMoreFields)
{
    bench.instrumentType = link::TypeC;
    controls.Text1().setText("12");
    download("c.mdb");
    EXPECT_EQ(bus.frames(), QStringList({":0C22FF", ":0C240002FF", ":0C240000FF", ":0C240001FF"}));
    EXPECT_EQ(controls.Label3().text(), "Total 3 records. 3 records have been received.");
    const auto table = exported(path("c.mdb"));
    EXPECT_THAT(table, ::testing::StartsWith("time,x,y,z1,z2\n"));
    EXPECT_EQ(rowsIn(table), 3);
}

TEST_F(SetAutoOnTheBus, FileDialogOffersDatabases)
{
    controls.press("Command2");
    EXPECT_EQ(messages.lastChoice.filter, "Database file(*.mdb)");
    EXPECT_FALSE(messages.lastChoice.toSave);
    EXPECT_EQ(messages.shown, QStringList());
    EXPECT_EQ(bus.frames(), QStringList(":0522FF"));
}

TEST_F(SetAutoOnTheBus, EmptyRingIsNoData)
{
    bus.command("set 5 ring 1000,5,5");
    download("a.mdb");
    EXPECT_EQ(messages.shown, QStringList("No Data"));
    EXPECT_EQ(messages.files.size(), 1U) << "the file dialog was shown";
    EXPECT_FALSE(QFile::exists(file("a.mdb")));
}

TEST_F(SetAutoOnTheBus, SilentReadoutIsACommErrorAndThenNoData)
{
    bus.fault("silent@5/22");
    download("a.mdb");
    EXPECT_EQ(messages.shown, QStringList({"Comm Error", "No Data"}));
    EXPECT_FALSE(QFile::exists(file("a.mdb")));
}

TEST_F(SetAutoOnTheBus, ShortCountGoesOnWithWhatArrived)
{
    bus.fault("short=17@5/22");
    download("a.mdb");
    EXPECT_EQ(messages.shown, QStringList("Comm Error"));
    EXPECT_EQ(controls.Label3().text(), "Total 5 records. 5 records have been received.");
}

TEST_F(SetAutoOnTheBus, PointersThatLeadNowhereMakeNoFile)
{
    for (const auto* reply : {":0522000000050007FF", ":05229E9900050003FF"}) {
        bus.command(QStringLiteral("reply 5 22 ") + reply);
        download("a.mdb");
        EXPECT_THAT(lastMessage().toStdString(), ::testing::StartsWith("The readout reports "));
    }
    EXPECT_EQ(messages.files.size(), 2U) << "the file dialog was shown";
    EXPECT_FALSE(QFile::exists(file("a.mdb")));
    EXPECT_EQ(bus.frames(), QStringList({":0522FF", ":0522FF"}));
}

constexpr auto kUnknown = "The records stored in readout 5 have not been downloaded in this window.";
constexpr auto kUnreadable = "\nThe answer to the query for stored records could not be read: ";

TEST_F(SetAutoOnTheBus, UnreadableCountIsPointedOutBesideNoData)
{
    bus.command("reply 5 22 :0522ABCDEFGHIJKLFF");
    download("a.mdb");
    EXPECT_EQ(messages.shown, QStringList("No Data"));
    EXPECT_EQ(controls.status(), QString(kUnknown) + kUnreadable + ":0522ABCDEFGHIJKLFF\\x0D\\x0A");
    controls.Text1().setText("12");
    EXPECT_EQ(controls.status(), "The records stored in readout 12 have not been downloaded in this window.");
}

TEST_F(SetAutoOnTheBus, UnreadableCountThatGoesOnIsPointedOutBesideTheDownload)
{
    QString meanwhile;
    messages.onShow = [&](const QString&) { meanwhile = controls.status(); };
    bus.command("reply 5 22 :0522 999 010 012FF");
    bus.fault("silent@5/24:1+1");
    download("a.mdb");
    const auto remark = QString(kUnreadable) + ":0522 999 010 012FF\\x0D\\x0A";
    EXPECT_EQ(messages.shown, QStringList("1 records have been received, Comm Error"));
    EXPECT_EQ(meanwhile, kUnknown + remark);
    EXPECT_EQ(controls.status(), kUnknown + remark);
    bus.command("reply 5 22");
    download("b.mdb");
    EXPECT_EQ(controls.status(),
              "All 5 records that readout 5 held when it was last asked have been downloaded.");
}

TEST_F(SetAutoOnTheBus, RingThatCannotBeFetchedIsReadable)
{
    for (const auto* reply : {":0522000000000000FF", ":0522000000050007FF"}) {
        bus.command(QStringLiteral("reply 5 22 ") + reply);
        controls.press("Command2");
        EXPECT_EQ(controls.status(), kUnknown) << reply;
    }
}

TEST_F(SetAutoOnTheBus, ClosedPortIsSaid)
{
    mscomm1.setPortOpen(false);
    download("a.mdb");
    EXPECT_EQ(messages.shown, QStringList("CommPort not Opened"));
}

class ExistingFile : public SetAutoOnTheBus {
protected:
    ExistingFile()
    {
        QFile old(file("a.mdb"));
        EXPECT_TRUE(old.open(QIODevice::WriteOnly) && old.write("old") == 3);
    }
};

TEST_F(ExistingFile, IsKeptOnNo)
{
    download("a.mdb");
    EXPECT_EQ(messages.shown, QStringList("File already exists, overwrite this file?"));
    EXPECT_EQ(contents(path("a.mdb")), "old");
    EXPECT_EQ(bus.frames(), QStringList(":0522FF"));
}

TEST_F(ExistingFile, IsReplacedOnYes)
{
    messages.answers = {true};
    download("a.mdb");
    EXPECT_EQ(messages.shown, QStringList("File already exists, overwrite this file?"));
    EXPECT_EQ(rowsIn(exported(path("a.mdb"))), 5);
}

TEST_F(SetAutoOnTheBus, FolderThatIsMissingIsSaidAndNothingFetched)
{
    download("missing/a.mdb");
    ASSERT_EQ(messages.shown.size(), 1);
    EXPECT_THAT(lastMessage().toStdString(), ::testing::HasSubstr("missing/a.mdb"));
    EXPECT_EQ(bus.frames(), QStringList(":0522FF"));
}

class BrokenRecord : public SetAutoOnTheBus, public ::testing::WithParamInterface<int> {};

TEST_P(BrokenRecord, KeepsTheRowsBefore)
{
    bus.fault(QStringLiteral("short@5/24:1+%1").arg(GetParam()));
    download("a.mdb");
    EXPECT_EQ(messages.shown,
              QStringList(QStringLiteral("%1 records have been received, Comm Error").arg(GetParam())));
    EXPECT_EQ(rowsIn(exported(path("a.mdb"))), GetParam());
    EXPECT_EQ(controls.status(),
              QStringLiteral("Readout 5 holds %1 records that this window has not downloaded.")
                  .arg(5 - GetParam()));
}

INSTANTIATE_TEST_SUITE_P(FirstMiddleAndLast, BrokenRecord, ::testing::Values(0, 2, 4));

TEST_F(SetAutoOnTheBus, BadDateNamesTheRecord)
{
    bus.fault("baddate@5/24:1+2");
    download("a.mdb");
    ASSERT_EQ(messages.shown.size(), 1);
    EXPECT_THAT(lastMessage().toStdString(),
                ::testing::StartsWith("Record 0012 of the readout holds no valid date and time: \"241332"));
    EXPECT_EQ(rowsIn(exported(path("a.mdb"))), 2);
}

TEST_F(SetAutoOnTheBus, BadNumberIsNeverZero)
{
    bus.fault("badnumber@5/24:1+4");
    download("a.mdb");
    ASSERT_EQ(messages.shown.size(), 1);
    EXPECT_THAT(lastMessage().toStdString(),
                ::testing::StartsWith("Record 0014 of the readout holds no number for x: \"XYZABCDE\""));
    EXPECT_EQ(rowsIn(exported(path("a.mdb"))), 4);
}

TEST_F(SetAutoOnTheBus, PulledAdapterLeavesTheRowsAndTheReason)
{
    bus.fault("hangup@5/24:1+2");
    download("a.mdb");
    EXPECT_EQ(messages.shown, QStringList("2 records have been received, Comm Error"));
    EXPECT_EQ(rowsIn(exported(path("a.mdb"))), 2);
    EXPECT_FALSE(mscomm1.PortOpen());
    EXPECT_THAT(controls.status().toStdString(), ::testing::HasSubstr(bus.device().toStdString()));
}

TEST_F(SetAutoOnTheBus, TypesBAndDDownloadTwoDirections)
{
    for (const auto type : {link::TypeB, link::TypeD}) {
        bench.instrumentType = type;
        const auto name = QStringLiteral("%1.mdb").arg(type);
        download(name);
        EXPECT_EQ(controls.Label3().text(), "Total 5 records. 5 records have been received.");
        const auto table = exported(path(name));
        EXPECT_THAT(table, ::testing::StartsWith("time,x,y\n"));
        EXPECT_EQ(rowsIn(table), 5);
    }
    EXPECT_EQ(messages.shown, QStringList());
}

TEST_F(SetAutoOnTheBus, CharactersThatAreNotLookedAtDoNotMatter)
{
    bus.command("reply 5 22 ~~~~~100000100011~~");
    bus.command("reply 5 24 ~~~~~????240229235959+012.500-001.250~~");
    download("a.mdb");
    EXPECT_EQ(messages.shown, QStringList());
    EXPECT_EQ(exported(path("a.mdb")), "time,x,y\n2024-02-29T23:59:59,12.5,-1.25\n");
}

} // namespace

} // namespace quorvel::test
