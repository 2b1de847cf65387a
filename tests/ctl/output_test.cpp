#include "calibration/database.h"
#include "calibration/datacontrol.h"
#include "support/program_run.h"
#include "support/simulated_bus.h"

#include <QProcess>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <unistd.h>

namespace quorvel::test {
namespace {

constexpr int kEndsWithin = 60'000; // ms

/// A command that prints. "DIR" in it is a folder with "a.mdb", the table of a download, and calibration files.
struct Printing {
    const char* name;
    QStringList arguments;
};

const Printing kPrinting[] = {
    {"Ports", {"ports"}},
    {"Search", {"search"}},
    {"Read", {"read"}},
    {"ReadAsJson", {"read", "--json"}},
    {"Watch", {"watch", "--every", "1"}},
    {"Auto", {"auto"}},
    {"Download", {"download", "DIR/new.csv"}},
    {"Settings", {"settings"}},
    {"SettingsSave", {"settings", "save", "DIR/s.json"}},
    {"Offset", {"offset", "X"}},
    {"Reference", {"reference", "X"}},
    {"Feature", {"feature"}},
    {"Invert", {"invert", "X"}},
    {"Swap", {"swap"}},
    {"Wire", {"wire"}},
    {"Clock", {"clock"}},
    {"Grayscale", {"grayscale", "X"}},
    {"MdbTables", {"mdb", "DIR/a.mdb"}},
    {"MdbRows", {"mdb", "DIR/a.mdb", "data"}},
    {"MdbRowsAsJson", {"mdb", "DIR/a.mdb", "data", "--json"}},
    {"CalibrateShow", {"calibrate", "X", "--folder", "DIR"}},
    {"CalibrateMeasure", {"calibrate", "X", "--folder", "DIR", "measure", "--point", "2"}},
    {"CalibrateFit", {"calibrate", "X", "--folder", "DIR", "fit"}},
    {"CalibrateDownload", {"calibrate", "X", "--folder", "DIR", "download"}},
    {"Stitching", {"stitching", "--type", "B"}},
};

class Output : public ::testing::TestWithParam<Printing> {
protected:
    Output()
    {
        const auto file = folder.filePath("XDirection.mdb").toStdString();
        EXPECT_TRUE(calibration::CreateCalibrationDatabase(file));
        calibration::DataControl data;
        data.setDatabaseName(file);
        EXPECT_TRUE(data.Refresh());
        for (int row = 0; row < data.rowCount(); ++row)
            EXPECT_TRUE(data.write(row, {{"Rule_Data", row}, {"X_Data", row + 0.5}}));
    }
    /// Makes the table that `mdb` prints.
    void downloadFirst()
    {
        const auto made = runProgram(
            "quorvelctl", {"--port", bus.device(), "--address", "5", "download", folder.filePath("a.mdb")});
        ASSERT_EQ(made.status, 0) << qPrintable(made.err);
    }
    void run()
    {
        if (GetParam().arguments.first() == "mdb") downloadFirst();
        auto arguments = GetParam().arguments;
        arguments.replaceInStrings("DIR", folder.path());
        process.setStandardInputFile(QProcess::nullDevice());
        process.start(programPath("quorvelctl-factory"),
                      QStringList{"--port", bus.device(), "--address", "5"} + arguments);
        ASSERT_TRUE(process.waitForFinished(kEndsWithin)) << qPrintable(process.errorString());
    }
    /// It ended in order, and said what was wrong once.
    void expectToldOnce(const char* reason)
    {
        EXPECT_EQ(process.exitStatus(), QProcess::NormalExit);
        EXPECT_EQ(process.exitCode(), 1);
        const auto told = QString::fromUtf8(process.readAllStandardError());
        EXPECT_EQ(told.count(reason), 1) << qPrintable(told);
    }

    SimulatedBus bus{{"--fast", "--seed", "1", "--readout", "5:B", "--ring", "5:1000,0,3"}};
    QTemporaryDir folder;
    QProcess process;
};

TEST_P(Output, ThatAFullDiskRefusesIsAFailure)
{
    process.setStandardOutputFile("/dev/full");
    run();
    expectToldOnce("No space left on device");
}

TEST_P(Output, ThatNobodyReadsIsAFailure)
{
    int ends[2] = {-1, -1};
    ASSERT_EQ(::pipe(ends), 0);
    ::close(ends[0]);
    process.setChildProcessModifier([&ends] { ::dup2(ends[1], STDOUT_FILENO); });
    run();
    ::close(ends[1]);
    expectToldOnce("Broken pipe");
}

INSTANTIATE_TEST_SUITE_P(Of, Output, ::testing::ValuesIn(kPrinting),
                         [](const auto& command) { return std::string(command.param.name); });

} // namespace
} // namespace quorvel::test
