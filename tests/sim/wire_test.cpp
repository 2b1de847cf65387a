#include "sim/wire.h"

#include <cmath>
#include <gtest/gtest.h>

namespace quorvelsim {
namespace {

const SensorModel kSensor = findReadoutType("A")->sensor(Sensor::X);

TEST(Wire, RepeatsItselfWithTheSameSeed)
{
    for (const double seconds : {-1e6, 0.0, 12.3, 86400.0}) {
        EXPECT_EQ(Wire(1, 5).place(Sensor::X, kSensor, seconds),
                  Wire(1, 5).place(Sensor::X, kSensor, seconds));
        EXPECT_NE(Wire(1, 5).place(Sensor::X, kSensor, seconds),
                  Wire(2, 5).place(Sensor::X, kSensor, seconds));
        EXPECT_NE(Wire(1, 5).place(Sensor::X, kSensor, seconds),
                  Wire(1, 6).place(Sensor::X, kSensor, seconds));
    }
}

/// The wire before every sensor of a type stays 1 mm inside the sensor's range, day by day for years.
void expectWithinSensors(const ReadoutType& type)
{
    for (std::size_t i = 0; i < type.sensors.size(); ++i) {
        const auto& model = type.sensors[i];
        for (int day = -1000; day < 1000 && model.pixels > 0; ++day) {
            const auto place = Wire(7, 9).place(static_cast<Sensor>(i), model, day * 86400.0);
            EXPECT_TRUE(place >= 1 && place <= model.range - 1) << type.letter << i << " day " << day;
        }
    }
}

TEST(Wire, StaysWithinTheSensor)
{
    for (const char* letter : {"A", "B", "C", "D"})
        expectWithinSensors(*findReadoutType(letter));
}

TEST(Wire, SwingsWithinSecondsAndDriftsOverDays)
{
    const Wire wire(1, 5);
    double least = 1e9;
    double most = -1e9;
    for (int tenth = 0; tenth < 600; ++tenth) {
        const auto place = wire.place(Sensor::X, kSensor, tenth / 10.0);
        least = std::min(least, place);
        most = std::max(most, place);
    }
    EXPECT_GT(most - least, 0.01);
    EXPECT_LT(most - least, 0.2);
    double monthly = 0;
    const auto start = wire.place(Sensor::X, kSensor, 0);
    for (int day = 0; day < 30; ++day)
        monthly = std::max(monthly, std::fabs(wire.place(Sensor::X, kSensor, day * 86400.0) - start));
    EXPECT_GT(monthly, 0.2);
}

TEST(Wire, BothZSensorsSeeTheSameMark)
{
    const auto& type = *findReadoutType("C");
    const Wire wire(1, 33);
    for (int seconds = 0; seconds < 100; ++seconds) {
        const auto upper = wire.place(Sensor::Z1, type.sensor(Sensor::Z1), seconds);
        EXPECT_NEAR(upper, wire.place(Sensor::Z2, type.sensor(Sensor::Z2), seconds), 0.05);
    }
}

TEST(Bell, HasTheSpreadOfNoise)
{
    double sum = 0;
    double squares = 0;
    constexpr int kCount = 10000;
    for (int i = 0; i < kCount; ++i) {
        const auto value = bell(1, 2, static_cast<std::uint64_t>(i));
        sum += value;
        squares += value * value;
    }
    EXPECT_NEAR(sum / kCount, 0, 0.05);
    EXPECT_NEAR(squares / kCount, 1, 0.05);
}

} // namespace
} // namespace quorvelsim
