#include "jet/convert.h"

#include <cmath>
#include <limits>

namespace quorvel::jet {

namespace {

Failure doesNotFit(FieldType type, const Value& value)
{
    return Failure{"cannot hold \"" + value.text() + "\" in a field of type " + std::string(typeName(type)) +
                   ". Enter another value."};
}

template<class Whole>
Result<Value> wholeOf(FieldType type, const Value& value, double number)
{
    const double rounded = std::nearbyint(number);
    if (!(rounded >= std::numeric_limits<Whole>::min() && rounded <= std::numeric_limits<Whole>::max())) {
        return doesNotFit(type, value);
    }
    return Value(static_cast<Whole>(rounded));
}

Result<Value> singleOf(const Value& value, double number)
{
    // A double that rounds past the largest Single would become infinite.
    const auto single = static_cast<float>(number);
    if (!std::isfinite(single)) return doesNotFit(FieldType::Single, value);
    return Value(single);
}

} // namespace

Result<Value> fitTo(FieldType type, const Value& value)
{
    if (value.isNull()) return value;
    if (type == FieldType::Date) {
        const auto date = value.date();
        if (!date || !date->civil()) return doesNotFit(type, value);
        return value;
    }
    const auto number = value.number();
    if (!number || !std::isfinite(*number)) return doesNotFit(type, value);
    switch (type) {
    case FieldType::Integer:
        return wholeOf<std::int16_t>(type, value, *number);
    case FieldType::Long:
        return wholeOf<std::int32_t>(type, value, *number);
    case FieldType::Single:
        return singleOf(value, *number);
    case FieldType::Double:
        return Value(*number);
    default:
        return doesNotFit(type, value);
    }
}

} // namespace quorvel::jet
