#pragma once

#include "calibration/records.h"
#include "jet/jet3_file.h"

#include <bit>
#include <string>
#include <vector>

namespace quorvel::calibration {

/// A file of the format before Access 2000 with a table `Calibration` of these columns and rows.
/// @param texts  how many of the columns hold texts.
inline std::string olderFile(const std::vector<jet::testing::Column3>& columns, std::uint16_t texts,
                             const std::vector<jet::ByteVector>& points)
{
    using namespace jet::testing;
    const auto catalogRow = [](std::uint32_t id, const std::string& name, std::uint32_t flags) {
        jet::ByteVector fixed;
        jet::append32(fixed, id);
        jet::append16(fixed, 1);
        jet::append32(fixed, flags);
        return row3(4, fixed, {ansi(name)}, {0, 1, 2, 3});
    };
    const std::vector<Column3> catalog = {{"Flags", 4, true, 3, 0, 6, 4},
                                          {"Id", 4, true, 0, 0, 0, 4},
                                          {"Name", 10, false, 1, 0, 0, 255},
                                          {"Type", 3, true, 2, 1, 4, 2}};
    std::string file;
    for (const auto& page :
         {header3(), dataPage3(1, {map3({}), map3({})}), definition3(catalog, 1, 2, 3, 0x53),
          dataPage3(0, {map3({4}), map3({}), map3({6}), map3({})}),
          dataPage3(2, {catalogRow(2, "MSysObjects", 0x80000000), catalogRow(5, "Calibration", 0)}),
          definition3(columns, texts, kPoints, 3, 0x4E), dataPage3(5, points)}) {
        file.append(page.begin(), page.end());
    }
    // The second table's maps are rows 2 and 3 of the map page.
    for (const std::size_t map : {0U, 1U}) {
        file[5 * kPageSize3 + 0x23 + 4 * map] = static_cast<char>(2 + map);
    }
    return file;
}

/// 11 points of the X direction, the dial reading of each its number, no readings.
inline std::string olderFile()
{
    std::vector<jet::ByteVector> points;
    for (std::uint16_t number = 0; number < kPoints; ++number) {
        jet::ByteVector fixed;
        jet::append16(fixed, number);
        jet::append32(fixed, std::bit_cast<std::uint32_t>(static_cast<float>(number)));
        jet::append32(fixed, 0);
        points.push_back(jet::testing::row3(3, fixed, {}, {0, 1}));
    }
    return olderFile(
        {{"SN", 3, true, 0, 0, 0, 2}, {"Rule_Data", 6, true, 1, 0, 2, 4}, {"X_Data", 6, true, 2, 0, 6, 4}}, 0,
        points);
}

/// 11 points of the Z direction with their readings, which a column of texts parts, and a column of small numbers.
inline std::string olderFileOfZ()
{
    std::vector<jet::ByteVector> points;
    for (std::uint16_t number = 0; number < kPoints; ++number) {
        jet::ByteVector fixed;
        jet::append16(fixed, number);
        for (const float value : {0.25F, 1.25F, 2.25F}) {
            jet::append32(fixed, std::bit_cast<std::uint32_t>(static_cast<float>(number) + value));
        }
        jet::append8(fixed, 200);
        points.push_back(jet::testing::row3(6, fixed, {jet::testing::ansi("morning")}, {0, 1, 2, 3, 4, 5}));
    }
    return olderFile({{"SN", 3, true, 0, 0, 0, 2},
                      {"Rule_Data", 6, true, 1, 0, 2, 4},
                      {"Z1_Data", 6, true, 2, 0, 6, 4},
                      {"Note", 10, false, 3, 0, 0, 50},
                      {"Z2_Data", 6, true, 4, 0, 10, 4},
                      {"Small", 2, true, 5, 0, 14, 1}},
                     1, points);
}

} // namespace quorvel::calibration
