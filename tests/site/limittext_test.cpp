#include "site/limittext.h"

#include <gtest/gtest.h>

namespace quorvel::site {
namespace {

struct Form {
    const char* typed;
    std::optional<double> low;
    std::optional<double> high;
    const char* shown;
};

TEST(LimitText, IsReadInAllItsFormsAndShownInOne)
{
    const Form forms[] = {{"-2 to 2.5", -2, 2.5, "-2 to 2.5"},
                          {" -2to2.5 ", -2, 2.5, "-2 to 2.5"},
                          {"-2 to", -2, {}, "-2 to"},
                          {"to 2.5", {}, 2.5, "to 2.5"},
                          {"+-2", -2, 2, "-2 to 2"},
                          {"±.5", -.5, .5, "-0.5 to 0.5"},
                          {"", {}, {}, ""},
                          {"0 to 0", 0, 0, "0 to 0"}};
    for (const auto& form : forms) {
        const auto limit = limitOf(QString::fromUtf8(form.typed));
        ASSERT_TRUE(limit) << form.typed;
        EXPECT_EQ(*limit, (Limit{form.low, form.high})) << form.typed;
        EXPECT_EQ(limitText(*limit).toStdString(), form.shown);
    }
}

TEST(LimitText, WhatIsNoLimitIsRefused)
{
    for (const auto* typed : {"to", "2", "a to b", "2 to 1", "1e3 to 2", "to 1000001", "1 to 2 mm", "+- -2"})
        EXPECT_FALSE(limitOf(QString::fromUtf8(typed))) << typed;
}

TEST(LimitText, PassedSideIsNamed)
{
    const Limit limit{-2, 2.5};
    EXPECT_EQ(passedText(limit, 2.5), "");
    EXPECT_EQ(passedText(limit, 2.50001), "above 2.5");
    EXPECT_EQ(passedText(limit, -2.1), "below -2");
}

} // namespace
} // namespace quorvel::site
