#include "sim/grayscale.h"

#include "sim/settings.h"
#include "sim/text.h"
#include "tests/sim/test_bus.h"

#include <cmath>

#include <gtest/gtest.h>
#include <numeric>

namespace quorvelsim {
namespace {

struct SensorCase {
    const char* name;
    int address;
    const char* code;
    Sensor sensor;
    int pixels;
};

void PrintTo(const SensorCase& sensor, std::ostream* out) { *out << sensor.name; }

class Grayscale : public testing::TestWithParam<SensorCase> {
protected:
    std::vector<std::uint8_t> read(double place)
    {
        auto& readout = *test.bus.find(GetParam().address);
        readout.pinned[static_cast<std::size_t>(GetParam().sensor)] = place;
        return grayscale(readout, GetParam().sensor, 1);
    }

    [[nodiscard]] double millimetres(std::size_t pixel) const
    {
        const double k = static_cast<double>(pixel);
        return GetParam().address == 5 ? (k - 256) * 7 / 1000 : (k - 64) * 0.014 - 0.85;
    }

    TestBus test;
};

TEST_P(Grayscale, IsAnsweredWithCountAndPixels)
{
    const auto head = ":" + twoHex(GetParam().address) + GetParam().code;
    const auto answer = test.talk(head + "FF");
    const auto count = twoHex(GetParam().pixels / 256) + twoHex(GetParam().pixels % 256);
    EXPECT_EQ(answer.substr(0, head.size() + 4), head + count);
    EXPECT_EQ(answer.size(), head.size() + 4 + 2 * static_cast<std::size_t>(GetParam().pixels) + 4);
    EXPECT_EQ(answer.substr(answer.size() - 4), "FF\r\n");
    EXPECT_EQ(answer.find_first_not_of("0123456789ABCDEF", 1), answer.size() - 2);
}

TEST_P(Grayscale, ShowsTheShadowWhereTheWireHangs)
{
    for (const double place : {3.0, 12.5, 24.0}) {
        const auto pixels = read(place);
        double weight = 0;
        double sum = 0;
        for (std::size_t k = 1; k <= pixels.size(); ++k) {
            if (millimetres(k) < 0.5 || millimetres(k) > 25 || pixels[k - 1] > 60) continue;
            weight += 1;
            sum += millimetres(k);
        }
        ASSERT_GT(weight, 0);
        EXPECT_NEAR(sum / weight, place, 0.05);
    }
}

TEST_P(Grayscale, IsBrightBesideTheWireAndDarkAtTheEnds)
{
    const auto pixels = read(12.5);
    EXPECT_LT(pixels.front(), 20);
    EXPECT_LT(pixels.back(), 20);
    for (std::size_t k = 1; k <= pixels.size(); ++k)
        EXPECT_TRUE(millimetres(k) <= 1 || millimetres(k) >= 11 || pixels[k - 1] > 80) << k;
}

INSTANTIATE_TEST_SUITE_P(
    Sensors, Grayscale,
    testing::Values(SensorCase{"AX", 5, "65", Sensor::X, 7450}, SensorCase{"AY", 5, "66", Sensor::Y, 7450},
                    SensorCase{"BX", 12, "65", Sensor::X, 3760}, SensorCase{"BY", 12, "66", Sensor::Y, 7330},
                    SensorCase{"CX", 33, "65", Sensor::X, 3760}, SensorCase{"CY", 33, "66", Sensor::Y, 3760},
                    SensorCase{"CZ1", 33, "7803", Sensor::Z1, 2048},
                    SensorCase{"CZ2", 33, "7804", Sensor::Z2, 2048},
                    SensorCase{"DX", 100, "65", Sensor::X, 3760}),
    caseName);

TEST(Shadow, IsAsWideAsTheWireIsSet)
{
    TestBus test;
    auto& readout = *test.bus.find(5);
    readout.pinned[0] = 25;
    const auto darkPixels = [&] {
        const auto pixels = grayscale(readout, Sensor::X, 1);
        return std::count_if(pixels.begin() + 100, pixels.end() - 100, [](int level) { return level < 100; });
    };
    readout.diameterTenthsMm = 15;
    EXPECT_NEAR(static_cast<double>(darkPixels()) * 0.007, 1.5, 0.15);
    readout.diameterTenthsMm = 30;
    EXPECT_NEAR(static_cast<double>(darkPixels()) * 0.007, 3.0, 0.15);
}

TEST(Dust, IsWhereItWasPutAndCleanedAway)
{
    TestBus test;
    auto& readout = *test.bus.find(5);
    readout.pinned[0] = 10;
    EXPECT_EQ(applySetting(readout, "dust clean", 0), "");
    const auto clean = grayscale(readout, Sensor::X, 1);
    EXPECT_EQ(applySetting(readout, "dust x 37.3 27 0.2", 0), "");
    const auto dusty = grayscale(readout, Sensor::X, 1);
    const auto part = [&](double mm) {
        const auto pixel = static_cast<std::size_t>(std::lround(mm / 0.007)) + 255;
        return static_cast<double>(dusty[pixel]) / clean[pixel];
    };
    EXPECT_NEAR(part(37.3), 0.73, 0.01);
    EXPECT_NEAR(part(37.4), 1 - 0.27 / 2, 0.01);
    EXPECT_EQ(part(38), 1);
    EXPECT_EQ(applySetting(readout, "dust clean", 0), "");
    EXPECT_EQ(grayscale(readout, Sensor::X, 1), clean);
}

TEST(Dust, OfAnotherFormIsRefused)
{
    TestBus test;
    for (const auto* value : {"", "x", "x 1 2", "q 1 2 3", "x 1 101 1", "x 1 -1 1", "x 1 5 0", "x 1 5 11",
                              "x 1 5 1 9", "x nan 5 1", "x 1e5 5 1"})
        EXPECT_NE(applySetting(*test.bus.find(5), std::string("dust ") + value, 0), "") << value;
    EXPECT_TRUE(test.bus.find(5)->dust.empty());
}

TEST(Seam, ShowsAtTheStitchingLocation)
{
    TestBus test;
    auto& readout = *test.bus.find(12);
    readout.pinned[1] = 80;
    readout.stitching = "2000";
    const auto pixels = grayscale(readout, Sensor::Y, 1);
    EXPECT_LT(pixels[1999], 0.8 * pixels[1980]);
    readout.stitching = "abcd";
    EXPECT_GT(grayscale(readout, Sensor::Y, 1)[1999], 0.8 * pixels[1980]);
}

} // namespace
} // namespace quorvelsim
