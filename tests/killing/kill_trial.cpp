// kill_trial: kills downloads of the real programs at random moments. QUORVEL_KILLS says how often (tools/kill), and
// QUORVEL_SEED repeats a trial as far as the machine's speed allows.
#include "autoread/exported.h"
#include "killing/worked_program.h"
#include "support/simulated_bus.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <QThread>

#include <gmock/gmock.h>

#include <cstdio>
#include <fstream>
#include <random>

namespace quorvel::test {
namespace {

constexpr auto kReceived = " records have been received.";
constexpr int kDefaultKills = 20;
constexpr int kLongestWait = 1800; // ms, in which some ten records come

unsigned seed()
{
    static const unsigned chosen = [] {
        const auto wanted = qEnvironmentVariableIntValue("QUORVEL_SEED");
        const auto number =
            wanted > 0 ? static_cast<unsigned>(wanted) : std::random_device()() % 1'000'000 + 1;
        std::printf("Seed %u (QUORVEL_SEED=%u repeats it).\n", number, number);
        return number;
    }();
    return chosen;
}

int kills()
{
    return qEnvironmentVariableIsSet("QUORVEL_KILLS") ? qEnvironmentVariableIntValue("QUORVEL_KILLS")
                                                      : kDefaultKills;
}

/// The count shown last; 0 when none is.
int counted(const QString& shown)
{
    const auto end = shown.lastIndexOf(kReceived);
    return end < 0 ? 0 : shown.left(end).section(' ', -1).toInt();
}

/// A way to download, and the ending of the file.
struct Way {
    const char* name;
    bool window;
    const char* ending;
};

class Killed : public ::testing::TestWithParam<Way> {
protected:
    /// @return the records that were shown when it was killed after so many milliseconds.
    int killCommand(const QString& file, int moment)
    {
        QProcess process;
        process.start(programPath("quorvelctl"),
                      {"--port", bus.device(), "--address", "5", "download", "--progress", "--force", file});
        EXPECT_TRUE(process.waitForStarted());
        QThread::msleep(static_cast<unsigned long>(moment));
        process.kill();
        EXPECT_TRUE(process.waitForFinished());
        return counted(QString::fromUtf8(process.readAllStandardError()));
    }
    int killWindow(const QString& file, int moment)
    {
        WorkedProgram program("quorvel", bus.device(), folder.path());
        program.openPort(5);
        program.download(file);
        QThread::msleep(static_cast<unsigned long>(moment));
        program.kill();
        return counted(program.shown());
    }
    /// All records that were counted are in the file, and nothing else is.
    /// @param before  what was in the file that was to be replaced.
    void look(const QString& file, int shown, const std::string& before)
    {
        const auto path = std::filesystem::path(file.toStdString());
        if (!QFile::exists(file) || contents(path) == before) {
            EXPECT_EQ(shown, 0) << "the file is not there or still the old one";
            EXPECT_TRUE(before.empty() || QFile::exists(file)) << "neither the old file nor a new one";
            return;
        }
        const auto table = GetParam().ending == std::string("csv") ? contents(path) : exported(path);
        if (table.empty() && shown == 0) return;
        EXPECT_THAT(table, ::testing::StartsWith("time,x,y\n"));
        EXPECT_GE(rowsIn(table), shown);
        EXPECT_LE(rowsIn(table), shown + most);
        const auto length = std::min(table.size(), longest.size());
        EXPECT_EQ(table.substr(0, length), longest.substr(0, length)) << "other records than before";
        if (table.size() > longest.size()) longest = table;
    }

    SimulatedBus bus{{"--fast", "--seed", "1", "--readout", "5:A", "--ring", "5:1000,998,2"}};
    QTemporaryDir folder;
    std::string longest;
    int most = 1; ///< records that may be stored and not shown yet
};

TEST_P(Killed, DownloadKeepsEveryRecordThatItShowed)
{
    std::mt19937 chance(seed());
    // what a window has drawn is read out of it a little later
    most = GetParam().window ? 2 : 1;
    int counting = 0;
    const int rounds = std::max(1, kills() / 4);
    for (int round = 0; round < rounds && !HasFailure(); ++round) {
        const int moment = static_cast<int>(chance() % kLongestWait);
        SCOPED_TRACE(
            QStringLiteral("kill %1 after %2 ms, seed %3").arg(round).arg(moment).arg(seed()).toStdString());
        const auto file = folder.filePath(QStringLiteral("%1.%2").arg(round).arg(GetParam().ending));
        // every other one is to replace a file; the window would ask
        const std::string before = round % 2 == 0 && !GetParam().window ? "what was there before" : "";
        if (!before.empty()) std::ofstream(file.toStdString()) << before;
        const int shown = GetParam().window ? killWindow(file, moment) : killCommand(file, moment);
        look(file, shown, before);
        counting += shown > 0 ? 1 : 0;
    }
    std::printf("%s: %d kills, %d of them after a record was shown.\n", GetParam().name, rounds, counting);
    EXPECT_GE(counting, rounds / 4) << "too few kills hit a running download";
}

INSTANTIATE_TEST_SUITE_P(All, Killed,
                         ::testing::Values(Way{"CommandToDatabase", false, "mdb"},
                                           Way{"CommandToText", false, "csv"},
                                           Way{"WindowToDatabase", true, "mdb"},
                                           Way{"WindowToText", true, "csv"}),
                         [](const auto& way) { return std::string(way.param.name); });

} // namespace
} // namespace quorvel::test
