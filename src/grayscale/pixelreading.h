#pragma once

#include "link/bench.h"

#include <QDateTime>
#include <QString>

#include <cstdint>
#include <span>
#include <vector>

namespace quorvel::grayscale {

/// The pixels of a sensor, of one reading or as the mean of several, and where they come from.
struct PixelReading {
    std::vector<double> values; ///< of the pixels 1 to N, 0 to 255; a damaged one is not a number
    std::vector<double> spread; ///< standard deviations, as many; empty when there was one reading
    std::vector<int> damaged;   ///< numbers of the pixels that arrived well in no reading
    int readings = 0;           ///< 0: there is nothing
    QString direction;          ///< "X", "Y", "Z1", "Z2"; empty: not known
    link::InstrumentType type = link::TypeA;
    int address = 0; ///< 1 to 249; 0: not known
    QDateTime at;    ///< when the last reading began; invalid: not known
    QString file;    ///< it was opened from this file; empty: it was read
};

/// "Readout 5, type A, X direction, mean of 3 readings", or the name of the file that it was opened from.
QString inWords(const PixelReading& reading);

/// Adds readings up.
class PixelAverage {
public:
    /// @param damaged  numbers of the pixels that do not count in this reading.
    /// @return false when there are not as many pixels as in the readings before; nothing is added then.
    bool add(std::span<const std::int16_t> pixels, std::span<const int> damaged);
    int readings() const { return readings_; }
    /// Sets values, spread, damaged and readings of `reading`.
    void putInto(PixelReading& reading) const;

private:
    /// Of one pixel. Sums of squares of 8-bit values are exact.
    struct Sums {
        int count = 0;
        double sum = 0;
        double squares = 0;
    };
    std::vector<Sums> sums_;
    int readings_ = 0;
};

/// True when what is known says that they are of different sensors.
bool isOfAnotherSensor(const PixelReading& one, const PixelReading& other);

/// Now less then, pixel by pixel; not a number where one of them is. Empty when they do not have as many pixels.
std::vector<double> differenceOf(const PixelReading& now, const PixelReading& then);

} // namespace quorvel::grayscale
