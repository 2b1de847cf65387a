#include "windows/storedreadings_on_the_bus.h"

#include <gmock/gmock.h>

namespace quorvel::test {

namespace {

using ::testing::HasSubstr;
using ::testing::Not;
using ::testing::StartsWith;

TEST_F(StoredReadingsOnTheBus, QueryShowsWhatTheRingHoldsAndChangesNothing)
{
    controls.press("Query");
    const auto ring = plain(controls.ring());
    EXPECT_THAT(ring, HasSubstr("5 records, room for 1000"));
    EXPECT_THAT(ring, HasSubstr("First: 2024-05-17 05:00:00"));
    EXPECT_THAT(ring, HasSubstr("Last:  2024-05-17 09:00:00"));
    EXPECT_THAT(ring, HasSubstr("1 hours 0 minutes 0 seconds"));
    EXPECT_THAT(ring, HasSubstr("Clock: 2024-05-17 09:05:"));
    EXPECT_THAT(ring, HasSubstr("behind the PC"));
    EXPECT_THAT(plain(controls.status()), HasSubstr("Next: \"New File ...\""));
    EXPECT_EQ(held(5), 5);
    EXPECT_EQ(messages.shown, QStringList());
}

TEST_F(StoredReadingsOnTheBus, NewFileHasAProposedNameAndHoldsAllRecords)
{
    with("new.mdb", "NewFile");
    EXPECT_EQ(messages.lastChoice.proposed,
              "readout-5-A-" + clock.now().date().toString(Qt::ISODate) + ".mdb");
    EXPECT_EQ(lines("new.mdb").size(), 6U);
    EXPECT_THAT(plain(controls.report()), HasSubstr("Records: 5 of 5, complete"));
    EXPECT_THAT(plain(controls.status()), StartsWith("5 of 5 records of readout 5 are in "));
    EXPECT_EQ(messages.shown, QStringList());
}

TEST_F(StoredReadingsOnTheBus, CancelledDialogFetchesNothing)
{
    controls.press("NewFile");
    EXPECT_EQ(bus.frames().filter(":0524").size(), 2) << "first and last are shown";
    EXPECT_EQ(controls.report(), "");
}

TEST_F(StoredReadingsOnTheBus, EmptyRingAsksForNoFile)
{
    bus.command("set 5 ring 1000,3,3");
    messages.files.push_back(file("a.mdb"));
    controls.press("NewFile");
    EXPECT_EQ(messages.files.size(), 1U) << "the dialog was shown";
    EXPECT_THAT(plain(controls.status()), StartsWith("Readout 5 holds no records"));
    EXPECT_FALSE(QFile::exists(file("a.mdb")));
}

TEST_F(StoredReadingsOnTheBus, ReadoutOfTypeCIsTakenWithZThoughTypeAIsChosen)
{
    controls.address().setText("12");
    with("c.csv", "NewFile");
    EXPECT_THAT(plain(messages.lastChoice.proposed), StartsWith("readout-12-C-"));
    const auto rows = lines("c.csv");
    ASSERT_EQ(rows.size(), 5U);
    EXPECT_EQ(rows[0], "time,x,y,z1,z2");
    EXPECT_EQ(std::ranges::count(rows[4], ','), 4);
}

TEST_F(StoredReadingsOnTheBus, VerifyAsksForEachRecordTwice)
{
    controls.verify().setChecked(true);
    with("v.csv", "NewFile");
    EXPECT_EQ(came(":05240012FF"), 2);
    EXPECT_THAT(plain(controls.report()), HasSubstr("Each record verified: yes"));
}

TEST_F(StoredReadingsOnTheBus, SilentReadoutIsAskedAgainUpToThreeTimes)
{
    bus.fault("short@24:3+3"); // the second record of the download, three times
    with("again.csv", "NewFile");
    EXPECT_EQ(lines("again.csv").size(), 6U);
    EXPECT_EQ(came(":05240011FF"), 4);
    EXPECT_THAT(plain(controls.report()), HasSubstr("3 of them again"));
}

TEST_F(StoredReadingsOnTheBus, AnswerOfAnotherSlotIsNotStored)
{
    with("good.csv", "NewFile");
    bus.fault("slot@24:2+3");
    with("slot.csv", "NewFile");
    EXPECT_EQ(lines("slot.csv"), lines("good.csv"));
    EXPECT_THAT(plain(controls.report()), HasSubstr("2 not the one asked for"));
}

TEST_F(StoredReadingsOnTheBus, FieldsOfWhichOnlyNoiseIsLeftStayEmptyAndAreReported)
{
    bus.command("set 5 noisy 12,date");
    bus.command("set 5 noisy 13,x");
    with("noisy.csv", "NewFile");
    const auto rows = lines("noisy.csv");
    ASSERT_EQ(rows.size(), 6U);
    EXPECT_THAT(rows[3], StartsWith(","));
    EXPECT_THAT(rows[4], StartsWith("2024-05-17T08:00:00,,"));
    EXPECT_THAT(plain(controls.report()), HasSubstr("Row 3, record 0012: no valid date and time"));
    EXPECT_THAT(plain(controls.report()), HasSubstr("Row 4, record 0013: no number for x"));
    EXPECT_THAT(plain(controls.status()), HasSubstr("2 fields could not be read"));
}

TEST_F(StoredReadingsOnTheBus, BrokenDownloadIsContinuedInTheSameFile)
{
    with("whole.csv", "NewFile");
    bus.fault("silent@24:4+4"); // first, last, and two records come
    with("broken.csv", "NewFile");
    EXPECT_EQ(lines("broken.csv").size(), 3U);
    EXPECT_THAT(plain(controls.report()), HasSubstr("Records: 2 of 5, comm error"));
    with("broken.csv", "ContinueFile");
    EXPECT_EQ(lines("broken.csv"), lines("whole.csv"));
    EXPECT_THAT(plain(controls.status()), HasSubstr("3 of 3 new records"));
    EXPECT_EQ(messages.shown, QStringList());
}

TEST_F(StoredReadingsOnTheBus, NextMonthOnlyTheNewRecordsFollow)
{
    with("month.mdb", "NewFile");
    bus.command("set 5 clock 2024-06-17T09:05:30");
    bus.command("take 5 3");
    bus.frames();
    with("month.mdb", "ContinueFile");
    EXPECT_EQ(lines("month.mdb").size(), 9U);
    EXPECT_THAT(plain(controls.status()), HasSubstr("3 new records since 2024-05-17 09:00:00"));
    with("month.mdb", "ContinueFile");
    EXPECT_EQ(lines("month.mdb").size(), 9U);
    EXPECT_EQ(messages.shown, QStringList());
}

TEST_F(StoredReadingsOnTheBus, FileOfAnotherReadoutIsContinuedOnlyAfterAQuestion)
{
    with("five.csv", "NewFile");
    const auto before = lines("five.csv");
    controls.address().setText("12");
    with("five.csv", "ContinueFile");
    EXPECT_EQ(messages.shown, QStringList()) << "nothing later than its last row is there";
    bus.command("take 12");
    with("five.csv", "ContinueFile");
    ASSERT_EQ(messages.shown.size(), 1);
    EXPECT_THAT(plain(messages.last()), HasSubstr("Continue this file all the same?"));
    EXPECT_EQ(lines("five.csv"), before);
}

TEST_F(StoredReadingsOnTheBus, FileThatIsNoneIsToldAndLeftAlone)
{
    put("other.csv", {"a,b", "1,2"});
    with("other.csv", "ContinueFile");
    EXPECT_THAT(plain(controls.status()), HasSubstr("other.csv"));
    EXPECT_EQ(contents(file("other.csv").toStdString()), "a,b\n1,2\n");
}

TEST_F(StoredReadingsOnTheBus, CheckSaysWhenItIsSafeToDelete)
{
    with("safe.mdb", "NewFile");
    controls.press("Check");
    EXPECT_THAT(plain(controls.status()), StartsWith("Safe to delete"));
    EXPECT_THAT(plain(controls.report()), HasSubstr("Safe to delete"));
    bus.command("take 5 3");
    controls.press("Check"); // the question whether to look in one more file is answered with No
    EXPECT_THAT(plain(controls.status()), StartsWith("Not safe to delete"));
    EXPECT_THAT(plain(controls.status()), HasSubstr("3"));
    ASSERT_EQ(messages.shown.size(), 1);
    EXPECT_THAT(plain(messages.last()), HasSubstr("Look in one more file?"));
}

TEST_F(StoredReadingsOnTheBus, CheckTakesAFileOfAnEarlierRunOfTheProgram)
{
    with("early.csv", "NewFile");
    autoread::Book empty;
    StoredReadings later(workplace, empty);
    const StoredReadingsControls second(later);
    messages.files.push_back(file("early.csv"));
    second.press("Check");
    EXPECT_THAT(plain(second.status()), StartsWith("Safe to delete"));
    EXPECT_EQ(messages.shown, QStringList());
}

TEST_F(StoredReadingsOnTheBus, CheckLooksInASecondFile)
{
    with("whole.csv", "NewFile");
    const auto rows = lines("whole.csv");
    put("first.csv", {rows[0], rows[1], rows[2], rows[3]});
    put("second.csv", {rows[0], rows[4], rows[5]});
    QFile::remove(file("whole.csv"));
    messages.answers = {true};
    messages.files = {file("first.csv"), file("second.csv")};
    controls.press("Check");
    ASSERT_EQ(messages.shown.size(), 1);
    EXPECT_THAT(plain(messages.last()), StartsWith("Not safe to delete"));
    EXPECT_THAT(plain(controls.status()), StartsWith("Safe to delete"));
}

TEST_F(StoredReadingsOnTheBus, DeletesWhatIsSafeAfterAQuestion)
{
    with("kept.mdb", "NewFile");
    messages.answers = {true};
    controls.press("Delete");
    ASSERT_EQ(messages.shown.size(), 1);
    EXPECT_THAT(plain(messages.last()), StartsWith("Safe to delete"));
    EXPECT_THAT(plain(messages.last()), HasSubstr("Delete the 5 records in readout 5 now?"));
    EXPECT_EQ(held(5), 0);
    EXPECT_EQ(came(":0525FF"), 1);
}

TEST_F(StoredReadingsOnTheBus, DeletesWhatIsNotSafeOnlyAfterBeingToldWhatIsLost)
{
    controls.press("Delete");
    ASSERT_EQ(messages.shown.size(), 1);
    EXPECT_THAT(plain(messages.last()), StartsWith("Not safe to delete"));
    EXPECT_THAT(plain(messages.last()), HasSubstr("lost for good"));
    EXPECT_EQ(held(5), 5);
    messages.answers = {true};
    controls.press("Delete");
    EXPECT_EQ(held(5), 0);
}

TEST_F(StoredReadingsOnTheBus, DeletionThatIsNotConfirmedIsToldSo)
{
    bus.fault("echo@25");
    messages.answers = {true};
    controls.press("Delete");
    EXPECT_THAT(plain(controls.status()), Not(HasSubstr("Next: \"Delete")));
    EXPECT_THAT(plain(controls.report()), HasSubstr("whether it has deleted its records is not known"));
}

TEST_F(StoredReadingsOnTheBus, ReportIsSavedBesideTheFileAsTextAndJson)
{
    EXPECT_FALSE(controls.button("SaveReport").isEnabled());
    with("saved.mdb", "NewFile");
    controls.press("Check");
    controls.press("SaveReport");
    const auto saved = QDir(folder.path()).entryList({"saved.report-*"}, QDir::Files, QDir::Name);
    ASSERT_EQ(saved.size(), 2) << qPrintable(saved.join(' '));
    EXPECT_EQ(contents(file(saved[1]).toStdString()), plain(controls.report()));
    const auto json =
        QJsonDocument::fromJson(QByteArray::fromStdString(contents(file(saved[0]).toStdString())));
    EXPECT_EQ(json["address"], 5);
    EXPECT_EQ(json["received"], 5);
    EXPECT_TRUE(json["check"]["safe"].toBool());
    EXPECT_THAT(plain(controls.status()), StartsWith("Saved as "));
}

TEST_F(StoredReadingsOnTheBus, OffersNothingThatCannotBeDone)
{
    const auto enabled = [this] {
        QStringList names;
        for (const auto* name : {"Query", "NewFile", "ContinueFile", "Check", "Delete", "Stop", "SaveReport"})
            if (controls.button(name).isEnabled()) names << name;
        return names.join(' ');
    };
    EXPECT_EQ(enabled(), "Query NewFile ContinueFile Check Delete");
    controls.address().setText("300");
    EXPECT_EQ(enabled(), "");
    EXPECT_THAT(plain(controls.status()), StartsWith("Type the address of one readout"));
    controls.address().setText("5");
    module1.setReadOnly(true);
    QEvent activated(QEvent::WindowActivate);
    QApplication::sendEvent(&form, &activated);
    EXPECT_EQ(enabled(), "Query NewFile ContinueFile Check");
    mscomm1.setPortOpen(false);
    QApplication::sendEvent(&form, &activated);
    EXPECT_EQ(enabled(), "");
    EXPECT_THAT(plain(controls.status()), StartsWith("The port is closed."));
}

} // namespace

} // namespace quorvel::test
