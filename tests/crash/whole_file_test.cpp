#include "crash/recording.h"
#include "files/replace.h"
#include "support/program_run.h"
#include "windows/grayscalechart_on_the_bus.h"

#include <QFile>

#include <gmock/gmock.h>

namespace quorvel::test {
namespace {

constexpr auto kOld = "what was there before";

void put(const QString& path, const char* content)
{
    QFile file(path);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly) && file.write(content) > 0);
}

/// Whatever was left of a file that is written as a whole: nothing or the old one, or the new one down to its last byte;
/// and the new one once `done` has been said. What was left beside it is not in the way of the next attempt.
void expectOldOrNew(const Recording& recording, const std::string& chosen, const std::string& done)
{
    const auto& all = recording.after().at(chosen);
    ASSERT_NE(all, kOld);
    const bool replaces = recording.before().contains(chosen);
    bool everOld = false;
    bool everNew = false;
    recording.forEachWreck([&](const Wreck& wreck) {
        const bool isDone = !wreck.said.empty() && wreck.said.back().find(done) != std::string::npos;
        const bool isNew = wreck.has(chosen) && wreck.files.at(chosen) == all;
        everNew = everNew || isNew;
        everOld = everOld || !isNew;
        EXPECT_TRUE(isNew || !isDone);
        EXPECT_TRUE(wreck.has(chosen) || !replaces);
        if (wreck.has(chosen) && !isNew) {
            ASSERT_TRUE(replaces) << "half a file of " << wreck.files.at(chosen).size() << " bytes";
            EXPECT_EQ(wreck.files.at(chosen), kOld);
        }
        if (!wreck.sampled(10)) return;
        EXPECT_TRUE(files::replaceContent(wreck.folder / chosen, "again"));
        EXPECT_EQ(filesIn(wreck.folder).at(chosen), "again");
    });
    EXPECT_TRUE(everOld && everNew);
}

/// A command of `quorvelctl` that writes one file.
struct Command {
    const char* name;
    const char* file;
    QStringList arguments; ///< in front of the file
    const char* force;     ///< what allows to replace
};

class CrashedCommand : public ::testing::TestWithParam<Command> {
protected:
    void look(bool replaces)
    {
        const auto& command = GetParam();
        const auto file = folder.filePath(command.file);
        if (replaces) put(file, kOld);
        const auto arguments = QStringList({"--port", bus.device(), "--address", "5"}) + command.arguments +
                               QStringList{file, command.force};
        expectOldOrNew(Recording(folder.path().toStdString(), "quorvelctl", arguments), command.file,
                       command.file);
    }

    SimulatedBus bus{{"--fast", "--seed", "1", "--readout", "5:A"}};
    QTemporaryDir folder;
};

TEST_P(CrashedCommand, LeavesAWholeFileOrNone) { look(false); }
TEST_P(CrashedCommand, LeavesTheOldFileOrTheNewOne) { look(true); }

INSTANTIATE_TEST_SUITE_P(
    Quorvelctl, CrashedCommand,
    ::testing::Values(Command{"Settings", "s.json", {"settings", "save"}, "--force"},
                      Command{"PixelsAsDatabase", "x.mdb", {"grayscale", "X", "--data"}, "--force"},
                      Command{"PixelsAsText", "x.csv", {"grayscale", "X", "--data"}, "--force"}),
    [](const auto& command) { return std::string(command.param.name); });

/// The program that draws for `quorvelctl`, which says that the file is saved when this one has ended.
class CrashedDrawing : public ::testing::TestWithParam<const char*> {
protected:
    void look(bool replaces)
    {
        put(pixels.filePath("x"), "12\n200\n30\n");
        const auto file = folder.filePath(GetParam());
        if (replaces) put(file, kOld);
        const Recording recording(folder.path().toStdString(), "quorvelctl-draw", {"X", "A", file},
                                  pixels.filePath("x"));
        expectOldOrNew(recording, GetParam(), GetParam());
    }

    QTemporaryDir pixels;
    QTemporaryDir folder;
};

TEST_P(CrashedDrawing, LeavesAWholeFileOrNone) { look(false); }
TEST_P(CrashedDrawing, LeavesTheOldFileOrTheNewOne) { look(true); }

INSTANTIATE_TEST_SUITE_P(Quorvelctl, CrashedDrawing, ::testing::Values("x.jpg", "x.png"),
                         [](const auto& file) { return std::string(file.param).substr(2); });

class CrashedGrayScaleChart : public GrayScaleChartOnTheBus,
                              public ::testing::WithParamInterface<const char*> {
protected:
    void look(bool replaces)
    {
        const std::string chosen = GetParam();
        auto& window = open("X");
        if (replaces) put(file(GetParam()), kOld);
        messages.files.push_back(file(GetParam()));
        messages.answers = {true};
        auto& button = chosen.ends_with(".jpg") ? window.saveGraph() : window.saveData();
        const Recording recording(folder.path().toStdString(), [&] {
            button.click();
            say("saved");
        });
        EXPECT_EQ(messages.shown.size(), replaces && !chosen.ends_with(".jpg") ? 1 : 0);
        expectOldOrNew(recording, chosen, "saved");
    }
};

TEST_P(CrashedGrayScaleChart, LeavesAWholeFileOrNone) { look(false); }
TEST_P(CrashedGrayScaleChart, LeavesTheOldFileOrTheNewOne) { look(true); }

INSTANTIATE_TEST_SUITE_P(Window, CrashedGrayScaleChart, ::testing::Values("x.mdb", "x.csv", "x.jpg"),
                         [](const auto& file) { return std::string(file.param).substr(2); });

} // namespace
} // namespace quorvel::test
