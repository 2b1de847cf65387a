#include "calibration/calibration_files.h"
#include "calibration/database.h"
#include "calibration/older_file.h"
#include "crash/reopened.h"
#include "windows/celebration1_on_the_bus.h"

#include <QFile>

namespace quorvel::test {
namespace {

using Rows = std::vector<std::string>;

constexpr auto kFile = "XDirection.mdb";
constexpr auto kTable = "Calibration";

/// The calibration window dies while it writes its file.
class CrashedCalibration : public Celebration1OnTheBus {
protected:
    std::filesystem::path place(const char* name) const { return inFolder(name).toStdString(); }

    /// Notes what the file is to hold from now on, unless the program dies.
    void done()
    {
        states.push_back(tableRows(place(kFile), kTable));
        say((' ' + std::to_string(states.size() - 1) + " done").c_str());
    }
    /// The rows are those of the last state that was reached, or of the next one.
    void expectLastOrNext(const Wreck& wreck, const Rows& rows) const
    {
        const auto last = static_cast<std::size_t>(numberBefore(wreck.said, " done"));
        EXPECT_THAT(rows,
                    ::testing::AnyOf(states.at(last), states.at(std::min(last + 1, states.size() - 1))));
    }
    Recording record(const std::function<void()>& work) const { return {folder.path().toStdString(), work}; }

    std::vector<Rows> states;
};

TEST_F(CrashedCalibration, MakesItsFileWholeOrNotAtAll)
{
    const auto recording = record([this] { open("X"); });
    recording.forEachWreck([](const Wreck& wreck) {
        EXPECT_EQ(wreck.has(kFile) ? soundRows(wreck, kFile, kTable).size() : 11U, 11U);
    });
}

TEST_F(CrashedCalibration, HasEveryNumberThatWasEntered)
{
    open("X");
    states.push_back(tableRows(place(kFile), kTable));
    const auto recording = record([this] {
        for (int row = 0; row < 11; ++row) {
            grid().model()->setData(grid().model()->index(row, 1), QString::number(row));
            done();
        }
        for (const int row : {0, 5, 10}) {
            put(5, "x", row + 0.5);
            measure(row);
            done();
        }
    });
    EXPECT_EQ(states.back()[5], "5,5,5.5");
    const int looked = recording.forEachWreck(
        [&](const Wreck& wreck) { expectLastOrNext(wreck, soundRows(wreck, kFile, kTable)); });
    EXPECT_GT(looked, 40);
}

TEST_F(CrashedCalibration, AddedAndDeletedRowsLeaveTheOthers)
{
    open("X");
    fill({1, 2});
    const auto points = tableRows(place(kFile), kTable);
    const auto recording = record([this] {
        window->AddCalibrationRow();
        window->AddCalibrationRow();
        window->DeleteLastCalibrationRow();
        say("deleted");
    });
    recording.forEachWreck([&](const Wreck& wreck) {
        auto rows = tableRows(wreck.folder / kFile, kTable, jet::Access::ReadWrite);
        EXPECT_EQ(first(11, rows), points);
        EXPECT_LE(rows.size(), 13U);
        EXPECT_EQ(wreck.said.empty() ? 12U : rows.size(), 12U);
        EXPECT_THAT(jet::testing::faultsOfFile((wreck.folder / kFile).string()), ::testing::IsEmpty());
    });
}

TEST_F(CrashedCalibration, LoadingLeavesTheOldPointsOrTheNewOnesAndACopyOfTheOld)
{
    open("X");
    fill({1, 2});
    messages.files = {inFolder("other")};
    button("Command4").click();
    ASSERT_TRUE(QFile::exists(inFolder("other.mdb")));
    fill({2});
    grid().model()->setData(grid().model()->index(3, 1), "77");
    const auto before = tableRows(place(kFile), kTable);
    const auto other = tableRows(place("other.mdb"), kTable);
    ASSERT_NE(before, other);
    const auto recording = record([this] {
        messages.files = {inFolder("other.mdb")};
        button("Command3").click();
        say(status().toUtf8().constData());
    });
    const auto old = recording.before().at(kFile);
    recording.forEachWreck([&](const Wreck& wreck) {
        const auto rows = soundRows(wreck, kFile, kTable);
        EXPECT_EQ(wreck.files.at("other.mdb"), recording.before().at("other.mdb"));
        if (rows == before && wreck.said.empty()) return;
        EXPECT_EQ(rows, other);
        // the copy is on the disk before the new points have the name
        const auto copies = std::count_if(wreck.files.begin(), wreck.files.end(), [&](const auto& file) {
            return file.first.starts_with("XDirection.20") && file.second == old;
        });
        EXPECT_EQ(copies, 1);
    });
}

TEST_F(CrashedCalibration, SavingLeavesTheOldFileOrAWholeCopy)
{
    open("X");
    fill({1, 2});
    for (const bool replaces : {false, true}) {
        SCOPED_TRACE(replaces);
        if (replaces) grid().model()->setData(grid().model()->index(3, 1), "77");
        const auto recording = record([this] {
            messages.files = {inFolder("saved")};
            button("Command4").click();
            say(status().toUtf8().constData());
        });
        const auto& all = recording.after().at("saved.mdb");
        EXPECT_EQ(all, recording.after().at(kFile));
        recording.forEachWreck([&](const Wreck& wreck) {
            EXPECT_EQ(wreck.files.at(kFile), all);
            const auto saved = wreck.has("saved.mdb") ? wreck.files.at("saved.mdb") : std::string();
            const auto old = replaces ? recording.before().at("saved.mdb") : std::string();
            EXPECT_THAT(saved, ::testing::AnyOf(all, wreck.said.empty() ? old : all));
        });
    }
}

TEST_F(CrashedCalibration, RenewingAnOlderFileLeavesItOrTheNewOneAndTheOriginal)
{
    const auto original = calibration::olderFile();
    calibration::put(place(kFile), original);
    open("X");
    states.push_back(tableRows(place(kFile), kTable));
    const auto recording = record([this] {
        grid().model()->setData(grid().model()->index(4, 2), "4.5");
        done();
    });
    EXPECT_NE(recording.after().at(kFile), original);
    recording.forEachWreck([&](const Wreck& wreck) {
        if (wreck.files.at(kFile) == original) {
            EXPECT_TRUE(wreck.said.empty());
            return;
        }
        expectLastOrNext(wreck, soundRows(wreck, kFile, kTable));
        ASSERT_TRUE(wreck.has("XDirection.older.mdb"));
        EXPECT_EQ(wreck.files.at("XDirection.older.mdb"), original);
    });
}

TEST_F(CrashedCalibration, ACommandThatMeasuresLeavesTheRowOrNot)
{
    put(5, "x", 7.25);
    mscomm1.setPortOpen(false);
    const Recording recording(folder.path().toStdString(), "quorvelctl-factory",
                              {"--port", bus.device(), "--address", "5", "calibrate", "X", "--folder",
                               folder.path(), "measure", "--point", "2", "--dial", "3.5"});
    recording.forEachWreck([&](const Wreck& wreck) {
        if (!wreck.has(kFile)) {
            EXPECT_TRUE(wreck.said.empty());
            return;
        }
        const auto rows = soundRows(wreck, kFile, kTable);
        ASSERT_EQ(rows.size(), 11U);
        EXPECT_THAT(rows[2], ::testing::AnyOf("2,3.5,7.25", wreck.said.empty() ? "2,-,-" : "2,3.5,7.25"));
    });
}

} // namespace
} // namespace quorvel::test
