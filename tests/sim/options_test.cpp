#include "sim/options.h"

#include <gtest/gtest.h>

namespace quorvelsim {
namespace {

std::optional<int> read(std::vector<const char*> arguments, Options& options)
{
    arguments.insert(arguments.begin(), "quorvel-sim");
    return readOptions(static_cast<int>(arguments.size()), arguments.data(), options);
}

TEST(Options, WithoutAnyGiveFiveReadouts)
{
    Options options;
    ASSERT_FALSE(read({}, options));
    std::string found;
    for (const auto& [address, type] : options.readouts)
        found += std::to_string(address) + type->letter + " ";
    EXPECT_EQ(found, "5A 12B 33C 100D 249C ");
    EXPECT_FALSE(options.fast);
    EXPECT_TRUE(options.control);
    EXPECT_TRUE(options.tcp.empty());
}

TEST(Options, TakeReadoutsRingsFaultsAndTheRest)
{
    Options options;
    ASSERT_FALSE(read({"--readout",
                       "7:b",
                       "--readout",
                       "10-12:C",
                       "--ring",
                       "7:1000,998,2",
                       "--fault",
                       "silent@2101",
                       "--fault",
                       "short@7/24:1+5",
                       "--set",
                       "7 clockoff -3600",
                       "--set",
                       "7 noisy 998,x",
                       "--bit-errors",
                       "0.0001,17",
                       "--fast",
                       "--seed",
                       "9",
                       "--tcp",
                       "127.0.0.1:0",
                       "--clock",
                       "2024-05-17T09:05:30",
                       "--no-control"},
                      options));
    EXPECT_EQ(options.readouts.size(), 4U);
    EXPECT_EQ(options.readouts.at(7)->letter, 'B');
    EXPECT_EQ(options.rings.at(7).first, 998);
    EXPECT_EQ(options.faults.size(), 2U);
    EXPECT_TRUE(options.fast);
    EXPECT_FALSE(options.control);
    EXPECT_EQ(options.seed, 9U);
    EXPECT_EQ(options.tcp, "127.0.0.1:0");
    EXPECT_EQ(isoTime(options.clock.value_or(0)), "2024-05-17T09:05:30");
    Bus bus(kFast, 1);
    EXPECT_EQ(fillBus(options, bus), "");
    EXPECT_EQ(bus.find(7)->ring.next(), 2);
    EXPECT_EQ(isoTime(bus.find(7)->clock.at(0)), "2024-05-17T08:05:30");
    EXPECT_TRUE(bus.find(7)->ring.at(998)->noisy[1]);
    EXPECT_EQ(bus.bitErrors().rate(), 0.0001);
    EXPECT_EQ(bus.bitErrors().seed(), 17U);
}

TEST(Options, RefuseWrongUsageWithStatus2)
{
    const std::vector<std::vector<const char*>> wrong{
        {"--readout", "0:A"},
        {"--readout", "250:A"},
        {"--readout", "5:E"},
        {"--readout", "5"},
        {"--readout", "9-5:A"},
        {"--readout", "5-250:A"},
        {"--ring", "5:1000,1000,0"},
        {"--ring", "5"},
        {"--ring", "5:0,0,0"},
        {"--fault", "x@2101"},
        {"--bit-errors", "2"},
        {"--seed", "x"},
        {"--clock", "today"},
        {"--bogus"},
        {"extra"},
    };
    for (const auto& arguments : wrong) {
        Options options;
        testing::internal::CaptureStderr();
        EXPECT_EQ(read(arguments, options), 2) << arguments.back();
        EXPECT_NE(testing::internal::GetCapturedStderr(), "") << arguments.back();
    }
}

TEST(Options, ARingNeedsItsReadout)
{
    Options options;
    ASSERT_FALSE(read({"--readout", "5:A", "--ring", "6:10,0,0"}, options));
    Bus bus(kFast, 1);
    EXPECT_NE(fillBus(options, bus), "");
}

TEST(Options, ASettingNeedsItsReadoutAndAKey)
{
    for (const char* bad : {"6 clockoff 1", "clockoff 1", "5 bogus 1", "5 clockoff x"}) {
        Options options;
        ASSERT_FALSE(read({"--readout", "5:A", "--set", bad}, options));
        Bus bus(kFast, 1);
        EXPECT_NE(fillBus(options, bus), "") << bad;
    }
}

} // namespace
} // namespace quorvelsim
