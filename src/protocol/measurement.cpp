#include "protocol/measurement.h"

#include "protocol/values.h"
#include "text/number.h"

namespace quorvel::protocol {

// At 9600 baud the end of a long reply is still on the line when the length of a short one is reached. Taken at once, it
// would now and then have 28 characters and be refused; or its line end would stand before the next reply.
link::Transaction measurement(Direction direction, std::string_view addressDigits)
{
    auto query = direction == Direction::Z ? zQuery(addressDigits) : xyQuery(addressDigits);
    query.reply.count = kShortMeasurement;
    query.reply.longest = kLongMeasurement;
    return query;
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

std::string measuredBy(Sensor sensor, std::string_view reply)
{
    const bool first = sensor == Sensor::X || sensor == Sensor::Z1;
    return first ? firstValue(reply) : secondValue(reply);
}

} // namespace quorvel::protocol
