#include "windows/setauto_on_the_bus.h"

namespace quorvel::test {

namespace {

constexpr auto kQuestion = "Are you sure to delete data saved in Pendulum Readout";

TEST_F(SetAutoOnTheBus, DeleteAsksFirst)
{
    controls.press("Command3");
    EXPECT_EQ(messages.shown, QStringList(kQuestion));
    EXPECT_EQ(bus.frames(), QStringList());
}

TEST_F(SetAutoOnTheBus, DeleteClearsTheRing)
{
    messages.answers = {true};
    controls.press("Command3");
    EXPECT_EQ(messages.shown, QStringList({kQuestion, "Data Deleted"}));
    EXPECT_EQ(bus.frames(), QStringList(":0525FF"));
    EXPECT_EQ(bus.state(5).value("ring").toObject().value("stored").toInt(), 0);
    EXPECT_EQ(controls.status(), "Readout 5 held no records when it was last asked.");
}

TEST_F(SetAutoOnTheBus, ContentOfTheAnswerToDeleteDoesNotMatter)
{
    bus.fault("garbled@5/25");
    messages.answers = {true};
    controls.press("Command3");
    EXPECT_EQ(lastMessage(), "Data Deleted");
}

TEST_F(SetAutoOnTheBus, ShortAnswerToDeleteIsACommError)
{
    bus.fault("short@5/25");
    messages.answers = {true};
    controls.press("Command3");
    EXPECT_EQ(lastMessage(), "Comm Error");
    EXPECT_EQ(controls.status(), "The records stored in readout 5 have not been downloaded in this window.");
}

TEST_F(SetAutoOnTheBus, RecordsTakenAfterAnUnansweredDeleteAreNotThoseOfTheFile)
{
    bus.command("set 5 ring 1000,0,5");
    download("a.mdb");
    bus.fault("silent@5/25");
    messages.answers = {true};
    controls.press("Command3");
    EXPECT_EQ(lastMessage(), "Comm Error");
    EXPECT_EQ(controls.status(), "The records stored in readout 5 have not been downloaded in this window.");
    bus.command("take 5 5");
    controls.press("Command2"); // cancelled in the file dialog
    EXPECT_EQ(controls.status(), "Readout 5 holds 5 records that this window has not downloaded.");
}

TEST_F(SetAutoOnTheBus, StatusWarnsBeforeRecordsAreDeletedUndownloaded)
{
    controls.press("Command2"); // cancelled in the file dialog
    QString atTheQuestion;
    messages.onShow = [&](const QString&) { atTheQuestion = controls.status(); };
    controls.press("Command3");
    EXPECT_EQ(atTheQuestion, "Readout 5 holds 5 records that this window has not downloaded.");
}

} // namespace

} // namespace quorvel::test
