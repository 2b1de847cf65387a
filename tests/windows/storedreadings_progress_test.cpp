#include "autoread/largest_file.h"
#include "support/scripted_readout.h"
#include "text/number.h"
#include "windows/storedreadings_on_the_bus.h"

#include <QFileInfo>
#include <QTest>

#include <gmock/gmock.h>

#include <optional>

namespace quorvel::test {

namespace {

using ::testing::HasSubstr;
using ::testing::StartsWith;

/// Readout 5 of type A with ten records, a minute apart: 10 to 19 of a ring of 100.
std::string tenRecords(const std::string& frame)
{
    if (frame == ":0522FF") return ":0522010000100020FF\r\n";
    if (frame == ":0506FF") return ":06060100010000FF\r\n";
    if (frame == ":0504FF") return ":0504240517090530FF\r\n";
    if (!frame.starts_with(":0524")) return {};
    const int slot = quorvel::text::integerOf(frame.substr(5, 4));
    return frame.substr(0, 9) + "24051709" + quorvel::text::format(slot, "00") + "00+" +
           quorvel::text::format(slot, "000.000") + "-001.500FF\r\n";
}

link::Bench benchAtFive()
{
    link::Bench bench;
    bench.currentAddress = "5";
    return bench;
}

/// The real window before a scripted readout; time is moved by hand.
class StoredReadingsByHand : public ::testing::Test {
protected:
    StoredReadingsByHand()
    {
        qApp->installEventFilter(&filter);
        form.show();
    }

    QString file(const QString& name) const { return folder.filePath(name); }
    void with(const QString& name, const QString& button)
    {
        messages.files.push_back(file(name));
        controls.press(button);
    }
    std::vector<std::string> lines(const QString& name) const
    {
        return linesOf(contents(file(name).toStdString()));
    }
    /// Does something when this question arrives for the second time: first and last are shown before a download.
    void whenFetching(const std::string& wanted, const std::function<void()>& act)
    {
        readout.answer = [this, wanted, act](const std::string& frame) {
            const bool fetching = controls.progress().maximum() == 10;
            if (fetching && frame == wanted) act();
            return tenRecords(frame);
        };
    }

    QTemporaryDir folder;
    ScriptedReadout readout{tenRecords};
    link::Bench bench = benchAtFive();
    link::Gate gate;
    InputFilter filter{gate};
    TestMessages messages;
    autoread::Book book;
    StoredReadings form{Workplace{bench, readout.module1, gate, messages}, book};
    StoredReadingsControls controls{form};
};

TEST_F(StoredReadingsByHand, BarMovesWithTheTimeLeft)
{
    QString seen;
    int value = 0;
    whenFetching(":05240015FF", [&] {
        seen = controls.progress().format();
        value = controls.progress().value();
    });
    with("a.csv", "NewFile");
    EXPECT_EQ(value, 5);
    EXPECT_EQ(seen, "5 of 10, about 1 s left"); // five of 0.095 s: the reply comes at once here
    EXPECT_EQ(lines("a.csv").size(), 11U);
    EXPECT_EQ(controls.progress().format(), "");
}

TEST_F(StoredReadingsByHand, StopEndsAfterTheRecordInFlightAndContinuingGivesTheSameFile)
{
    with("whole.csv", "NewFile");
    whenFetching(":05240013FF", [&] {
        auto& stop = controls.button("Stop");
        EXPECT_TRUE(stop.isEnabled() && stop.hasFocus());
        QTest::mouseClick(&stop, Qt::LeftButton);
    });
    with("a.csv", "NewFile");
    EXPECT_EQ(readout.frames[readout.frames.size() - 1].substr(0, 5), ":0524");
    EXPECT_EQ(lines("a.csv").size(), 5U);
    EXPECT_THAT(plain(controls.report()), HasSubstr("Records: 4 of 10, stopped"));
    EXPECT_FALSE(controls.button("Stop").isEnabled());
    readout.answer = tenRecords;
    with("a.csv", "ContinueFile");
    EXPECT_EQ(lines("a.csv"), lines("whole.csv"));
    EXPECT_EQ(messages.shown, QStringList());
}

TEST_F(StoredReadingsByHand, NothingElseCanBePressedMeanwhile)
{
    int looked = 0;
    whenFetching(":05240012FF", [&] {
        ++looked;
        for (const auto* name : {"Query", "NewFile", "ContinueFile", "Check", "Delete", "SaveReport"}) {
            EXPECT_FALSE(controls.button(name).isEnabled()) << name;
        }
        EXPECT_FALSE(controls.address().isEnabled());
    });
    with("a.csv", "NewFile");
    EXPECT_EQ(looked, 1);
    EXPECT_TRUE(controls.button("Check").isEnabled());
}

TEST_F(StoredReadingsByHand, ClosingEndsAfterTheRecordInFlight)
{
    whenFetching(":05240013FF", [&] {
        form.close();
        EXPECT_TRUE(form.isVisible()) << "closed in the middle of a transaction";
    });
    with("a.csv", "NewFile");
    EXPECT_FALSE(form.isVisible());
    EXPECT_EQ(lines("a.csv").size(), 5U);
}

TEST_F(StoredReadingsByHand, FullDiskIsSaidAndTheRestIsFetchedLater)
{
    with("whole.csv", "NewFile");
    std::optional<LargestFile> limit;
    whenFetching(":05240013FF", [&] { limit.emplace(QFileInfo(file("a.csv")).size() + 10); });
    with("a.csv", "NewFile");
    limit.reset();
    EXPECT_EQ(lines("a.csv").size(), 4U);
    EXPECT_THAT(plain(controls.report()), HasSubstr("Records: 3 of 10, file failed"));
    EXPECT_THAT(plain(controls.report()), HasSubstr("could not be written: there was room for a part only."));
    readout.answer = tenRecords;
    with("a.csv", "ContinueFile");
    EXPECT_EQ(lines("a.csv"), lines("whole.csv"));
}

TEST_F(StoredReadingsByHand, SilentReadoutIsNotAskedAgainOnceStopWasPressed)
{
    bool stops = false;
    readout.answer = [&](const std::string&) {
        if (stops) controls.press("Stop");
        return std::string();
    };
    for (const auto* button : {"Query", "NewFile", "ContinueFile", "Check"}) {
        messages.files = {file("none.csv")};
        stops = false;
        readout.frames.clear();
        controls.press(button);
        const auto patient = readout.frames.size();
        stops = true;
        readout.frames.clear();
        messages.files = {file("none.csv")};
        controls.press(button);
        EXPECT_EQ(readout.frames.size(), std::min<std::size_t>(patient, 1)) << button;
        EXPECT_EQ(patient, std::string(button) == "Check" ? 0U : 4U) << button;
    }
}

TEST_F(StoredReadingsByHand, PortThatIsLostIsToldAndTheRowsStay)
{
    readout.answer = [this](const std::string& frame) {
        if (controls.progress().maximum() == 10 && frame == ":05240013FF") {
            readout.device->vanish();
            return std::string();
        }
        return tenRecords(frame);
    };
    with("a.csv", "NewFile");
    EXPECT_EQ(lines("a.csv").size(), 4U);
    EXPECT_FALSE(controls.button("ContinueFile").isEnabled());
}

} // namespace

} // namespace quorvel::test
