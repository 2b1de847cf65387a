#include "calibration/records.h"

#include "jet/text_coding.h"

#include <algorithm>
#include <cmath>

namespace quorvel::calibration {

namespace {

std::optional<float> single(const jet::Value& value)
{
    const auto number = value.number();
    if (!number || !std::isfinite(static_cast<float>(*number))) return std::nullopt;
    return static_cast<float>(*number);
}

} // namespace

int columnOf(const std::vector<jet::FieldDef>& fields, std::string_view name)
{
    const auto found = std::find_if(fields.begin(), fields.end(), [&](const jet::FieldDef& field) {
        return jet::sameName(field.name, name);
    });
    return found == fields.end() ? -1 : static_cast<int>(found - fields.begin());
}

std::optional<double> singleIn(const Records& records, int row, int column)
{
    const bool there = row >= 0 && row < records.rowCount() && column >= 0 &&
                       column < static_cast<int>(records.fields().size());
    return there ? single(records.value(row, column)) : std::nullopt;
}

std::optional<Points> pointsOf(const Records& records, int readingColumn)
{
    const bool there = readingColumn >= 0 && readingColumn < static_cast<int>(records.fields().size());
    if (!there || records.rowCount() < kPoints) return std::nullopt;
    Points points;
    for (int row = 0; row < kPoints; ++row) {
        const auto dial = single(records.value(row, kDialColumn));
        const auto reading = single(records.value(row, readingColumn));
        if (!dial || !reading) return std::nullopt;
        points[static_cast<std::size_t>(row)] = {*dial, *reading};
    }
    return points;
}

} // namespace quorvel::calibration
