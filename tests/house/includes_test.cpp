#include "house/house.h"

#include <fstream>
#include <string>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace quorvel::house {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::UnorderedElementsAre;

const std::filesystem::path kProject = QUORVEL_ROOT;

TEST(House, EveryIncludeFollowsTheArrows) { EXPECT_THAT(wrongIncludes(kProject), IsEmpty()); }

TEST(House, NoFileIsLongerThanFourHundredLines) { EXPECT_THAT(tooLong(kProject), IsEmpty()); }

// Who writes a file writes it by these; each way dies at every moment in tests/crash.
TEST(House, FilesAreWrittenInFewPlaces)
{
    EXPECT_THAT(writers(kProject),
                UnorderedElementsAre("files/disk_posix.cpp", "files/disk_windows.cpp", "jet/file_posix.cpp",
                                     "jet/file_windows.cpp", "autoread/csv_file.cpp", "line/linefile.cpp",
                                     "link/device_linux.cpp", "link/comport_windows.cpp", // the serial port
                                     "chart/export.cpp", "page/page.cpp"));               // memory
}

TEST(House, ArrowsOnlyGoDown)
{
    EXPECT_TRUE(onlyGoesDown(arrows()));
    EXPECT_FALSE(onlyGoesDown({{"text", {"link"}}, {"link", {"text"}}}));
    EXPECT_FALSE(onlyGoesDown({{"text", {"main"}}, {"link", {"text"}}, {"main", {"link"}}}));
}

/// A small house in a folder of its own, to break the rules in.
class SmallHouse : public testing::Test {
protected:
    void SetUp() override
    {
        const auto* test = testing::UnitTest::GetInstance()->current_test_info();
        root_ = std::filesystem::path(testing::TempDir()) / (std::string("small_house_") + test->name());
        std::filesystem::remove_all(root_);
        write("src/text/number.h", "#pragma once\n#include <string>\n");
        write("src/main/form1.cpp",
              "#include \"link/bench.h\"\n#include \"ui_form1.h\"\n#include <QMessageBox>\n");
    }

    void TearDown() override { std::filesystem::remove_all(root_); }

    void write(const std::string& file, const std::string& text)
    {
        std::filesystem::create_directories((root_ / file).parent_path());
        std::ofstream(root_ / file) << text;
    }

    std::vector<std::string> wrong() { return wrongIncludes(root_); }

    std::filesystem::path root_;
};

TEST_F(SmallHouse, IsInOrder) { EXPECT_THAT(wrong(), IsEmpty()); }

TEST_F(SmallHouse, ReachingUpIsFound)
{
    write("src/link/bench.cpp", "#include <vector>\n\n  #  include \"main/form1.h\"\n");
    EXPECT_THAT(wrong(), ElementsAre("src/link/bench.cpp:3: link must not include main"));
}

TEST_F(SmallHouse, AnAngleIncludeOfOursIsFoundToo)
{
    write("src/link/bench.cpp", "#include <main/form1.h>\n");
    EXPECT_THAT(wrong(), ElementsAre("src/link/bench.cpp:1: link must not include main"));
}

TEST_F(SmallHouse, RoomsOfOneFloorDoNotKnowEachOther)
{
    write("src/settings/form4.cpp", "#include \"main/messages.h\"\n#include \"autoread/setauto.h\"\n");
    EXPECT_THAT(wrong(), ElementsAre("src/settings/form4.cpp:2: settings must not include autoread"));
}

TEST_F(SmallHouse, SettingsUsesNoDatabase)
{
    write("src/settings/form4.cpp", "#include \"jet/database.h\"\n");
    write("src/autoread/setauto.cpp", "#include \"jet/database.h\"\n");
    EXPECT_THAT(wrong(), ElementsAre("src/settings/form4.cpp:1: settings must not include jet"));
}

TEST_F(SmallHouse, OfTheDatabaseFilesOnlyTheSurfaceIsIncluded)
{
    write("src/autoread/mdb_file.cpp", "#include \"jet/database.h\"\n#include \"jet/pager.h\"\n");
    EXPECT_THAT(wrong(), ElementsAre("src/autoread/mdb_file.cpp:2: \"jet/pager.h\" is for jet alone"));
}

TEST_F(SmallHouse, TheProtocolKnowsNoWidget)
{
    write("src/protocol/offset.cpp", "#include <QString>\n#include <QLabel>\n");
    EXPECT_THAT(wrong(), ElementsAre("src/protocol/offset.cpp:2: protocol knows no widget and no port"));
}

TEST_F(SmallHouse, TheCommandLineToolKnowsNoWindow)
{
    write("src/ctl/main.cpp",
          "#include \"protocol/command.h\"\n#include \"main/form1.h\"\n#include \"app/options.h\"\n");
    EXPECT_THAT(wrong(), ElementsAre("src/ctl/main.cpp:2: ctl must not include main",
                                     "src/ctl/main.cpp:3: ctl must not include app"));
}

TEST_F(SmallHouse, TextAndJetKnowNoLibraryOfWindowsOrPorts)
{
    write("src/jet/file.cpp", "#include <QFile>\n");
    write("src/text/number.h", "#include <termios.h>\n#include \"jet/file.h\"\n");
    EXPECT_THAT(wrong(), ElementsAre("src/jet/file.cpp:1: jet knows no widget and no serial port",
                                     "src/text/number.h:1: text knows no widget and no serial port",
                                     "src/text/number.h:2: text must not include jet"));
}

TEST_F(SmallHouse, BoxesAreAskedForThroughTheSeam)
{
    write("src/settings/form4.cpp", "#include <QMessageBox>\n#include <QInputDialog>\n");
    write("src/link/device.cpp", "#include <QFileDialog>\n");
    EXPECT_THAT(wrong(), ElementsAre("src/link/device.cpp:1: link opens no box",
                                     "src/settings/form4.cpp:1: settings asks for boxes and devices through "
                                     "what it is given",
                                     "src/settings/form4.cpp:2: settings asks for boxes and devices through "
                                     "what it is given"));
}

TEST_F(SmallHouse, SimulatorAndProgramShareNothing)
{
    write("sim/main.cpp",
          "#include \"sim/wire.h\"\n#include \"text/number.h\"\n#include \"../src/text/number.h\"\n");
    write("src/app/main.cpp", "#include \"sim/wire.h\"\n");
    EXPECT_THAT(wrong(), ElementsAre("src/app/main.cpp:1: app must not include sim",
                                     "sim/main.cpp:2: sim must not include text",
                                     "sim/main.cpp:3: an include is written from src/, without \"..\""));
}

TEST_F(SmallHouse, AnIncludeThatHidesItsFileIsFound)
{
    write("src/app/main.cpp",
          "#include HEADER\n#include \"elsewhere/thing.h\"\n#include \"text/../jet/x.h\"\n");
    EXPECT_THAT(wrong(), ElementsAre("src/app/main.cpp:1: an include names its file",
                                     "src/app/main.cpp:2: \"elsewhere\" is no folder of ours",
                                     "src/app/main.cpp:3: an include is written from src/, without \"..\""));
}

TEST_F(SmallHouse, AFolderThatNobodyDrewIsFound)
{
    write("src/cellar/wine.cpp", "#include <string>\n");
    EXPECT_THAT(wrong(), ElementsAre("src/cellar/wine.cpp:1: src/cellar is not in the drawing"));
}

TEST_F(SmallHouse, WithoutSourcesIsNoHouse)
{
    const auto empty = root_ / "empty";
    EXPECT_THAT(wrongIncludes(empty), ElementsAre(empty.string() + " holds no sources"));
}

TEST_F(SmallHouse, ALongFileIsFoundAndThePermittedLengthIsNot)
{
    write("tests/text/number_test.cpp", std::string(400, '\n'));
    EXPECT_THAT(tooLong(root_), IsEmpty());
    write("tests/text/number_test.cpp", std::string(401, '\n'));
    write("sim/main.h", "one\ntwo\nthree");
    EXPECT_THAT(tooLong(root_), ElementsAre("tests/text/number_test.cpp has 401 lines"));
    EXPECT_THAT(tooLong(root_, 2), ElementsAre("src/main/form1.cpp has 3 lines", "sim/main.h has 3 lines",
                                               "tests/text/number_test.cpp has 401 lines"));
}

} // namespace
} // namespace quorvel::house
