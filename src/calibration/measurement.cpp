#include "calibration/measurement.h"

#include "link/values.h"

namespace quorvel::calibration {

std::string measurementFrame(const Direction& direction, std::string_view addressDigits)
{
    return link::valuesFrame(addressDigits, direction.measureCommand);
}

bool isMeasurement(std::string_view reply)
{
    return reply.size() == kShortMeasurement || reply.size() == kLongMeasurement;
}

std::string measure(link::Module1& module1, const Direction& direction, std::string_view addressDigits)
{
    module1.discardInput();
    module1.SendFrame(measurementFrame(direction, addressDigits));
    module1.WaitForInput(kMeasurementTimeout, kShortMeasurement);
    return module1.takeInput();
}

} // namespace quorvel::calibration
