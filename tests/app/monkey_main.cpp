#include "app/monkey.h"

#include <QApplication>

#include <CLI/CLI.hpp>
#include <gtest/gtest.h>

#include <cstdio>

namespace quorvel {

// All windows are there in this edition.
const char* const kEdition = "FACTORY";

namespace test {
namespace {

struct Wanted {
    unsigned seed = 1;
    int steps = 1000;
    std::string log;
};
Wanted wanted;

TEST(Monkey, FindsNeitherTwoExchangesAtOnceNorABoxLeftOver)
{
    std::FILE* log = wanted.log.empty() ? nullptr : std::fopen(wanted.log.c_str(), "w");
    ASSERT_TRUE(log || wanted.log.empty());
    Monkey monkey(wanted.seed, wanted.steps, log);
    monkey.run();
    std::printf("seed %u: %s\n", wanted.seed, monkey.report().c_str());
    EXPECT_GT(monkey.line().complete(), 0) << "nothing was asked";
    if (log) std::fclose(log);
}

} // namespace
} // namespace test
} // namespace quorvel

/// monkey [--seed N] [--steps N] [--log FILE]
int main(int argc, char* argv[])
{
    using quorvel::test::wanted;
    CLI::App app("Works the windows at random before a simulated bus.");
    app.add_option("--seed", wanted.seed, "Another one makes other choices");
    app.add_option("--steps", wanted.steps, "Clicks, keys and choices to make");
    app.add_option("--log", wanted.log, "File that takes a line for each step");
    CLI11_PARSE(app, argc, argv);
    qputenv("QT_QPA_PLATFORM", "offscreen");
    int none = 1;
    ::testing::InitGoogleTest(&none, argv);
    const QApplication application(none, argv);
    const QTemporaryDir data;
    qputenv("XDG_DATA_HOME", data.path().toLocal8Bit());
    std::printf("monkey: seed %u, %d steps\n", wanted.seed, wanted.steps);
    std::fflush(stdout);
    return RUN_ALL_TESTS();
}
