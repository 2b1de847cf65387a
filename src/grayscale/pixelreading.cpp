#include "grayscale/pixelreading.h"

#include "protocol/direction.h"

#include <QCoreApplication>
#include <QFileInfo>

#include <algorithm>
#include <cmath>
#include <limits>

namespace quorvel::grayscale {

QString inWords(const PixelReading& reading)
{
    const auto words = [](const char* text) { return QCoreApplication::translate("Pixels", text); };
    if (!reading.file.isEmpty()) return QFileInfo(reading.file).fileName();
    const auto letter = protocol::nameOf(reading.type);
    auto said = words("Readout %1, type %2, %3 direction")
                    .arg(QString::number(reading.address),
                         QString::fromLatin1(letter.data(), static_cast<qsizetype>(letter.size())),
                         reading.direction);
    if (reading.readings > 1) said += words(", mean of %1 readings").arg(reading.readings);
    return said;
}

bool PixelAverage::add(std::span<const std::int16_t> pixels, std::span<const int> damaged)
{
    if (readings_ > 0 && pixels.size() != sums_.size()) return false;
    sums_.resize(pixels.size());
    ++readings_;
    for (std::size_t i = 0; i < pixels.size(); ++i) {
        if (std::find(damaged.begin(), damaged.end(), static_cast<int>(i) + 1) != damaged.end()) continue;
        auto& sums = sums_[i];
        ++sums.count;
        sums.sum += pixels[i];
        sums.squares += static_cast<double>(pixels[i]) * pixels[i];
    }
    return true;
}

void PixelAverage::putInto(PixelReading& reading) const
{
    reading.readings = readings_;
    reading.values.clear();
    reading.spread.clear();
    reading.damaged.clear();
    for (const auto& sums : sums_) {
        const double mean = sums.count > 0 ? sums.sum / sums.count : std::numeric_limits<double>::quiet_NaN();
        reading.values.push_back(mean);
        if (sums.count == 0) reading.damaged.push_back(static_cast<int>(reading.values.size()));
        if (readings_ < 2) continue;
        const double squares = sums.squares - sums.sum * sums.sum / std::max(sums.count, 1);
        reading.spread.push_back(sums.count > 1 ? std::sqrt(std::max(squares, 0.0) / (sums.count - 1)) : 0);
    }
}

bool isOfAnotherSensor(const PixelReading& one, const PixelReading& other)
{
    const bool otherReadout = one.address > 0 && other.address > 0 && one.address != other.address;
    const bool otherDirection =
        !one.direction.isEmpty() && !other.direction.isEmpty() && one.direction != other.direction;
    return otherReadout || otherDirection;
}

std::vector<double> differenceOf(const PixelReading& now, const PixelReading& then)
{
    if (now.values.size() != then.values.size()) return {};
    std::vector<double> difference(now.values.size());
    std::transform(now.values.begin(), now.values.end(), then.values.begin(), difference.begin(),
                   std::minus<>());
    return difference;
}

} // namespace quorvel::grayscale
