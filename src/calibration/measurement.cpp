#include "calibration/measurement.h"

#include "link/values.h"
#include "text/number.h"

namespace quorvel::calibration {

std::string measurementFrame(const Direction& direction, std::string_view addressDigits)
{
    return link::valuesFrame(addressDigits, direction.measureCommand);
}

bool isMeasurement(std::string_view reply)
{
    return reply.size() == kShortMeasurement || reply.size() == kLongMeasurement;
}

std::string whyNoMeasurement(std::string_view reply)
{
    if (reply.empty()) return "the readout did not answer";
    return text::general(static_cast<double>(reply.size())) + " characters came instead of " +
           text::general(kShortMeasurement) + " or " + text::general(kLongMeasurement);
}

// At 9600 baud the end of a long reply is still on the line when the length of a short one is reached. Taken at once, it
// would now and then have 28 characters and be refused; or its line end would stand before the next reply.
std::string measure(link::Module1& module1, const Direction& direction, std::string_view addressDigits)
{
    module1.discardInput();
    module1.SendFrame(measurementFrame(direction, addressDigits));
    if (module1.WaitForInput(kMeasurementTimeout, kShortMeasurement)) {
        module1.WaitForInput(kMeasurementTail, kLongMeasurement);
    }
    return module1.takeInput();
}

} // namespace quorvel::calibration
