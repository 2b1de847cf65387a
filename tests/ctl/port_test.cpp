#include "ctl/commands.h"
#include "ctl/console.h"
#include "protocol/command.h"
#include "support/simulated_bus.h"

#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <fstream>
#include <vector>

namespace quorvel::ctl {
namespace {

std::vector<link::PortInfo> twoPorts()
{
    return {{"/dev/ttyNowhere1", {}, {}}, {"/dev/ttyNowhere2", {}, {}}};
}

/// How `quorvelctl-factory` ends on a machine with these ports, and what it says.
struct Ended {
    int status;
    std::string said;
};
Ended runWith(const link::PortList::Enumerator& ports, const std::vector<const char*>& arguments)
{
    Console console(QStringLiteral("FACTORY"), ports);
    std::vector<const char*> all{"quorvelctl-factory"};
    all.insert(all.end(), arguments.begin(), arguments.end());
    testing::internal::CaptureStderr();
    const int status =
        runCommandLine(console, static_cast<int>(all.size()), all.data(), addCalibrationCommands);
    return {status, testing::internal::GetCapturedStderr()};
}

class WithSeveralPorts : public testing::TestWithParam<std::vector<const char*>> {};

TEST_P(WithSeveralPorts, WhatWritesWantsOneNamed)
{
    auto arguments = GetParam();
    arguments.insert(arguments.begin(), {"--address", "5"});
    const auto refused = runWith(twoPorts, arguments);
    EXPECT_EQ(refused.status, 2);
    EXPECT_EQ(refused.said,
              "There are several serial ports: /dev/ttyNowhere1, /dev/ttyNowhere2. Name the one to "
              "write to with --port.\n");
    const auto only = [] { return std::vector<link::PortInfo>{{"/dev/ttyNowhere1", {}, {}}}; };
    EXPECT_EQ(runWith(only, arguments).status, 3) << "the only port is taken, and cannot be opened";
    arguments.insert(arguments.end(), {"--port", "/dev/ttyNowhere2"});
    const auto named = runWith(twoPorts, arguments);
    EXPECT_EQ(named.status, 3);
    EXPECT_TRUE(named.said.starts_with("/dev/ttyNowhere2")) << named.said;
}

INSTANTIATE_TEST_SUITE_P(Quorvelctl, WithSeveralPorts,
                         testing::Values(std::vector{"offset", "X", "1"}, std::vector{"reference", "X", "1"},
                                         std::vector{"feature", "on"}, std::vector{"invert", "X", "off"},
                                         std::vector{"swap", "on"}, std::vector{"wire", "1", "1"},
                                         std::vector{"clock", "now"}, std::vector{"address", "7"},
                                         std::vector{"reset", "--yes"}, std::vector{"auto", "1h"},
                                         std::vector{"clear", "--yes"}, std::vector{"stitching", "1234"}),
                         [](const auto& row) { return std::string(row.param.front()); });

TEST(WithSeveralPorts, RestoringSettingsWantsOneNamed)
{
    const QTemporaryDir folder;
    const auto path = folder.filePath("a.json").toStdString();
    std::ofstream(path) << R"({"format":"quorvel-settings","settings":{"swap":true}})";
    const std::vector<const char*> arguments{"--address", "5", "settings", "restore", path.c_str(), "--yes"};
    EXPECT_EQ(runWith(twoPorts, arguments).status, 2);
}

// A command cannot forget to say that it writes: then it could not.
TEST(WithSeveralPorts, WhatReadsCannotWrite)
{
    test::SimulatedBus bus({"--fast", "--seed", "1", "--readout", "5:A"});
    Console console(QStringLiteral("FACTORY"), [] { return std::vector<link::PortInfo>(); });
    console.options.port = bus.device().toStdString();
    console.options.address = "5";
    ASSERT_TRUE(console.openReadout(Access::Reads));
    for (const auto& row : protocol::commands()) {
        if (row.kind != link::Kind::Set && row.kind != link::Kind::Delete) continue;
        EXPECT_EQ(console.module1().transact(protocol::transaction(row.id, "05")).outcome,
                  link::Outcome::Refused)
            << row.name;
    }
    EXPECT_TRUE(bus.frames().isEmpty());
}

TEST(WithSeveralPorts, WhatOnlyReadsTakesTheFirst)
{
    for (const auto& arguments : {std::vector{"offset", "X"}, std::vector{"wire"}, std::vector{"clock"},
                                  std::vector{"auto"}, std::vector{"read"}, std::vector{"settings"}}) {
        auto all = arguments;
        all.insert(all.begin(), {"--address", "5"});
        EXPECT_TRUE(runWith(twoPorts, all).said.starts_with("/dev/ttyNowhere1")) << arguments.front();
    }
}

} // namespace
} // namespace quorvel::ctl
