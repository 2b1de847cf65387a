#include "calibration/direction.h"

#include <gtest/gtest.h>

namespace quorvel::calibration {
namespace {

struct ExpectedDirection {
    const char* letter;
    const char* file;
    const char* caption;
    const char* gridCaption;
    const char* hint;
    std::vector<std::string> columns;
};

class EachDirection : public ::testing::TestWithParam<ExpectedDirection> {};

TEST_P(EachDirection, HasItsTextsAndColumns)
{
    const auto* direction = directionOf(GetParam().letter);
    ASSERT_NE(direction, nullptr);
    EXPECT_STREQ(direction->file, GetParam().file);
    EXPECT_STREQ(direction->caption, GetParam().caption);
    EXPECT_STREQ(direction->gridCaption, GetParam().gridCaption);
    EXPECT_STREQ(direction->hint, GetParam().hint);
    std::vector<std::string> columns;
    for (const auto& reading : direction->readings) {
        columns.emplace_back(reading.name);
    }
    EXPECT_EQ(columns, GetParam().columns);
}

INSTANTIATE_TEST_SUITE_P(
    Directions, EachDirection,
    ::testing::Values(ExpectedDirection{"X",
                                        "XDirection.mdb",
                                        "X向标定",
                                        "X_Direction",
                                        "Rule_Data是千分表读数，手动输入；X_Data请点表格中小按钮进行测量！",
                                        {"X_Data"}},
                      ExpectedDirection{"Y",
                                        "YDirection.mdb",
                                        "Y向标定",
                                        "Y_Direction",
                                        "Rule_Data是千分表读数，手动输入；Y_Data请点表格中小按钮进行测量！",
                                        {"Y_Data"}},
                      ExpectedDirection{
                          "Z",
                          "ZDirection.mdb",
                          "Z向标定",
                          "Z_Direction",
                          "Rule_Data是千分表读数，手动输入；Z1_Data和Z2_Data请点表格中小按钮进行测量！",
                          {"Z1_Data", "Z2_Data"}}),
    [](const auto& row) { return std::string(row.param.letter); });

TEST(Direction, IsNoneForAnyOtherText)
{
    for (const auto* text : {"", "x", "XY", "Z1", "A"}) {
        EXPECT_EQ(directionOf(text), nullptr) << text;
    }
}

} // namespace
} // namespace quorvel::calibration
