#include "protocol/calibration_table.h"

#include "support/bench_by_hand.h"

#include <gtest/gtest.h>

namespace quorvel::protocol {
namespace {

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
    const auto frame = tableDownload(Sensor::X, "01", Points{}).frame;
    EXPECT_EQ(frame, ":016111" + repeated("+000.000", 22) + "FF\r\n");
    EXPECT_EQ(frame.size(), 187U);
}

TEST(Download, FrameHasReadingThenDialOfEachPoint)
{
    const auto frame = tableDownload(Sensor::Z2, "0A", counted()).frame;
    EXPECT_EQ(frame.substr(0, 9 + 32), ":0A781111-000.250+000.000-001.250+001.000");
    EXPECT_EQ(frame.substr(frame.size() - 20), "-010.250+010.000FF\r\n");
}

struct ExpectedFrame {
    Sensor sensor;
    std::string command;
    int length;
    const char* downloaded;
    const char* notDownloaded;
};

class EachTransfer : public ::testing::TestWithParam<ExpectedFrame> {};

TEST_P(EachTransfer, HasItsCommandLengthAndTexts)
{
    const auto& row = tableOf(GetParam().sensor);
    const auto frame = tableDownload(row.sensor, "F9", counted()).frame;
    EXPECT_EQ(frame.substr(0, 3 + GetParam().command.size()), ":F9" + GetParam().command);
    EXPECT_EQ(echoLength(row.sensor), GetParam().length);
    EXPECT_EQ(static_cast<int>(frame.size()), GetParam().length);
    EXPECT_STREQ(row.downloaded, GetParam().downloaded);
    EXPECT_STREQ(row.notDownloaded, GetParam().notDownloaded);
}

// Each of the 22 values decides: 0.01 beside it the echo no longer agrees.
TEST_P(EachTransfer, EveryValueOfTheEchoIsCompared)
{
    const auto row = GetParam().sensor;
    const auto frame = tableDownload(row, "05", counted()).frame;
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
        ExpectedFrame{Sensor::X, "6111", 187, "X向标定参数下载完毕！", "X向标定参数下载失败！"},
        ExpectedFrame{Sensor::Y, "6311", 187, "Y向标定参数下载完毕！", "Y向标定参数下载失败！"},
        ExpectedFrame{Sensor::Z1, "780111", 189, "Z1向标定参数下载完毕！", "Z1向标定参数下载失败！"},
        ExpectedFrame{Sensor::Z2, "781111", 189, "Z2向标定参数下载完毕！", "Z2向标定参数下载失败！"}),
    [](const auto& row) { return std::string(nameOf(row.param.sensor)); });

/// The frame of zeros with its first value replaced.
std::string withFirst(const std::string& value)
{
    auto frame = tableDownload(Sensor::X, "01", Points{}).frame;
    return frame.replace(7, 8, value);
}

TEST(Download, EchoAgreesBelowAHundredth)
{
    const auto frame = withFirst("+012.340");
    EXPECT_TRUE(echoAgrees(Sensor::X, frame, withFirst("+012.345")));
    EXPECT_TRUE(echoAgrees(Sensor::X, frame, withFirst("+012.349")));
    EXPECT_FALSE(echoAgrees(Sensor::X, frame, withFirst("+012.350")));
    EXPECT_FALSE(echoAgrees(Sensor::X, frame, withFirst("+012.330")));
    EXPECT_FALSE(echoAgrees(Sensor::X, frame, withFirst("-012.340")));
}

TEST(Download, WhatIsNoNumberInTheEchoCountsAsZero)
{
    EXPECT_TRUE(echoAgrees(Sensor::X, withFirst("+000.000"), withFirst("garbage!")));
    EXPECT_FALSE(echoAgrees(Sensor::X, withFirst("+000.010"), withFirst("garbage!")));
    EXPECT_TRUE(echoAgrees(Sensor::X, withFirst("+001.000"), withFirst("1x345678")));
}

// The ninth character pushes all that follows out of its place; an echo of which only the usual number of characters
// has come agrees with it in all of them.
TEST(Download, FrameOfAThousandNeverAgrees)
{
    Points points = counted();
    points[3].reading = 1000;
    const auto frame = tableDownload(Sensor::X, "01", points).frame;
    EXPECT_EQ(frame.size(), 188U);
    EXPECT_FALSE(echoAgrees(Sensor::X, frame, frame.substr(0, 187)));
    EXPECT_FALSE(echoAgrees(Sensor::X, frame, frame));
}

TEST(Download, ValuesFillTheirFieldBelowAThousand)
{
    for (const double fits : {0.0, -1.5, 999.9994, -999.9994}) {
        EXPECT_TRUE(fitsCalibrationField(fits)) << fits;
    }
    for (const double tooLong : {999.9996, -999.9996, 1000.0, -1e6}) {
        EXPECT_FALSE(fitsCalibrationField(tooLong)) << tooLong;
    }
}

using DownloadByHand = test::BenchByHand;

TEST_F(DownloadByHand, WaitsTenSecondsForTheEchoAndTellsHowFarItIs)
{
    device->receive("stale");
    const auto transaction = tableDownload(Sensor::X, "01", counted());
    std::vector<int> told;
    EXPECT_EQ(module1.transact(transaction, [&](int sent) { told.push_back(sent); }).reply, "");
    EXPECT_EQ(device->written, transaction.frame);
    EXPECT_NEAR(clock.passed(), 0.03 + 187 * 0.005 + 10, 0.05);
    ASSERT_EQ(told.size(), 187U);
    EXPECT_EQ(told.front(), 1);
    EXPECT_EQ(told.back(), 187);
}

TEST_F(DownloadByHand, TakesTheEchoAsSoonAsItIsComplete)
{
    const auto transaction = tableDownload(Sensor::X, "01", counted());
    answerWith({transaction.frame});
    EXPECT_EQ(module1.transact(transaction).reply, transaction.frame);
    EXPECT_LT(clock.passed(), 1.1);
}

} // namespace
} // namespace quorvel::protocol
