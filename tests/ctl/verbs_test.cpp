#include "support/program_run.h"
#include "support/simulated_bus.h"

#include <QJsonDocument>
#include <QJsonObject>
#include <QRegularExpression>

#include <gtest/gtest.h>

namespace quorvel::test {
namespace {

/// Sets a variable of the environment for as long as it lives.
class Variable {
public:
    Variable(const char* name, const QByteArray& value) : name_(name) { qputenv(name, value); }
    Variable(const Variable&) = delete;
    Variable& operator=(const Variable&) = delete;
    ~Variable() { qunsetenv(name_); }

private:
    const char* name_;
};

class Verbs : public ::testing::Test {
protected:
    ProgramRun run(const QStringList& arguments, const QString& address = "5")
    {
        return runProgram("quorvelctl-factory",
                          QStringList{"--port", bus.device(), "--address", address} + arguments);
    }

    SimulatedBus bus{{"--fast", "--seed", "1", "--readout", "5:B"}};
};

/// The commands in a --help, each with those below it.
QList<QStringList> commandsBelow(const QStringList& command)
{
    const auto help = runProgram("quorvelctl-factory", command + QStringList("--help")).out;
    QList<QStringList> all;
    static const QRegularExpression row("^  ([a-z]+)  ");
    const auto lines = help.section("Subcommands:\n", 1).section("\n\n", 0, 0).split('\n');
    for (const auto& line : lines) {
        if (const auto match = row.match(line); match.hasMatch()) {
            all << command + QStringList(match.captured(1));
            all << commandsBelow(all.last());
        }
    }
    return all;
}

TEST_F(Verbs, HaveAnExampleInTheirHelp)
{
    const auto all = commandsBelow({});
    EXPECT_GE(all.size(), 25);
    for (const auto& command : all) {
        const auto help = runProgram("quorvelctl-factory", command + QStringList("--help"));
        EXPECT_EQ(help.status, 0) << qPrintable(command.join(' '));
        const auto example = help.out.section("Example:\n  quorvelctl-factory ", 1).trimmed();
        for (const auto& word : command) {
            EXPECT_TRUE(example.split(' ').contains(word)) << qPrintable(command.join(' ') + ": " + help.out);
        }
    }
}

TEST_F(Verbs, ANounAloneAsksAndWithAValueSets)
{
    const struct {
        QStringList noun;
        QStringList value;
        QString told;
    } rows[] = {{{"offset", "X"}, {"1.5"}, "+1.50000\n"},
                {{"feature"}, {"on"}, "on\n"},
                {{"invert", "Y"}, {"on"}, "on\n"},
                {{"swap"}, {"on"}, "on\n"},
                {{"stitching"}, {"0512"}, "0512\n"},
                {{"auto"}, {"10m"}, "Current Interval is 0 hours 10 minutes 0 seconds\n"}};
    for (const auto& row : rows) {
        const auto before = run(row.noun);
        EXPECT_EQ(before.status, 0) << qPrintable(before.err);
        EXPECT_NE(before.out, row.told) << qPrintable(row.noun.join(' '));
        EXPECT_EQ(run(row.noun + row.value).out, row.told);
        EXPECT_EQ(run(row.noun).out, row.told);
    }
    EXPECT_EQ(run({"address"}).out, "05\n");
}

TEST_F(Verbs, PortAndAddressMayComeFromTheEnvironment)
{
    const Variable port("QUORVEL_PORT", bus.device().toLocal8Bit());
    const Variable address("QUORVEL_ADDRESS", "5");
    EXPECT_EQ(runProgram("quorvelctl", {"swap"}).out, "off\n");
    EXPECT_EQ(runProgram("quorvelctl", {"--address", "7", "swap"}).status, 4) << "the option wins";
    const Variable wrong("QUORVEL_ADDRESS", "500");
    EXPECT_EQ(runProgram("quorvelctl", {"swap"}).status, 2);
}

TEST_F(Verbs, QuietSaysNothingButAnswersAndFailures)
{
    EXPECT_EQ(run({"--quiet", "offset", "X", "1"}).err, "");
    EXPECT_EQ(run({"--quiet", "offset", "X"}, "7").err, "Comm Error The readout did not answer.\n");
}

TEST_F(Verbs, ARawFrameThatOnlyAsksIsSentAtOnce)
{
    EXPECT_EQ(run({"raw", ":0572FF"}).out, ":0572+0.00000FF\n");
    EXPECT_EQ(run({"raw", "0572FF"}).out, ":0572+0.00000FF\n");
    const auto told = QJsonDocument::fromJson(run({"--json", "raw", ":0572FF"}).out.toUtf8()).object();
    EXPECT_EQ(told["reply"], ":0572+0.00000FF");
    EXPECT_EQ(told["meaning"], "Read the offset of X");
    EXPECT_EQ(told["address"], 5);
    EXPECT_EQ(run({"raw", ":0772FF"}).status, 4);
    for (const auto* wrong : {"", ":05 72FF", "\x1b[2J", ":0572FF\r\n:0571+1.00000FF"}) {
        EXPECT_EQ(run({"raw", wrong}).status, 2) << wrong;
    }
}

TEST_F(Verbs, ARawFrameThatMayChangeSomethingNeedsYes)
{
    bus.frames();
    for (const auto* frame :
         {":0571+1.50000FF", ":0525FF", ":05990102FF", ":0572+1.00000FF", ":0524:0525FF", ":0572", "hello"}) {
        const auto refused = run({"raw", frame});
        EXPECT_EQ(refused.status, 6) << frame;
        EXPECT_TRUE(refused.err.contains("Send it? [y/N]")) << qPrintable(refused.err);
        const auto readOnly = run({"--read-only", "raw", "--yes", frame});
        EXPECT_EQ(readOnly.status, 6) << frame;
        EXPECT_TRUE(readOnly.err.contains("Read Only is on")) << qPrintable(readOnly.err);
    }
    EXPECT_TRUE(bus.frames().isEmpty());
    EXPECT_EQ(run({"raw", "--yes", ":0571+1.50000FF"}).out, ":0571+1.50000FF\n");
    EXPECT_EQ(run({"offset", "X"}).out, "+1.50000\n");
}

} // namespace
} // namespace quorvel::test
