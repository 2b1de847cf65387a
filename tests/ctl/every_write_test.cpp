#include "calibration/calibration_files.h"
#include "ctl/commands.h"
#include "ctl/console.h"
#include "protocol/command.h"
#include "support/simulated_bus.h"

#include <QFile>
#include <QJsonDocument>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <set>
#include <string>
#include <vector>

namespace quorvel::ctl {
namespace {

using Words = std::vector<std::string>;

/// What sets or deletes something, each with the readout 33 addressed. FOLDER is that of the calibration files.
const std::vector<Words> kWrites{{"clock", "now"},
                                 {"auto", "1h"},
                                 {"clear", "--yes"},
                                 {"calibrate", "--folder", "FOLDER", "X", "download"},
                                 {"calibrate", "--folder", "FOLDER", "Y", "download"},
                                 {"calibrate", "--folder", "FOLDER", "Z", "download"},
                                 {"wire", "1", "1"},
                                 {"offset", "X", "1"},
                                 {"offset", "Y", "1"},
                                 {"offset", "Z", "1"},
                                 {"feature", "on"},
                                 {"swap", "on"},
                                 {"invert", "X", "on"},
                                 {"invert", "Y", "on"},
                                 {"invert", "Z", "on"},
                                 {"stitching", "1234"},
                                 {"address", "34"}};

/// `quorvelctl-factory` before a readout of type C, with a journal of its own.
class EveryWrite : public ::testing::Test {
protected:
    EveryWrite()
    {
        qputenv("XDG_DATA_HOME", data.path().toLocal8Bit());
        for (const auto* direction : {"X", "Y", "Z"}) {
            calibration::makeFilledFile(folder.path().toStdString(),
                                        *calibration::directionOf(QLatin1String(direction)));
        }
    }
    ~EveryWrite() override
    {
        if (formerHome.isNull()) {
            qunsetenv("XDG_DATA_HOME");
        } else {
            qputenv("XDG_DATA_HOME", formerHome);
        }
    }

    int run(Words words, const std::vector<const char*>& options = {})
    {
        words.insert(words.begin(), {"quorvelctl-factory", "--address", "33", "--type", "C", "--port",
                                     bus.device().toStdString()});
        words.insert(words.end(), options.begin(), options.end());
        std::vector<const char*> arguments;
        for (auto& word : words) {
            if (word == "FOLDER") word = folder.path().toStdString();
            arguments.push_back(word.c_str());
        }
        Console console(QStringLiteral("FACTORY"), [] { return std::vector<link::PortInfo>(); });
        testing::internal::CaptureStdout();
        testing::internal::CaptureStderr();
        const int status = runCommandLine(console, static_cast<int>(arguments.size()), arguments.data(),
                                          addCalibrationCommands);
        testing::internal::GetCapturedStdout();
        said = testing::internal::GetCapturedStderr();
        return status;
    }
    /// The command digits in the journal.
    std::set<std::string> booked() const
    {
        std::set<std::string> all;
        QFile file(data.filePath("quorvel/journal.jsonl"));
        if (!file.open(QIODevice::ReadOnly)) return all;
        while (!file.atEnd()) {
            all.insert(QJsonDocument::fromJson(file.readLine())["command"].toString().toStdString());
        }
        return all;
    }
    /// Those that change a readout, by the table.
    static std::set<std::string> changing()
    {
        std::set<std::string> all;
        for (const auto& row : protocol::commands()) {
            if (row.kind == link::Kind::Set || row.kind == link::Kind::Delete) all.emplace(row.digits);
        }
        return all;
    }

    const QByteArray formerHome = qgetenv("XDG_DATA_HOME");
    QTemporaryDir data;
    QTemporaryDir folder;
    test::SimulatedBus bus{{"--fast", "--seed", "1", "--readout", "33:C"}};
    std::string said; ///< on stderr, by the last run
};

// A new command cannot be forgotten: the list above has to reach all of the table.
TEST_F(EveryWrite, OfTheCommandLineIsBooked)
{
    for (const auto& words : kWrites) {
        EXPECT_EQ(run(words), 0) << words.front() << ": " << said;
    }
    EXPECT_EQ(booked(), changing());
}

TEST_F(EveryWrite, OfTheCommandLineIsRefusedByReadOnly)
{
    bus.frames();
    for (const auto& words : kWrites) {
        EXPECT_EQ(run(words, {"--read-only"}), 6) << words.front();
        EXPECT_NE(said.find("Read Only is on: nothing was sent."), std::string::npos)
            << words.front() << ": " << said;
    }
    for (const auto& words : {Words{"reset", "--yes"}, {"reference", "X", "1"}}) {
        EXPECT_EQ(run(words, {"--read-only"}), 6) << words.front();
    }
    const auto changes = changing();
    for (const auto& frame : bus.frames()) {
        for (const auto& digits : changes) {
            EXPECT_FALSE(frame.mid(3).startsWith(QString::fromStdString(digits))) << qPrintable(frame);
        }
    }
    EXPECT_TRUE(booked().empty());
}

} // namespace
} // namespace quorvel::ctl
