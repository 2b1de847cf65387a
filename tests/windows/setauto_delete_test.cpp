#include "windows/setauto_on_the_bus.h"

#include <gmock/gmock.h>

namespace quorvel::test {

namespace {

const auto kUnconfirmed =
    QStringLiteral("Comm Error %1 Readout 5 did not confirm the deletion: whether it has deleted its "
                   "records is not known.");
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
    EXPECT_EQ(controls.status(), "Readout 5 confirmed the deletion of its records.");
}

TEST_F(SetAutoOnTheBus, ContentOfTheAnswerToDeleteDoesNotMatter)
{
    bus.fault("garbled@5/25");
    messages.answers = {true};
    controls.press("Command3");
    EXPECT_EQ(lastMessage(), "Data Deleted");
    EXPECT_THAT(
        controls.status().toStdString(),
        ::testing::AllOf(::testing::StartsWith("Readout 5 answered the deletion with other characters, \""),
                         ::testing::EndsWith("\": whether it has deleted its records is not known.")));
}

TEST_F(SetAutoOnTheBus, ShortAnswerToDeleteIsACommError)
{
    bus.fault("short@5/25");
    messages.answers = {true};
    controls.press("Command3");
    EXPECT_EQ(lastMessage(), "Comm Error");
    EXPECT_EQ(controls.status(), kUnconfirmed.arg("Only 8 of 9 characters of the answer arrived."));
}

TEST_F(SetAutoOnTheBus, RecordsTakenAfterAnUnansweredDeleteAreNotThoseOfTheFile)
{
    bus.command("set 5 ring 1000,0,5");
    download("a.mdb");
    bus.fault("silent@5/25");
    messages.answers = {true};
    controls.press("Command3");
    EXPECT_EQ(lastMessage(), "Comm Error");
    EXPECT_EQ(controls.status(), kUnconfirmed.arg("The readout did not answer."));
    bus.command("take 5 5");
    controls.press("Command2"); // cancelled in the file dialog
    EXPECT_EQ(controls.status(), kNoneInAFile);
}

TEST_F(SetAutoOnTheBus, StatusWarnsBeforeRecordsAreDeletedUndownloaded)
{
    controls.press("Command2"); // cancelled in the file dialog
    QString atTheQuestion;
    messages.onShow = [&](const QString&) { atTheQuestion = controls.status(); };
    controls.press("Command3");
    EXPECT_EQ(atTheQuestion, kNoneInAFile);
}

} // namespace

} // namespace quorvel::test
