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
    EXPECT_EQ(controls.status(), allIn("a.mdb"));
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

constexpr auto kUnknown =
    "Readout 5 has not been asked for its stored records since the program was started.";
constexpr auto kUnreadable = "\nThe answer to the query for stored records could not be read: ";

TEST_F(SetAutoOnTheBus, UnreadableCountIsPointedOutBesideNoData)
{
    bus.command("reply 5 22 :0522ABCDEFGHIJKLFF");
    download("a.mdb");
    EXPECT_EQ(messages.shown, QStringList("No Data"));
    EXPECT_EQ(controls.status(), QString(kUnknown) + kUnreadable + ":0522ABCDEFGHIJKLFF\\x0D\\x0A");
    controls.Text1().setText("12");
    EXPECT_EQ(controls.status(),
              "Readout 12 has not been asked for its stored records since the program was started.");
}

TEST_F(SetAutoOnTheBus, UnreadableCountThatGoesOnIsPointedOutBesideTheDownload)
{
    QString meanwhile;
    messages.onShow = [&](const QString&) { meanwhile = controls.status(); };
    bus.command("reply 5 22 :0522 999 010 012FF");
    bus.fault("silent@5/24:1+1");
    download("a.mdb");
    const auto remark = QString(kUnreadable) + ":0522 999 010 012FF\\x0D\\x0A\nRecord 0011 did not come. The "
                                               "readout did not answer.";
    EXPECT_EQ(messages.shown, QStringList("1 records have been received, Comm Error"));
    EXPECT_EQ(meanwhile, kUnknown + remark);
    EXPECT_EQ(controls.status(), kUnknown + remark);
    bus.command("reply 5 22");
    download("b.mdb");
    EXPECT_EQ(controls.status(), allIn("b.mdb"));
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

TEST_F(ExistingFile, IsKeptBesideTheNewOneWhenThatBreaksOff)
{
    bus.fault("silent@5/24:1+2");
    messages.answers = {true};
    download("a.mdb");
    EXPECT_EQ(lastMessage(), "2 records have been received, Comm Error");
    const auto others = QDir(folder.path()).entryList({"a.2*.mdb"});
    ASSERT_EQ(others.size(), 1);
    EXPECT_EQ(contents(path(others[0])), "old");
    EXPECT_TRUE(
        controls.status().contains("The file that was there before is kept as " + file(others[0]) + "."))
        << qPrintable(controls.status());
    messages.answers = {true};
    download("a.mdb");
    EXPECT_FALSE(controls.status().contains("kept")) << qPrintable(controls.status());
}

TEST_F(ExistingFile, IsReplacedOnYes)
{
    messages.answers = {true};
    download("a.mdb");
    EXPECT_EQ(messages.shown, QStringList("File already exists, overwrite this file?"));
    EXPECT_EQ(rowsIn(exported(path("a.mdb"))), 5);
    EXPECT_EQ(QDir(folder.path()).entryList(QDir::Files), QStringList("a.mdb"));
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
    const auto some =
        QStringLiteral("%1 of the 5 records that readout 5 held when it was last asked are in %2; %3 not, or "
                       "not whole.")
            .arg(GetParam())
            .arg(file("a.mdb"), GetParam() == 4 ? "1 is" : "3 are");
    EXPECT_EQ(controls.status(),
              (GetParam() == 0 ? kNoneInAFile : some) +
                  QStringLiteral("\nRecord 001%1 did not come. Only 40 of 41 characters of the "
                                 "answer arrived.")
                      .arg(GetParam()));
}

INSTANTIATE_TEST_SUITE_P(FirstMiddleAndLast, BrokenRecord, ::testing::Values(0, 2, 4));

TEST_F(SetAutoOnTheBus, BadDateStaysEmptyAndIsNamed)
{
    bus.fault("baddate@5/24:1+2");
    download("a.csv");
    EXPECT_EQ(messages.shown, QStringList());
    const auto lines = linesOf(contents(path("a.csv")));
    ASSERT_EQ(lines.size(), 6U);
    EXPECT_THAT(lines[3], ::testing::StartsWith(","));
    EXPECT_THAT(controls.status().toStdString(),
                ::testing::AllOf(::testing::StartsWith("4 of the 5 records that readout 5 held"),
                                 ::testing::HasSubstr("\nRecord 0012: no valid date and time: \"241332")));
}

TEST_F(SetAutoOnTheBus, BadNumberIsNeverZero)
{
    bus.fault("badnumber@5/24:1+4");
    download("a.mdb");
    EXPECT_EQ(messages.shown, QStringList());
    const auto lines = linesOf(exported(path("a.mdb")));
    ASSERT_EQ(lines.size(), 6U);
    EXPECT_THAT(lines[5], ::testing::HasSubstr(",,"));
    EXPECT_THAT(controls.status().toStdString(),
                ::testing::HasSubstr("Record 0014: no number for x: \"XYZABCDE\"."));
}

TEST_F(SetAutoOnTheBus, ZWithoutTypeCIsSaidWithTheFirstRecord)
{
    controls.Text1().setText("12");
    QString atTheFirst;
    QObject::connect(&controls.progress(), &QProgressBar::valueChanged, &form, [&](int received) {
        if (received == 1) atTheFirst = controls.status();
    });
    download("c.mdb");
    EXPECT_EQ(messages.shown, QStringList());
    EXPECT_THAT(atTheFirst.toStdString(),
                ::testing::HasSubstr("Record 0002: Z follows, so the readout is of type C."));
    EXPECT_THAT(controls.status().toStdString(),
                ::testing::AllOf(::testing::StartsWith("None of the 3 records that readout 12 held"),
                                 ::testing::EndsWith("And 2 more remarks of this kind.")));
}

TEST_F(SetAutoOnTheBus, TypeCBeforeAReadoutWithoutZIsExplained)
{
    bench.instrumentType = link::TypeC;
    QString atTheMessage;
    messages.onShow = [&](const QString&) { atTheMessage = controls.status(); };
    download("c.mdb");
    EXPECT_EQ(messages.shown, QStringList("0 records have been received, Comm Error"));
    EXPECT_THAT(atTheMessage.toStdString(), ::testing::HasSubstr("the readout is not of type C"));
}

TEST_F(SetAutoOnTheBus, ReplyOfAnotherSlotIsStoredAndReported)
{
    bus.command("reply 5 24 :05240010240229235959+012.500-001.250FF");
    download("a.mdb");
    EXPECT_EQ(messages.shown, QStringList());
    EXPECT_EQ(rowsIn(exported(path("a.mdb"))), 5);
    EXPECT_THAT(
        controls.status().toStdString(),
        ::testing::AllOf(::testing::StartsWith("1 of the 5 records"),
                         ::testing::HasSubstr("\nRecord 0011: it is of slot 0010. And 3 more remarks")));
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

TEST_F(SetAutoOnTheBus, FileThatWasOverwrittenByABrokenDownloadCountsNoMore)
{
    download("a.mdb");
    EXPECT_EQ(controls.status(), allIn("a.mdb"));
    bus.fault("silent@5/24:1+2");
    messages.answers = {true};
    download("a.mdb");
    EXPECT_TRUE(
        controls.status().startsWith("2 of the 5 records that readout 5 held when it was last asked are in "))
        << qPrintable(controls.status());
}

TEST_F(SetAutoOnTheBus, FileThatWasRemovedCountsNoMoreInAnyWindow)
{
    download("a.mdb");
    SetAuto second(workplace, book);
    EXPECT_EQ(SetAutoControls(second).status(), allIn("a.mdb"));
    QFile::remove(file("a.mdb"));
    second.show();
    SetAuto third(workplace, book);
    EXPECT_EQ(SetAutoControls(third).status(), kNoneInAFile);
}

TEST_F(SetAutoOnTheBus, WindowGrowsWithTheNamesOfFiles)
{
    const auto folderName =
        QString(100, 'd') + " " + QString(90, 'e') + "/" + QString(60, 'f') + " " + QString(60, 'g');
    ASSERT_TRUE(QDir(folder.path()).mkpath(folderName));
    bus.fault("badnumber@5/24:2");
    download(folderName + "/a.mdb");
    const auto* status = child<QLabel>(form, "Status");
    EXPECT_GE(status->height(), status->heightForWidth(status->width()));
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
