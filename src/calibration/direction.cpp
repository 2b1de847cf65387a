#include "calibration/direction.h"

#include "jet/text_coding.h"
#include "link/values.h"

#include <algorithm>

namespace quorvel::calibration {

namespace {

constexpr Reading kReadings[] = {
    {"X_Data", link::firstValue, "6111", "X向标定参数下载完毕！", "X向标定参数下载失败！"},
    {"Y_Data", link::secondValue, "6311", "Y向标定参数下载完毕！", "Y向标定参数下载失败！"},
    {"Z1_Data", link::firstValue, "780111", "Z1向标定参数下载完毕！", "Z1向标定参数下载失败！"},
    {"Z2_Data", link::secondValue, "781111", "Z2向标定参数下载完毕！", "Z2向标定参数下载失败！"},
};

constexpr std::span kAll(kReadings);

constexpr Direction kDirections[] = {
    {'X', "XDirection.mdb", "X向标定", "X_Direction",
     "Rule_Data是千分表读数，手动输入；X_Data请点表格中小按钮进行测量！", link::kReadXY, kAll.subspan(0, 1)},
    {'Y', "YDirection.mdb", "Y向标定", "Y_Direction",
     "Rule_Data是千分表读数，手动输入；Y_Data请点表格中小按钮进行测量！", link::kReadXY, kAll.subspan(1, 1)},
    {'Z', "ZDirection.mdb", "Z向标定", "Z_Direction",
     "Rule_Data是千分表读数，手动输入；Z1_Data和Z2_Data请点表格中小按钮进行测量！", link::kReadZ,
     kAll.subspan(2, 2)},
};

} // namespace

const Direction* directionOf(const QString& letter)
{
    const auto* found = std::find_if(std::begin(kDirections), std::end(kDirections),
                                     [&](const Direction& row) { return letter == QLatin1Char(row.letter); });
    return found == std::end(kDirections) ? nullptr : found;
}

bool isReadingColumn(std::string_view column)
{
    return std::any_of(std::begin(kReadings), std::end(kReadings),
                       [&](const Reading& row) { return jet::sameName(row.column, column); });
}

} // namespace quorvel::calibration
