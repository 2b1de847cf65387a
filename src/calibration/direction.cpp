#include "calibration/direction.h"

#include "jet/text_coding.h"

#include <algorithm>

namespace quorvel::calibration {

namespace {

using protocol::Sensor;

constexpr ReadingColumn kReadings[] = {
    {"X_Data", Sensor::X}, {"Y_Data", Sensor::Y}, {"Z1_Data", Sensor::Z1}, {"Z2_Data", Sensor::Z2}};

constexpr std::span kAll(kReadings);

constexpr DirectionRow kRows[] = {
    {Direction::X, "XDirection.mdb", "X向标定", "X_Direction",
     "Rule_Data是千分表读数，手动输入；X_Data请点表格中小按钮进行测量！", kAll.subspan(0, 1)},
    {Direction::Y, "YDirection.mdb", "Y向标定", "Y_Direction",
     "Rule_Data是千分表读数，手动输入；Y_Data请点表格中小按钮进行测量！", kAll.subspan(1, 1)},
    {Direction::Z, "ZDirection.mdb", "Z向标定", "Z_Direction",
     "Rule_Data是千分表读数，手动输入；Z1_Data和Z2_Data请点表格中小按钮进行测量！", kAll.subspan(2, 2)},
};

} // namespace

const DirectionRow* directionOf(const QString& letter)
{
    const auto* found = std::ranges::find_if(kRows, [&](const DirectionRow& row) {
        const auto name = protocol::nameOf(row.direction);
        return letter == QLatin1String(name.data(), static_cast<qsizetype>(name.size()));
    });
    return found == std::end(kRows) ? nullptr : found;
}

bool isReadingColumn(std::string_view column)
{
    return std::ranges::any_of(kReadings,
                               [&](const ReadingColumn& row) { return jet::sameName(row.name, column); });
}

} // namespace quorvel::calibration
