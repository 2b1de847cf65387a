#include "sim/grayscale.h"

#include "sim/text.h"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace quorvelsim {

namespace {

constexpr int kDarkAtStart = 24;
constexpr int kDarkAtEnd = 14;
constexpr double kDarkLevel = 6;
constexpr int kDustSpots = 9;
constexpr double kShadowEdge = 0.045; // mm; the lamp is not a point
constexpr double kStrayLight = 0.09;  // of the lamp's light reaches into the shadow

struct Dust {
    double pixel = 0, width = 1, depth = 0;
};

/// One sensor's constant features, drawn once from its seed.
class Profile {
public:
    Profile(std::uint64_t seed, std::uint64_t sensor, int pixels, bool dusty)
        : seed_(seed), stream_(1000 + sensor), pixels_(pixels)
    {
        for (std::uint64_t i = 0; dusty && i < dust_.size(); ++i)
            dust_[i] = {trait(10 + i) * pixels, 2 + 9 * trait(30 + i), 0.04 + 0.16 * trait(50 + i)};
    }

    /// Light on the pixel without a wire before it.
    [[nodiscard]] double light(int pixel) const
    {
        const double along = static_cast<double>(pixel) / pixels_;
        const double lamp =
            150 + 62 * std::sin(std::numbers::pi * along) + 14 * (trait(1) - 0.5) * (along - 0.5);
        double clear = 1;
        for (const auto& spot : dust_) {
            const double distance = (pixel - spot.pixel) / spot.width;
            if (std::fabs(distance) < 4) clear -= spot.depth * std::exp(-distance * distance);
        }
        const double response = 1 + 0.008 * bell(seed_, stream_ + 100, static_cast<std::uint64_t>(pixel));
        return lamp * clear * response;
    }

private:
    [[nodiscard]] double trait(std::uint64_t index) const { return uniform(seed_, stream_, index); }

    std::uint64_t seed_;
    std::uint64_t stream_;
    int pixels_;
    std::array<Dust, kDustSpots> dust_{};
};

/// Which part of the light passes beside a wire whose middle is `distance` away; both in mm.
double passing(double distance, double diameter)
{
    const double inside = diameter / 2 - std::fabs(distance);
    return kStrayLight + (1 - kStrayLight) / (1 + std::exp(inside / kShadowEdge));
}

/// What the dust that was put before the sensor lets through.
double besideDust(const std::vector<DustSpot>& dust, Sensor which, double millimetres)
{
    double clear = 1;
    for (const auto& spot : dust) {
        const double distance = 2 * (millimetres - spot.place) / spot.width;
        if (spot.sensor == which)
            clear *= 1 - spot.depth * std::exp(-std::numbers::ln2 * distance * distance);
    }
    return clear;
}

} // namespace

std::vector<std::uint8_t> grayscale(const Readout& readout, Sensor which, double now)
{
    const auto sensor = static_cast<std::size_t>(which);
    const auto& model = readout.type->sensors[sensor];
    const Profile profile(readout.wire.seed(), sensor, model.pixels, readout.ownDust);
    const double place = readout.places(now)[sensor];
    const double diameter = readout.diameterTenthsMm / 10.0;
    const int seam = model.range > 50 ? decimal(readout.stitching).value_or(0) : 0;
    const auto moment = static_cast<std::uint64_t>(std::max(now, 0.0) * 1000);
    std::vector<std::uint8_t> pixels;
    pixels.reserve(static_cast<std::size_t>(model.pixels));
    for (int pixel = 1; pixel <= model.pixels; ++pixel) {
        double level = kDarkLevel;
        if (pixel > kDarkAtStart && pixel <= model.pixels - kDarkAtEnd) {
            const double millimetres = (pixel - model.zeroPixel) * model.pitch + model.zero;
            level = profile.light(pixel) * passing(millimetres - place, diameter) *
                    besideDust(readout.dust, which, millimetres);
            if (seam > 0 && std::abs(pixel - seam) <= 2) level *= 0.6;
        }
        level += 1.1 * bell(readout.wire.seed() ^ moment, 2000 + sensor, static_cast<std::uint64_t>(pixel));
        pixels.push_back(static_cast<std::uint8_t>(std::clamp(std::lround(level), 0L, 255L)));
    }
    return pixels;
}

} // namespace quorvelsim
