#include "calibration/download.h"

#include "support/bench_by_hand.h"

#include <gtest/gtest.h>

namespace quorvel::calibration {
namespace {

const Reading& reading(const char* direction, std::size_t which = 0)
{
    return directionOf(direction)->readings[which];
}

Points counted()
{
    Points points;
    for (int i = 0; i < kPoints; ++i) {
        points[static_cast<std::size_t>(i)] = {static_cast<float>(i), static_cast<float>(-i) - 0.25F};
    }
    return points;
}

std::string repeated(const std::string& text, int count)
{
    std::string all;
    for (int i = 0; i < count; ++i) {
        all += text;
    }
    return all;
}

TEST(FormatCalibrationNumber, HasASignThreeDigitsAndThreeDecimals)
{
    EXPECT_EQ(FormatCalibrationNumber(1.5), "+001.500");
    EXPECT_EQ(FormatCalibrationNumber(-1.5), "-001.500");
    EXPECT_EQ(FormatCalibrationNumber(0), "+000.000");
    EXPECT_EQ(FormatCalibrationNumber(-0.0), "+000.000");
    EXPECT_EQ(FormatCalibrationNumber(12.3456), "+012.346");
    EXPECT_EQ(FormatCalibrationNumber(-0.25), "-000.250");
    EXPECT_EQ(FormatCalibrationNumber(0.25), "+000.250");
    EXPECT_EQ(FormatCalibrationNumber(-0.0001), "-000.000");
    EXPECT_EQ(FormatCalibrationNumber(999.9994), "+999.999");
}

TEST(FormatCalibrationNumber, GrowsFromAThousandOn)
{
    EXPECT_EQ(FormatCalibrationNumber(999.9996), "+1000.000");
    EXPECT_EQ(FormatCalibrationNumber(-1000), "-1000.000");
}

TEST(Download, FrameOfZerosIsWrittenOut)
{
    const auto frame = downloadFrame(reading("X"), "01", Points{});
    EXPECT_EQ(frame, ":016111" + repeated("+000.000", 22) + "FF\r\n");
    EXPECT_EQ(frame.size(), 187U);
}

TEST(Download, FrameHasReadingThenDialOfEachPoint)
{
    const auto frame = downloadFrame(reading("Z", 1), "0A", counted());
    EXPECT_EQ(frame.substr(0, 9 + 32), ":0A781111-000.250+000.000-001.250+001.000");
    EXPECT_EQ(frame.substr(frame.size() - 20), "-010.250+010.000FF\r\n");
}

struct ExpectedFrame {
    const char* direction;
    std::size_t which;
    std::string command;
    int length;
    const char* downloaded;
    const char* notDownloaded;
};

class EachTransfer : public ::testing::TestWithParam<ExpectedFrame> {};

TEST_P(EachTransfer, HasItsCommandLengthAndTexts)
{
    const auto& row = reading(GetParam().direction, GetParam().which);
    EXPECT_EQ(row.downloadCommand, GetParam().command);
    EXPECT_EQ(echoLength(row), GetParam().length);
    EXPECT_EQ(static_cast<int>(downloadFrame(row, "F9", counted()).size()), GetParam().length);
    EXPECT_STREQ(row.downloaded, GetParam().downloaded);
    EXPECT_STREQ(row.notDownloaded, GetParam().notDownloaded);
}

// Each of the 22 values decides: 0.01 beside it the echo no longer agrees.
TEST_P(EachTransfer, EveryValueOfTheEchoIsCompared)
{
    const auto& row = reading(GetParam().direction, GetParam().which);
    const auto frame = downloadFrame(row, "05", counted());
    EXPECT_TRUE(echoAgrees(row, frame, frame));
    for (int k = 1; k <= 22; ++k) {
        const auto first = static_cast<std::size_t>(8 * k + (GetParam().length - 187)) - 1;
        auto echo = frame;
        ASSERT_EQ(echo[first + 4], '.') << k;
        echo[first + 6] = echo[first + 6] == '5' ? '6' : '1';
        EXPECT_FALSE(echoAgrees(row, frame, echo)) << k;
    }
}

INSTANTIATE_TEST_SUITE_P(
    Transfers, EachTransfer,
    ::testing::Values(
        ExpectedFrame{"X", 0, "6111", 187, "X向标定参数下载完毕！", "X向标定参数下载失败！"},
        ExpectedFrame{"Y", 0, "6311", 187, "Y向标定参数下载完毕！", "Y向标定参数下载失败！"},
        ExpectedFrame{"Z", 0, "780111", 189, "Z1向标定参数下载完毕！", "Z1向标定参数下载失败！"},
        ExpectedFrame{"Z", 1, "781111", 189, "Z2向标定参数下载完毕！", "Z2向标定参数下载失败！"}),
    [](const auto& row) { return row.param.direction + std::to_string(row.param.which + 1); });

/// The frame of zeros with its first value replaced.
std::string withFirst(const std::string& value)
{
    auto frame = downloadFrame(reading("X"), "01", Points{});
    return frame.replace(7, 8, value);
}

TEST(Download, EchoAgreesBelowAHundredth)
{
    const auto frame = withFirst("+012.340");
    EXPECT_TRUE(echoAgrees(reading("X"), frame, withFirst("+012.345")));
    EXPECT_TRUE(echoAgrees(reading("X"), frame, withFirst("+012.349")));
    EXPECT_FALSE(echoAgrees(reading("X"), frame, withFirst("+012.350")));
    EXPECT_FALSE(echoAgrees(reading("X"), frame, withFirst("+012.330")));
    EXPECT_FALSE(echoAgrees(reading("X"), frame, withFirst("-012.340")));
}

TEST(Download, WhatIsNoNumberInTheEchoCountsAsZero)
{
    EXPECT_TRUE(echoAgrees(reading("X"), withFirst("+000.000"), withFirst("garbage!")));
    EXPECT_FALSE(echoAgrees(reading("X"), withFirst("+000.010"), withFirst("garbage!")));
    EXPECT_TRUE(echoAgrees(reading("X"), withFirst("+001.000"), withFirst("1x345678")));
}

// The ninth character pushes all that follows out of its place.
TEST(Download, FrameOfAThousandCannotAgree)
{
    Points points = counted();
    points[0].reading = 1000;
    const auto frame = downloadFrame(reading("X"), "01", points);
    EXPECT_EQ(frame.size(), 188U);
    EXPECT_NE(static_cast<int>(frame.size()), echoLength(reading("X")));
}

using DownloadByHand = test::BenchByHand;

TEST_F(DownloadByHand, WaitsTenSecondsForTheEchoAndTellsHowFarItIs)
{
    device->receive("stale");
    const auto frame = downloadFrame(reading("X"), "01", counted());
    std::vector<int> told;
    EXPECT_EQ(sendDownload(module1, reading("X"), frame, [&](int sent) { told.push_back(sent); }), "");
    EXPECT_EQ(device->written, frame);
    EXPECT_NEAR(clock.passed(), 0.03 + 187 * 0.005 + 10, 0.05);
    ASSERT_EQ(told.size(), 187U);
    EXPECT_EQ(told.front(), 1);
    EXPECT_EQ(told.back(), 187);
}

TEST_F(DownloadByHand, TakesTheEchoAsSoonAsItIsComplete)
{
    const auto frame = downloadFrame(reading("X"), "01", counted());
    answerWith({frame});
    EXPECT_EQ(sendDownload(module1, reading("X"), frame, {}), frame);
    EXPECT_LT(clock.passed(), 1.1);
}

} // namespace
} // namespace quorvel::calibration
