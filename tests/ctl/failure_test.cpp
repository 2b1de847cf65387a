#include "ctl/failure.h"

#include "support/program_run.h"
#include "support/simulated_bus.h"

#include <QFile>
#include <QJsonDocument>
#include <QJsonObject>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <set>

namespace quorvel::test {
namespace {

TEST(Failures, HaveAKindEach)
{
    std::set<std::string_view> kinds;
    for (const auto& row : ctl::kFailures) {
        EXPECT_TRUE(kinds.insert(row.kind).second) << row.kind;
        EXPECT_NE(row.status, ctl::ExitStatus::Done) << row.kind;
        EXPECT_EQ(&ctl::rowOf(row.failure), &row) << row.kind;
    }
}

// The page is what scripts are written by.
TEST(Failures, AreAllInTheManual)
{
    QFile page(QStringLiteral(QUORVEL_ROOT "/docs/quorvelctl.md"));
    ASSERT_TRUE(page.open(QIODevice::ReadOnly));
    const auto text = page.readAll().toStdString();
    for (const auto& row : ctl::kFailures) {
        const auto line = "\n| `" + std::string(row.kind) + "` | " +
                          std::to_string(static_cast<int>(row.status)) + " | " + std::string(row.meaning) +
                          " |\n";
        EXPECT_NE(text.find(line), std::string::npos) << line;
    }
}

link::Exchange exchangeThat(link::Outcome outcome, link::Kind kind = link::Kind::Query,
                            const std::string& reply = {})
{
    link::Exchange exchange;
    exchange.transaction.frame = ":0572FF\r\n";
    exchange.transaction.kind = kind;
    exchange.outcome = outcome;
    exchange.reply = reply;
    return exchange;
}

TEST(Failures, FollowFromTheOutcomeOfTheExchange)
{
    using ctl::Failure;
    using link::Kind;
    using link::Outcome;
    const struct {
        link::Exchange exchange;
        Failure failure;
    } rows[] = {
        {exchangeThat(Outcome::Silent), Failure::Silent},
        {exchangeThat(Outcome::Short), Failure::Short},
        {exchangeThat(Outcome::PortLost), Failure::PortLost},
        {exchangeThat(Outcome::Abandoned), Failure::Ended},
        {exchangeThat(Outcome::Refused, Kind::Set), Failure::ReadOnly},
        {exchangeThat(Outcome::Complete, Kind::Search), Failure::Silent},
        {exchangeThat(Outcome::Complete, Kind::Query, ":0573"), Failure::Garbled},
        {exchangeThat(Outcome::Complete, Kind::Set, ":0573"), Failure::Unconfirmed},
        {exchangeThat(Outcome::Complete, Kind::Delete, ":0573"), Failure::Unconfirmed},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(ctl::rowOf(ctl::failureOf(row.exchange)).kind, ctl::rowOf(row.failure).kind);
        EXPECT_FALSE(ctl::isWell(row.exchange)) << ctl::rowOf(row.failure).kind;
    }
    EXPECT_TRUE(ctl::isWell(exchangeThat(Outcome::Complete, Kind::Query, ":0572+1.50000FF\r\n")));
}

/// What a command line that must fail prints with --json.
struct Error {
    int status = 0;
    QString kind;
    QString message;
    QString err; ///< stderr
};

class ErrorsAsJson : public ::testing::Test {
protected:
    Error error(const QStringList& arguments, const QString& port = {})
    {
        const auto ended = runProgram(
            "quorvelctl-factory",
            QStringList{"--json", "--port", port.isEmpty() ? bus.device() : port, "--address", "5"} +
                arguments);
        EXPECT_EQ(ended.lines().size(), 1) << qPrintable(ended.out);
        const auto object = QJsonDocument::fromJson(ended.out.toUtf8()).object();
        EXPECT_EQ(object.keys(), QStringList{"error"}) << qPrintable(ended.out);
        const auto told = object["error"].toObject();
        EXPECT_EQ(told.keys(), QStringList({"kind", "message"})) << qPrintable(ended.out);
        return {ended.status, told["kind"].toString(), told["message"].toString(), ended.err};
    }
    void expect(const QStringList& arguments, const char* kind, int status, const QString& port = {})
    {
        const auto found = error(arguments, port);
        EXPECT_EQ(found.kind, kind) << qPrintable(arguments.join(' '));
        EXPECT_EQ(found.status, status) << qPrintable(arguments.join(' '));
        EXPECT_TRUE(found.err.contains(found.message)) << qPrintable(found.err);
    }

    SimulatedBus bus{{"--fast", "--seed", "1", "--readout", "5:A"}};
    QTemporaryDir folder;
};

TEST_F(ErrorsAsJson, NameTheKindAndSayWhatHappened)
{
    expect({"offset", "X"}, "portNotOpened", 3, "/dev/ttyNowhere");
    expect({"offset", "W"}, "usage", 2);
    expect({"offset", "Z"}, "usage", 2);
    expect({"clear"}, "needsYes", 6);
    expect({"--read-only", "offset", "X", "1"}, "readOnly", 6);
    expect({"settings", "restore", folder.filePath("missing.json")}, "file", 1);
    expect({"download", folder.path()}, "exists", 6);
    expect({"mdb", folder.filePath("missing.mdb")}, "file", 1);
    const struct {
        const char* fault;
        QStringList arguments;
        const char* kind;
        int status;
    } rows[] = {{"silent@72", {"offset", "X"}, "silent", 4},
                {"short@72", {"offset", "X"}, "short", 5},
                {"garbled@72", {"offset", "X"}, "garbled", 5},
                {"echo@71", {"offset", "X", "1"}, "unconfirmed", 5},
                {"hangup@72", {"offset", "X"}, "portLost", 3}};
    for (const auto& row : rows) {
        bus.clearFaults();
        bus.fault(row.fault);
        expect(row.arguments, row.kind, row.status);
    }
}

} // namespace
} // namespace quorvel::test
