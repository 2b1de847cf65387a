#include "sim/calibration.h"

#include "sim/text.h"

#include <gtest/gtest.h>

namespace quorvelsim {
namespace {

/// Eleven points with the readings 0, 5 .. 50 and the dial that `dial` makes of them.
template<typename Dial>
std::string table(Dial dial)
{
    std::string fields;
    for (int i = 0; i < CalibrationTable::kPoints; ++i)
        fields += recordField(5.0 * i) + recordField(dial(5.0 * i));
    return fields;
}

TEST(Calibration, LeavesReadingsAloneBeforeADownload)
{
    EXPECT_EQ(CalibrationTable().correct(12.345), 12.345);
}

TEST(Calibration, GoesStraightFromPointToPoint)
{
    CalibrationTable calibration;
    ASSERT_TRUE(calibration.load(table([](double x) { return x < 25 ? x : 2 * x - 25; })));
    EXPECT_DOUBLE_EQ(calibration.correct(12.5), 12.5);
    EXPECT_DOUBLE_EQ(calibration.correct(25), 25);
    EXPECT_DOUBLE_EQ(calibration.correct(27.5), 30);
    EXPECT_DOUBLE_EQ(calibration.correct(50), 75);
}

TEST(Calibration, CarriesTheOuterLinesOn)
{
    CalibrationTable calibration;
    ASSERT_TRUE(calibration.load(table([](double x) { return 2 * x + 1; })));
    EXPECT_DOUBLE_EQ(calibration.correct(-10), -19);
    EXPECT_DOUBLE_EQ(calibration.correct(60), 121);
}

TEST(Calibration, ADownloadOfZerosSwitchesItOff)
{
    CalibrationTable calibration;
    ASSERT_TRUE(calibration.load(table([](double x) { return 2 * x; })));
    std::string zeros;
    for (int i = 0; i < 22; ++i)
        zeros += "+000.000";
    ASSERT_TRUE(calibration.load(zeros));
    EXPECT_EQ(calibration.correct(12.5), 12.5);
    EXPECT_EQ(calibration.points().size(), 11U);
}

TEST(Calibration, TakesPointsInAnyOrder)
{
    CalibrationTable calibration;
    std::string fields = "+020.000+040.000+010.000+020.000";
    for (int i = 0; i < 9; ++i)
        fields += "+000.000+000.000";
    ASSERT_TRUE(calibration.load(fields));
    EXPECT_DOUBLE_EQ(calibration.correct(15), 30);
}

TEST(Calibration, ABrokenFieldChangesNothing)
{
    CalibrationTable calibration;
    ASSERT_TRUE(calibration.load(table([](double x) { return 2 * x; })));
    auto fields = table([](double x) { return 3 * x; });
    fields[172] = 'x';
    EXPECT_FALSE(calibration.load(fields));
    EXPECT_FALSE(calibration.load(""));
    EXPECT_DOUBLE_EQ(calibration.correct(10), 20);
}

} // namespace
} // namespace quorvelsim
