#pragma once

#include "grayscale/axes.h"
#include "grayscale/profilefigures.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <optional>
#include <random>
#include <string>
#include <vector>

namespace quorvel::grayscale::test {

/// A sensor as the readouts have them.
struct Sensor {
    const char* direction;
    link::InstrumentType type;
    int pixels;
    double fromMm; ///< of what is looked at
    double toMm;
};
inline constexpr Sensor kSensors[] = {{"X", link::TypeA, 7450, 0, 50},
                                      {"X", link::TypeC, 3760, 0, 50},
                                      {"Y", link::TypeB, 7330, 0, 100},
                                      {"Z1", link::TypeC, 2048, 0, 26.5}};

/// What a made profile is made of: the truth that is looked for.
struct Truth {
    Sensor sensor;
    Lamp lamp;
    Shadow shadow;
    std::vector<Dip> dips;   ///< bells
    std::optional<Dip> flat; ///< dirt with a flat bottom
    std::vector<int> dark;
    std::vector<int> saturated;
};

/// A profile of 8-bit pixels with noise of the sensor and of its electronics, and the truth about it. The same seed gives
/// the same one on every machine: numbers are drawn from the generator alone, whose sequence is fixed.
class MadeProfile {
public:
    /// @param withFlat  with tape, a leaf or other dirt that is as dark everywhere: 0.5 to 2 mm wide and 8 to 60 % deep, or 2
    ///                  to 6 mm wide and 40 to 70 % deep.
    explicit MadeProfile(std::uint32_t seed, bool withFlat = false) : random_(seed)
    {
        truth_.sensor = kSensors[seed % std::size(kSensors)];
        base_ = between(110, 150);
        arch_ = between(10, 60);
        tilt_ = between(-12, 12);
        noise_ = between(0.5, 1.5);
        response_ = between(0.002, 0.008);
        hangWire();
        if (withFlat) layFlat();
        layDust();
        spoilPixels();
        make();
    }

    const Truth& truth() const { return truth_; }
    const std::vector<double>& values() const { return values_; }

private:
    double between(double low, double high)
    {
        return low + (high - low) * (static_cast<double>(random_()) / 4294967296.0);
    }
    int whole(int low, int high) { return static_cast<int>(between(low, high + 1)); }
    /// Mean 0, deviation 1: four draws, added.
    double bell()
    {
        double sum = 0;
        for (int i = 0; i < 4; ++i)
            sum += between(-0.5, 0.5);
        return sum * std::sqrt(3.0);
    }
    double placeOf(int pixel) const { return pixelPosition(truth_.sensor.type, pixel); }

    void hangWire()
    {
        auto& shadow = truth_.shadow;
        shadow.widthMm = between(1, 4);
        shadow.centreMm = between(truth_.sensor.fromMm + 6, truth_.sensor.toMm - 6);
        edge_ = between(0.02, 0.1);
        // of a logistic edge, from a fifth to four fifths
        shadow.leftEdgeMm = shadow.rightEdgeMm = 2 * edge_ * std::log(4);
        shadow.depth = between(0.8, 0.95);
    }

    bool isFree(double mm, double reach) const
    {
        const auto& shadow = truth_.shadow;
        if (std::fabs(mm - shadow.centreMm) < shadow.widthMm / 2 + 12 * edge_ + reach) return false;
        const auto& flat = truth_.flat;
        if (flat && std::fabs(mm - flat->placeMm) < flat->widthMm / 2 + 12 * flatEdge_ + 3 * reach)
            return false;
        return std::all_of(truth_.dips.begin(), truth_.dips.end(), [&](const Dip& dip) {
            return std::fabs(mm - dip.placeMm) > 3 * (dip.widthMm + reach);
        });
    }

    void layFlat()
    {
        Dip flat;
        const bool wide = between(0, 1) > 0.5;
        flat.widthMm = wide ? between(2, 6) : between(0.5, 2);
        flat.depth = wide ? between(0.4, 0.7) : between(0.08, 0.6);
        flatEdge_ = between(0.01, 0.03);
        const double margin = flat.widthMm / 2 + 2;
        do {
            flat.placeMm = between(truth_.sensor.fromMm + margin, truth_.sensor.toMm - margin);
        } while (!isFree(flat.placeMm, margin));
        truth_.flat = flat;
    }

    void layDust()
    {
        const int count = whole(0, 8);
        for (int i = 0; i < count; ++i) { // as many of them as have a place
            Dip dip;
            dip.widthMm = between(0.06, 0.6);
            dip.depth = between(0.08, 0.7);
            dip.placeMm = between(truth_.sensor.fromMm + 1.5, truth_.sensor.toMm - 1.5);
            if (isFree(dip.placeMm, dip.widthMm)) truth_.dips.push_back(dip);
        }
        std::sort(truth_.dips.begin(), truth_.dips.end(),
                  [](const Dip& one, const Dip& other) { return one.placeMm < other.placeMm; });
    }

    void spoilPixels()
    {
        for (auto* pixels : {&truth_.dark, &truth_.saturated}) {
            const int count = whole(0, 3);
            while (static_cast<int>(pixels->size()) < count) {
                const int pixel = whole(1, truth_.sensor.pixels);
                const double mm = placeOf(pixel);
                const bool inside = mm > truth_.sensor.fromMm + 0.5 && mm < truth_.sensor.toMm - 0.5;
                if (inside && isFree(mm, 0.2) &&
                    std::find(spoilt_.begin(), spoilt_.end(), pixel) == spoilt_.end()) {
                    pixels->push_back(pixel);
                    for (int near = pixel - 2; near <= pixel + 2; ++near)
                        spoilt_.push_back(near);
                }
            }
            std::sort(pixels->begin(), pixels->end());
        }
    }

    double lampAt(double mm) const
    {
        const double along = (mm - truth_.sensor.fromMm) / (truth_.sensor.toMm - truth_.sensor.fromMm);
        return base_ + arch_ * std::sin(3.14159265358979 * std::clamp(along, 0.0, 1.0)) +
               tilt_ * (along - 0.5);
    }
    double passing(double mm) const
    {
        const auto& shadow = truth_.shadow;
        const double inside = shadow.widthMm / 2 - std::fabs(mm - shadow.centreMm);
        double part = 1 - shadow.depth / (1 + std::exp(-inside / edge_));
        if (const auto& flat = truth_.flat) {
            const double within = flat->widthMm / 2 - std::fabs(mm - flat->placeMm);
            part *= 1 - flat->depth / (1 + std::exp(-within / flatEdge_));
        }
        for (const auto& dip : truth_.dips) {
            const double x = (mm - dip.placeMm) / dip.widthMm;
            if (std::fabs(x) < 5) part *= 1 - dip.depth * std::exp(-4 * std::log(2) * x * x);
        }
        return part;
    }

    void make()
    {
        const auto& sensor = truth_.sensor;
        double sum = 0;
        int seen = 0;
        double least = 1e9;
        double most = 0;
        for (int pixel = 1; pixel <= sensor.pixels; ++pixel) {
            const double mm = placeOf(pixel);
            const bool covered = pixel <= 20 || pixel > sensor.pixels - 12;
            const double light = lampAt(mm);
            double value = covered ? 6 : light * passing(mm) * (1 + response_ * bell());
            value += noise_ * bell();
            if (std::binary_search(truth_.dark.begin(), truth_.dark.end(), pixel)) value = between(0, 25);
            if (std::binary_search(truth_.saturated.begin(), truth_.saturated.end(), pixel)) value = 255;
            values_.push_back(static_cast<double>(std::clamp(std::lround(value), 0L, 255L)));
            if (mm < sensor.fromMm || mm > sensor.toMm) continue;
            sum += light;
            ++seen;
            least = std::min(least, light);
            most = std::max(most, light);
        }
        truth_.lamp = {sum / seen, least / most};
    }

    std::mt19937 random_;
    Truth truth_;
    double base_, arch_, tilt_, noise_, response_;
    double edge_ = 0;
    double flatEdge_ = 0;
    std::vector<int> spoilt_;
    std::vector<double> values_;
};

} // namespace quorvel::grayscale::test
