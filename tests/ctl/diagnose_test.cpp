#include "support/program_run.h"
#include "support/simulated_bus.h"

#include <QFile>
#include <QHash>
#include <QJsonDocument>
#include <QRegularExpression>
#include <QSet>

#include <gtest/gtest.h>

#include <memory>
#include <vector>

namespace quorvel::test {
namespace {

constexpr int kAtOnce = 8;
constexpr int kDiagnosisTime = 120'000; // ms

/// The cells of the rows of a table below a heading of a page.
std::vector<QStringList> tableBelow(const QString& page, const QString& heading)
{
    QFile file(QStringLiteral(QUORVEL_ROOT "/docs/") + page);
    EXPECT_TRUE(file.open(QIODevice::ReadOnly)) << qPrintable(page);
    const auto text = QString::fromUtf8(file.readAll());
    const auto at = text.indexOf(u'\n' + heading + u'\n');
    EXPECT_GE(at, 0) << qPrintable(heading);
    std::vector<QStringList> rows;
    for (const auto& line : text.mid(at + 1).split(u'\n')) {
        if (line.startsWith(u'#') && line != heading) break;
        if (!line.startsWith(u'|')) continue;
        auto cells = line.split(u'|');
        for (auto& cell : cells) {
            cell = cell.trimmed();
        }
        rows.push_back(cells.mid(1, cells.size() - 2));
    }
    // the headings, and the line below them
    if (rows.size() >= 2) rows.erase(rows.begin(), rows.begin() + 2);
    return rows;
}

QString plain(QString code) { return code.remove(u'`'); }

/// One diagnosis of a bus with one fault, running.
struct Trial {
    QStringList row;
    std::unique_ptr<SimulatedBus> bus;
    std::unique_ptr<QProcess> tool;
};

Trial start(const QStringList& row)
{
    QStringList arguments{"--fast", "--seed", "1", "--readout", "5:A", "--readout", "12:C"};
    if (row[0].startsWith(u'`')) arguments << "--fault" << plain(row[0]);
    Trial trial{row, std::make_unique<SimulatedBus>(arguments), std::make_unique<QProcess>()};
    trial.tool->start(programPath("quorvelctl"),
                      QStringList{"--port", trial.bus->device(), "--json", "diagnose"} +
                          plain(row[1]).split(u' ', Qt::SkipEmptyParts));
    return trial;
}

/// The exit status of a verdict; that of all which speak of damaged answers is 5.
int statusOf(const QString& verdict)
{
    static const QHash<QString, int> others{
        {"no fault found", 0},  {"line good", 0},      {"port closed", 3},       {"port lost", 3},
        {"nothing answers", 4}, {"readout silent", 4}, {"search unanswered", 4}, {"one command silent", 4},
        {"now and then", 4},    {"late", 4},           {"another readout", 1},   {"wrong type", 1}};
    return others.value(verdict, 5);
}

void expectVerdict(Trial& trial)
{
    const auto what = trial.row.join(QStringLiteral(" | "));
    ASSERT_TRUE(trial.tool->waitForFinished(kDiagnosisTime)) << qPrintable(what);
    const auto lines = trial.tool->readAllStandardOutput().trimmed().split('\n');
    const auto verdict = QJsonDocument::fromJson(lines.last()).object();
    const auto name = verdict["verdict"].toString();
    const auto expected = QString(trial.row[2]).section(u':', 0, 0).split(QStringLiteral(" / "));
    EXPECT_TRUE(expected.contains(name)) << qPrintable(what) << ": " << lines.last().constData();
    EXPECT_FALSE(verdict["what"].toString().isEmpty()) << qPrintable(what);
    EXPECT_FALSE(verdict["next"].toString().isEmpty()) << qPrintable(what);
    EXPECT_FALSE(lines.last().contains('{' + QByteArray("detail"))) << lines.last().constData();
    EXPECT_EQ(trial.tool->exitCode(), statusOf(name)) << qPrintable(what);
    // A fault that is not found is one of those that the verdict says it cannot tell.
    const auto unknown = verdict["unknown"].toString();
    if (name == "no fault found") {
        for (const auto* untold : {"records", "pixels", "settings", "search", "digit"}) {
            EXPECT_TRUE(unknown.contains(QLatin1String(untold))) << qPrintable(unknown);
        }
    }
    for (const auto& frame : trial.bus->frames()) {
        static const QRegularExpression harmless(QStringLiteral("^:(FF01|0[0-9A-F](76|2101|2102|04))FF$"));
        EXPECT_TRUE(harmless.match(frame).hasMatch()) << qPrintable(frame);
    }
}

// The page is what users go by: every fault of the simulated bus is in it, and leads to the verdict that it says.
TEST(Diagnose, FindsWhatThePageSaysForEveryFaultOfTheSimulatedBus)
{
    const auto rows = tableBelow("line.md", "### What is found");
    ASSERT_GE(rows.size(), 20U);
    for (std::size_t first = 0; first < rows.size(); first += kAtOnce) {
        std::vector<Trial> trials;
        for (auto i = first; i < std::min(first + kAtOnce, rows.size()); ++i) {
            ASSERT_EQ(rows[i].size(), 3) << qPrintable(rows[i].join(u'|'));
            trials.push_back(start(rows[i]));
        }
        for (auto& trial : trials) {
            expectVerdict(trial);
        }
    }
}

TEST(Diagnose, ThePageHasARowForEveryFaultOfTheSimulatedBus)
{
    QSet<QString> found;
    for (const auto& row : tableBelow("line.md", "### What is found")) {
        found << plain(row[0]).section(u'@', 0, 0);
    }
    const auto kinds = tableBelow("simulator.md", "## Faults");
    ASSERT_GE(kinds.size(), 13U);
    for (const auto& row : kinds) {
        EXPECT_TRUE(found.contains(plain(row[0])))
            << qPrintable(row[0]) << " is missing below \"What is found\" in docs/line.md";
    }
}

/// `quorvelctl` before readouts 5 (type A) and 12 (type C).
class DiagnoseOnTheBus : public ::testing::Test {
protected:
    ProgramRun run(const QStringList& arguments)
    {
        return runProgram("quorvelctl", QStringList{"--port", bus.device()} + arguments);
    }

    SimulatedBus bus{{"--fast", "--seed", "1", "--readout", "5:A", "--readout", "12:C"}};
};

TEST_F(DiagnoseOnTheBus, SaysStepsFaultAndNextStepInWords)
{
    const auto ended = run({"diagnose", "--progress", "--address", "7"});
    EXPECT_EQ(ended.status, 4);
    const auto lines = ended.lines();
    ASSERT_EQ(lines.size(), 10) << qPrintable(ended.out);
    const QStringList steps{
        "Port: ", "Adapter: ", "Noise: ", "Search: ", "Readout: ", "Other readouts: ", "Type: "};
    for (int i = 0; i < steps.size(); ++i) {
        EXPECT_TRUE(lines[i].startsWith(steps[i])) << qPrintable(lines[i]);
    }
    EXPECT_EQ(lines[3], "Search: Answers: 5 and 12.");
    EXPECT_EQ(lines[7],
              "Most likely: Readout 7 does not answer. 5 and 12 answered the search, so port, adapter "
              "and line are good.");
    EXPECT_TRUE(lines[8].startsWith("Next step: ")) << qPrintable(lines[8]);
    EXPECT_TRUE(lines[9].startsWith("Not known: ")) << qPrintable(lines[9]);
    EXPECT_TRUE(ended.err.contains("s left")) << qPrintable(ended.err);
}

TEST_F(DiagnoseOnTheBus, EachIsFoundWithItsTypeOneByOne)
{
    const auto found = run({"search", "--each", "4-13"});
    EXPECT_EQ(found.status, 0) << qPrintable(found.err);
    const auto lines = found.lines();
    ASSERT_EQ(lines.size(), 2) << qPrintable(found.out);
    EXPECT_TRUE(QRegularExpression("^05  [\\d.]+ ms  type A, B or D$").match(lines[0]).hasMatch())
        << qPrintable(lines[0]);
    EXPECT_TRUE(QRegularExpression("^12  [\\d.]+ ms  type C$").match(lines[1]).hasMatch())
        << qPrintable(lines[1]);
    EXPECT_EQ(bus.frames().filter(QRegularExpression("76FF$")).size(), 10) << "one question each";
}

TEST_F(DiagnoseOnTheBus, TwoReadoutsWithOneAddressAreSuspected)
{
    bus.fault("twice@5/*");
    const auto found = run({"--json", "search", "--each", "5"});
    const auto readout = QJsonDocument::fromJson(found.out.toUtf8());
    EXPECT_EQ(readout["address"].toInt(), 5) << qPrintable(found.out);
    EXPECT_TRUE(readout["remark"].toString().startsWith("Two readouts with this address?"));
    EXPECT_GE(readout["answerMs"].toDouble(-1), 0);
}

TEST_F(DiagnoseOnTheBus, ARangeWithoutReadoutsIsExitStatus4)
{
    const auto found = run({"search", "--each", "6-8"});
    EXPECT_EQ(found.status, 4);
    EXPECT_EQ(found.out, "");
    EXPECT_TRUE(found.err.endsWith("No Sensors(or MCU) Found\n")) << qPrintable(found.err);
}

TEST_F(DiagnoseOnTheBus, ASearchThatLosesItsPortFindsNotNothing)
{
    bus.fault("hangup@01");
    const auto found = run({"search"});
    EXPECT_EQ(found.status, 3);
    EXPECT_TRUE(found.err.endsWith("\nThe search was broken off.\n")) << qPrintable(found.err);
    EXPECT_FALSE(found.err.contains("No Sensors")) << qPrintable(found.err);
}

TEST_F(DiagnoseOnTheBus, ASearchOneByOneThatLosesItsPortFindsNotNothing)
{
    bus.fault("hangup@76");
    const auto found = run({"search", "--each", "5-8"});
    EXPECT_EQ(found.status, 3);
    EXPECT_TRUE(found.err.endsWith("The search was broken off.\n")) << qPrintable(found.err);
    EXPECT_FALSE(found.err.contains("No Sensors")) << qPrintable(found.err);
}

TEST_F(DiagnoseOnTheBus, ARangeThatIsNoneIsExitStatus2)
{
    for (const auto* range : {"0-5", "5-250", "9-7", "x", "5-", "-5", "1-2-3"}) {
        EXPECT_EQ(run({"search", QStringLiteral("--each=%1").arg(range)}).status, 2) << range;
    }
    EXPECT_EQ(run({"diagnose", "--address", "0"}).status, 2);
    EXPECT_TRUE(bus.frames().isEmpty());
}

TEST_F(DiagnoseOnTheBus, ALostPortIsToldOnceAndInTheWordsOfTheCommandLine)
{
    bus.fault("hangup@01");
    const auto ended = run({"--address", "5", "--json", "diagnose"});
    EXPECT_EQ(ended.status, 3);
    EXPECT_EQ(ended.err, "");
    EXPECT_FALSE(ended.out.contains("error")) << "a finding, not an error: " << qPrintable(ended.out);
    const auto what = QJsonDocument::fromJson(ended.lines().last().toUtf8())["what"].toString();
    EXPECT_TRUE(what.contains(" is gone (")) << qPrintable(what);
    EXPECT_TRUE(what.endsWith("Check the adapter and the cable, then run the command again."))
        << qPrintable(what);
}

TEST(DiagnoseWithoutBus, AMissingPortIsTheVerdict)
{
    const auto ended = runProgram("quorvelctl", {"--port", "/dev/ttyNowhere", "--json", "diagnose"});
    EXPECT_EQ(ended.status, 3);
    const auto verdict = QJsonDocument::fromJson(ended.lines().last().toUtf8());
    EXPECT_EQ(verdict["verdict"], "port closed");
    EXPECT_EQ(verdict["what"],
              "/dev/ttyNowhere does not exist. Plug the adapter in, or name another port with --port; "
              "quorvelctl ports lists them.");
}

} // namespace
} // namespace quorvel::test
