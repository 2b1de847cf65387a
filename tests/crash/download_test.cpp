#include "crash/reopened.h"
#include "support/program_run.h"
#include "windows/setauto_on_the_bus.h"

namespace quorvel::test {
namespace {

using ::testing::StartsWith;

constexpr auto kReceived = " records have been received.";

/// The rows of a record file, without its header row. One that is not whole fails the test.
std::vector<std::string> recordsIn(const Wreck& wreck, const std::string& name)
{
    if (!name.ends_with(".csv")) return soundRows(wreck, name, "data");
    const auto& text = wreck.files.at(name);
    // a row that no line feed ends is not one
    auto lines = linesOf(text.substr(0, text.rfind('\n') + 1));
    if (lines.empty()) return lines;
    EXPECT_EQ(lines.front(), "time,x,y");
    lines.erase(lines.begin());
    // the last one may have come in parts, with zeros for the others
    if (!lines.empty() && lines.back().find('\0') != std::string::npos) lines.pop_back();
    return lines;
}

/// A download of eight records that dies at any moment: all that were counted are in the file.
class CrashedDownload : public ::testing::TestWithParam<const char*> {
protected:
    QStringList arguments(const QStringList& more = {}) const
    {
        return QStringList({"--port", bus.device(), "--address", "5", "--progress", "download",
                            folder.filePath(chosen.c_str())}) +
               more;
    }

    /// @param isOld       whether the file is not there yet, or still the old one.
    /// @param rowsBefore  in the file that is continued.
    void look(const Recording& recording, const std::function<bool(const Wreck&)>& isOld,
              std::size_t rowsBefore = 0) const
    {
        const auto all = recordsIn({folder.path().toStdString(), recording.after(), {}, false, 0}, chosen);
        ASSERT_EQ(all.size(), 8U);
        const int looked = recording.forEachWreck([&](const Wreck& wreck) {
            const auto counted = static_cast<std::size_t>(numberBefore(wreck.said, kReceived));
            for (const auto& [name, content] : wreck.files)
                EXPECT_THAT(name, StartsWith("a.")) << "left over";
            if (isOld(wreck)) {
                EXPECT_EQ(counted, 0U);
                return;
            }
            const auto rows = recordsIn(wreck, chosen);
            EXPECT_GE(rows.size(), rowsBefore + counted);
            EXPECT_LE(rows.size(), rowsBefore + counted + 1);
            EXPECT_EQ(rows, first(rows.size(), all));
        });
        EXPECT_GT(looked, 15);
    }

    SimulatedBus bus{{"--fast", "--seed", "1", "--readout", "5:A", "--ring", "5:1000,10,18"}};
    QTemporaryDir folder;
    const std::string chosen = std::string("a.") + GetParam();
};

TEST_P(CrashedDownload, HasEveryRecordThatItCounted)
{
    const Recording recording(folder.path().toStdString(), "quorvelctl", arguments());
    look(recording, [&](const Wreck& wreck) { return !wreck.has(chosen); });
}

TEST_P(CrashedDownload, LeavesTheOldFileUntilTheNewOneIsWhole)
{
    QFile old(folder.filePath(chosen.c_str()));
    ASSERT_TRUE(old.open(QIODevice::WriteOnly) && old.write("old") == 3);
    old.close();
    const Recording recording(folder.path().toStdString(), "quorvelctl", arguments({"--force"}));
    look(recording, [&](const Wreck& wreck) {
        EXPECT_TRUE(wreck.has(chosen));
        const bool isOld = wreck.has(chosen) && wreck.files.at(chosen) == "old";
        const auto copies = std::count_if(wreck.files.begin(), wreck.files.end(), [&](const auto& file) {
            return file.first != chosen && file.second == "old";
        });
        EXPECT_TRUE(isOld || copies == 1 || numberBefore(wreck.said, kReceived) == 8)
            << "what was replaced is kept until the new file is complete";
        return isOld;
    });
}

TEST_P(CrashedDownload, ThatContinuesAFileKeepsItsRows)
{
    bus.command("set 5 ring 1000,10,15");
    const auto begun = runProgram("quorvelctl", arguments());
    ASSERT_EQ(begun.status, 0) << qPrintable(begun.err);
    bus.command("take 5 3");
    const Recording recording(folder.path().toStdString(), "quorvelctl", arguments({"--continue"}));
    look(
        recording, [](const Wreck&) { return false; }, 5);
}

TEST_P(CrashedDownload, IsContinuedBehindARowThatCameInParts)
{
    const Recording recording(folder.path().toStdString(), "quorvelctl", arguments());
    const auto whole = recordsIn({folder.path().toStdString(), recording.after(), {}, false, 0}, chosen);
    int continued = 0;
    recording.forEachWreck([&](const Wreck& wreck) {
        // a crash in the middle of the fifth row: the others are like it
        if (wreck.killed || numberBefore(wreck.said, kReceived) != 4 || ++continued > 4) return;
        auto file = arguments({"--continue"});
        file.replaceInStrings(folder.path(), QString::fromStdString(wreck.folder.string()));
        const auto rest = runProgram("quorvelctl", file);
        EXPECT_EQ(rest.status, 0) << qPrintable(rest.err);
        EXPECT_EQ(recordsIn({wreck.folder, filesIn(wreck.folder), {}, false, 0}, chosen), whole);
    });
    EXPECT_GT(continued, 1);
}

INSTANTIATE_TEST_SUITE_P(Quorvelctl, CrashedDownload, ::testing::Values("mdb", "csv"),
                         [](const auto& kind) { return std::string(kind.param); });

class CrashedDownloadOfTheWindow : public SetAutoOnTheBus,
                                   public ::testing::WithParamInterface<const char*> {};

TEST_P(CrashedDownloadOfTheWindow, HasEveryRecordThatItShowed)
{
    const auto name = std::string("a.") + GetParam();
    QObject::connect(&controls.progress(), &QProgressBar::valueChanged,
                     [](int received) { say((' ' + std::to_string(received) + kReceived).c_str()); });
    const Recording recording(folder.path().toStdString(), [&] { download(name.c_str()); });
    EXPECT_EQ(controls.Label3().text(), "Total 5 records. 5 records have been received.");
    recording.forEachWreck([&](const Wreck& wreck) {
        const auto counted = static_cast<std::size_t>(numberBefore(wreck.said, kReceived));
        const auto rows = wreck.has(name) ? recordsIn(wreck, name) : std::vector<std::string>();
        EXPECT_GE(rows.size(), counted);
        EXPECT_LE(rows.size(), counted + 1);
    });
}

INSTANTIATE_TEST_SUITE_P(Window, CrashedDownloadOfTheWindow, ::testing::Values("mdb", "csv"),
                         [](const auto& kind) { return std::string(kind.param); });

} // namespace
} // namespace quorvel::test
