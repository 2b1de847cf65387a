#include "windows/site_by_hand.h"

#include <QApplication>
#include <QPlainTextEdit>
#include <QTimer>

namespace quorvel::test {

namespace {

using ::testing::AllOf;
using ::testing::HasSubstr;
using ::testing::Not;
using ::testing::StartsWith;

/// The window, and what is known of changes.
class SiteReport : public SiteByHand {
protected:
    SiteReport()
    {
        openDam();
        controls.press("SiteSweep");
        readout.frames.clear();
    }

    /// Presses "Site Report ...", fills in the dialog, and presses its "Save ...".
    void report(const QString& name, bool asks, const QString& remark = {})
    {
        messages.files.push_back(file(name));
        QTimer::singleShot(0, [asks, remark] {
            auto* dialog = QApplication::activeModalWidget();
            ASSERT_TRUE(dialog);
            EXPECT_EQ(child<QLineEdit>(*dialog, "SitePerson")->text(), "anna");
            child<QPlainTextEdit>(*dialog, "SiteRemark")->setPlainText(remark);
            child<QCheckBox>(*dialog, "SiteAsk")->setChecked(asks);
            child<QPushButton>(*dialog, "SiteSaveReport")->click();
        });
        controls.press("SiteReport");
    }
};

TEST_F(SiteReport, WhatIsNotKnownIsSaidToBeNotKnown)
{
    report("visit.html", false);
    EXPECT_TRUE(readout.frames.empty());
    EXPECT_THAT(controls.status(), StartsWith("The report is saved as "));
    const auto page = read("visit.html");
    EXPECT_THAT(page,
                AllOf(HasSubstr("<h1>Site report: North dam</h1>"), HasSubstr("anna"), HasSubstr("+1.50000"),
                      HasSubstr("Block 9"), HasSubstr("5, 7: none; 12: Zero of May"),
                      HasSubstr("<i>not known</i>: the readouts were not asked."),
                      HasSubstr("Nothing, according to the journal of this machine.")));
    EXPECT_THAT(page, HasSubstr("<td class=\"\"><i>not&nbsp;known</i></td>")) << "the clocks";
}

TEST_F(SiteReport, ReadoutsAreAskedForReadingsClocksAndSettings)
{
    readout.answer = [this](const std::string& frame) -> std::string {
        if (frame == ":0504FF") return ":0504240517090533FF\r\n";
        if (frame == ":0576FF") return ":057601FF\r\n";
        if (frame == ":0506FF") return ":05060101000000FF\r\n";
        if (frame == ":0C76FF") return ":0C7600FF\r\n";
        const auto reading = answer(frame);
        return reading.empty() ? frame.substr(0, 3) : reading; // others break off
    };
    values["052101"] = "+3.00000-0.25000";
    report("visit.html", true, "Lamp <changed>\nkey left");
    const auto page = read("visit.html");
    EXPECT_THAT(page, HasSubstr("+3.00000"));
    EXPECT_THAT(page, HasSubstr("<td class=\"bad\">X&nbsp;above&nbsp;2</td>"));
    EXPECT_THAT(page, HasSubstr("Lamp &lt;changed&gt;<br>key left"));
    EXPECT_THAT(page, HasSubstr("<td class=\"\">+3&nbsp;s</td>"));
    EXPECT_THAT(page, HasSubstr("<td class=\"\">short&nbsp;3&nbsp;of&nbsp;21</td>"));
    EXPECT_THAT(
        page,
        HasSubstr(
            "<tr><td class=\"\">Reference feature</td><td class=\"\">5: on; 12: off; 7: <i>not known</i>"));
    EXPECT_THAT(page, HasSubstr("5: every 1 h 0 min 0 s; 12, 7: ")) << "in the words of people";
    EXPECT_FALSE(gate.busy());
}

TEST_F(SiteReport, ChangesOfTheSitesReadoutsAreListed)
{
    changes.made = {
        {"2024-05-17T08:00:00.000+02:00", 5, "Set the offset of X to +1.50000", "+0.00000", "complete", true,
         "anna, quorvel"},
        {"2024-05-17T08:01:00.000+02:00", 12, "Set the clock", "", "silent", false, "anna, quorvel"},
        {"2024-05-17T08:02:00.000+02:00", 99, "Set elsewhere", "", "complete", true, "anna, quorvel"}};
    report("visit.html", false);
    const auto page = read("visit.html");
    EXPECT_THAT(page, Not(HasSubstr("could not be read")));
    EXPECT_EQ(asked, QDateTime(QDate(2024, 5, 17), QTime(0, 0)));
    EXPECT_THAT(page,
                AllOf(HasSubstr("2024-05-17 08:00:00"), HasSubstr("Set the offset of X to +1.50000"),
                      HasSubstr("confirmed"), HasSubstr("not confirmed"), Not(HasSubstr("Set elsewhere"))));
}

TEST_F(SiteReport, LinesOfTheJournalThatCannotBeReadAreSaid)
{
    changes.unread = 2;
    report("visit.html", false);
    EXPECT_THAT(read("visit.html"),
                HasSubstr("<i>not known</i> (Lines of the journal that could not be read: 2.)"));
}

TEST_F(SiteReport, JournalThatCannotBeReadAndReadoutsThatFailAreNamed)
{
    noChanges = "This run of the program keeps no journal.";
    values.clear();
    report("visit.html", true);
    const auto page = read("visit.html");
    EXPECT_THAT(page, HasSubstr("<p><i>not known</i> (This run of the program keeps no journal.)</p>"));
    EXPECT_THAT(page, HasSubstr("09:05:30<br><span class=\"bad\">last: silent</span>"));
    EXPECT_THAT(page, HasSubstr("<i>not known</i> (the readout did not answer) (all)"));
}

TEST_F(SiteReport, IsSavedAsPdfAndStopSavesNone)
{
    report("visit.pdf", false);
    EXPECT_THAT(read("visit.pdf"), StartsWith("%PDF"));
    onFrame = [&](const std::string&) { controls.press("SiteStop"); };
    report("none.pdf", true);
    EXPECT_FALSE(QFile::exists(file("none.pdf")));
    EXPECT_THAT(controls.status(), HasSubstr("no report was saved"));
}

} // namespace

} // namespace quorvel::test
