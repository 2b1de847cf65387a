#include "calibration/direction.h"
#include "calibration/recorddata.h"
#include "support/fuzz_input.h"

#include <QJsonDocument>

#include <algorithm>
#include <cmath>

/// Takes any bytes for a calibration record, of each direction. What is read must be numbers of as many columns as the
/// direction has, and be written as it was read.
namespace quorvel::calibration {
namespace {

using test::promised;

void holdPass(const Pass& pass, std::size_t columns)
{
    promised(!pass.dial || std::isfinite(*pass.dial), "the dial reading is a number");
    for (const auto& take : pass.takes) {
        promised(take.readings.size() == columns, "a reading for each column");
        promised(std::ranges::all_of(take.readings, [](double each) { return std::isfinite(each); }),
                 "readings are numbers");
        promised(take.address >= 0 && take.address <= 249, "an address of the bus, or none");
    }
    for (const double mean : meansOf(pass))
        promised(std::isfinite(mean), "means are numbers");
}

void holdRecord(const RecordData& record, const DirectionRow& direction)
{
    promised(!record.tolerance || *record.tolerance > 0, "a tolerance above 0");
    promised(record.steadyWithin > 0, "a spread above 0");
    for (const auto& run : record.runs) {
        for (const auto& point : run) {
            for (const auto& pass : point.passes)
                holdPass(pass, direction.readings.size());
        }
    }
    const auto written = recordJson(record, direction);
    const auto again = readRecord(QJsonDocument(written).toJson(), direction);
    promised(static_cast<bool>(again), "what was read is written so that it can be read");
    promised(recordJson(*again, direction) == written, "and is written as the same again");
}

} // namespace
} // namespace quorvel::calibration

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    using namespace quorvel::calibration;
    const auto bytes = QByteArray(reinterpret_cast<const char*>(data), static_cast<qsizetype>(size));
    for (const auto* letter : {"X", "Z"}) {
        const auto& direction = *directionOf(QLatin1String(letter));
        if (const auto record = readRecord(bytes, direction)) {
            holdRecord(*record, direction);
        } else {
            quorvel::test::promised(!record.error().empty(), "a reason");
        }
    }
    return 0;
}
