#include "grayscale/profilefigures.h"

#include "grayscale/axes.h"
#include "grayscale/madeprofile.h"
#include "text/number.h"
#include "text/reply.h"

#include <algorithm>
#include <cmath>
#include <fstream>
#include <map>
#include <random>
#include <sstream>

#include <gmock/gmock.h>

namespace quorvel::grayscale {
namespace {

using test::MadeProfile;
using test::Truth;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

constexpr std::uint32_t kProfiles = 1000;

/// The errors that the manual states, by the name of the figure: the rows "| figure | up to ERROR unit | ..." of its table.
std::map<std::string, double> statedErrors()
{
    std::ifstream page(QUORVEL_ROOT "/docs/grayscale.md");
    std::map<std::string, double> errors;
    for (std::string line; std::getline(page, line);) {
        if (!line.starts_with("| ") || line.find("| up to ") == std::string::npos) continue;
        std::istringstream cells(line.substr(1));
        std::string name;
        std::string error;
        std::getline(cells, name, '|');
        std::getline(cells, error, '|');
        errors[std::string(text::trimBlanks(name))] = text::Val(error.substr(error.find("up to ") + 6));
    }
    return errors;
}

/// The largest error of each figure over many profiles.
class Errors {
public:
    void add(const std::string& figure, double error)
    {
        auto& most = most_[figure];
        most = std::max(most, std::fabs(error));
    }
    const std::map<std::string, double>& most() const { return most_; }

private:
    std::map<std::string, double> most_;
};

void compareShadow(const Shadow& found, const Shadow& truth, Errors& errors)
{
    errors.add("centre of the shadow", found.centreMm - truth.centreMm);
    errors.add("width of the shadow", found.widthMm - truth.widthMm);
    errors.add("edge of the shadow", found.leftEdgeMm - truth.leftEdgeMm);
    errors.add("edge of the shadow", found.rightEdgeMm - truth.rightEdgeMm);
    errors.add("depth of the shadow", 100 * (found.depth - truth.depth));
}

void compareDips(const std::vector<Dip>& found, const std::vector<Dip>& truth, Errors& errors)
{
    ASSERT_EQ(found.size(), truth.size());
    for (std::size_t i = 0; i < found.size(); ++i) {
        errors.add("place of a dip", found[i].placeMm - truth[i].placeMm);
        errors.add("width of a dip", found[i].widthMm - truth[i].widthMm);
        errors.add("depth of a dip", 100 * (found[i].depth - truth[i].depth));
    }
}

/// @param flat  whether those that the manual states for flat dirt are meant, or the others.
void compareWithManual(const Errors& errors, bool flat)
{
    auto stated = statedErrors();
    std::erase_if(stated, [flat](const auto& row) { return row.first.ends_with("flat dirt") != flat; });
    for (const auto& [figure, error] : errors.most()) {
        if (!stated.contains(figure)) {
            ADD_FAILURE() << figure << " has no stated error; it is " << error;
            continue;
        }
        EXPECT_LE(error, stated.at(figure)) << figure;
        EXPECT_GE(3 * error, stated.at(figure)) << figure << " is better than the manual says: " << error;
    }
    EXPECT_EQ(errors.most().size(), stated.size()) << "every stated error is one that is tested";
}

TEST(ProfileFigures, HoldWithinTheirStatedErrorsOnThousandMadeProfiles)
{
    Errors errors;
    for (std::uint32_t seed = 0; seed < kProfiles; ++seed) {
        SCOPED_TRACE(seed);
        const MadeProfile made(seed);
        const auto& truth = made.truth();
        const auto found = profileFigures(made.values(), {}, truth.sensor.direction, truth.sensor.type);
        ASSERT_TRUE(found.shadow && found.lamp);
        compareShadow(*found.shadow, truth.shadow, errors);
        compareDips(found.dips, truth.dips, errors);
        if (::testing::Test::HasFatalFailure()) return;
        errors.add("lamp level", found.lamp->level - truth.lamp.level);
        errors.add("evenness", 100 * (found.lamp->evenness - truth.lamp.evenness));
        EXPECT_EQ(found.dark, truth.dark);
        EXPECT_EQ(found.saturated, truth.saturated);
    }
    compareWithManual(errors, false);
}

TEST(ProfileFigures, OfFlatDirtHoldWithinTheirStatedErrorsOnThousandMadeProfiles)
{
    Errors errors;
    for (std::uint32_t seed = 0; seed < kProfiles; ++seed) {
        SCOPED_TRACE(seed);
        const MadeProfile made(seed, true);
        const auto& truth = made.truth();
        const auto found = profileFigures(made.values(), {}, truth.sensor.direction, truth.sensor.type);
        ASSERT_TRUE(found.shadow);
        EXPECT_NEAR(found.shadow->centreMm, truth.shadow.centreMm, 0.1) << "the wire, and not the dirt";
        ASSERT_EQ(found.dips.size(), truth.dips.size() + 1);
        const auto dirt = std::ranges::min_element(
            found.dips, {}, [&](const Dip& dip) { return std::fabs(dip.placeMm - truth.flat->placeMm); });
        errors.add("place of flat dirt", dirt->placeMm - truth.flat->placeMm);
        errors.add("width of flat dirt", dirt->widthMm - truth.flat->widthMm);
        errors.add("depth of flat dirt", 100 * (dirt->depth - truth.flat->depth));
    }
    compareWithManual(errors, true);
}

// The manual says so: what is wide and weak is taken for the lamp.
TEST(ProfileFigures, DipsThatAWideWeakShadeIsTakenForAreWithinIt)
{
    for (const double width : {3.0, 5.0, 8.0}) {
        std::vector<double> values;
        for (int pixel = 1; pixel <= 3760; ++pixel) {
            const double mm = pixelPosition(link::TypeC, pixel);
            const double light = mm > 9 && mm < 11 ? 20 : std::fabs(mm - 30) < width / 2 ? 160 : 200;
            values.push_back(light + pixel % 3 - 1);
        }
        const auto figures = profileFigures(values, {}, "X", link::TypeC);
        ASSERT_TRUE(figures.shadow);
        EXPECT_NEAR(figures.shadow->centreMm, 10, 0.02);
        EXPECT_FALSE(figures.dips.empty()) << width;
        for (const auto& dip : figures.dips)
            EXPECT_LE(std::fabs(dip.placeMm - 30), width / 2) << width;
    }
}

/// A sensor of type C without wire and dust: 200 everywhere, 6 at its covered ends.
std::vector<double> plainSensor()
{
    std::vector<double> values(3760, 200);
    std::fill(values.begin(), values.begin() + 24, 6);
    std::fill(values.end() - 14, values.end(), 6);
    return values;
}

TEST(ProfileFigures, OfAnEvenLampAreItsOwn)
{
    auto values = plainSensor();
    values[1999] = 190;
    values[2999] = 210;
    const auto figures = profileFigures(values, {}, "X", link::TypeC);
    EXPECT_EQ(figures.firstPixel, 125) << "at 0.004 mm";
    EXPECT_EQ(figures.lastPixel, 3696) << "at 49.998 mm";
    EXPECT_EQ(figures.lowest.pixel, 2000);
    EXPECT_EQ(figures.lowest.value, 190);
    EXPECT_EQ(figures.highest.pixel, 3000);
    EXPECT_EQ(figures.highest.value, 210);
    EXPECT_DOUBLE_EQ(figures.mean, 200);
    EXPECT_NEAR(figures.lamp->level, 200, 1e-9);
    EXPECT_NEAR(figures.lamp->evenness, 1, 1e-9);
    EXPECT_FALSE(figures.shadow);
    EXPECT_THAT(figures.dips, IsEmpty());
}

TEST(ProfileFigures, CoveredPixelsAtTheEndsAreNotLookedAt)
{
    std::vector<double> values(2048, 200); // ends at 26.9 mm, before the red line
    std::fill(values.end() - 14, values.end(), 6);
    const auto figures = profileFigures(values, {}, "Z1", link::TypeC);
    EXPECT_EQ(figures.lastPixel, 2048 - 14 - 2);
    EXPECT_THAT(figures.dark, IsEmpty());
}

TEST(ProfileFigures, UpToThreeDarkPixelsAreDarkAndMoreAreADip)
{
    auto values = plainSensor();
    std::fill_n(values.begin() + 999, 3, 20);
    std::fill_n(values.begin() + 1999, 4, 20);
    const auto figures = profileFigures(values, {}, "X", link::TypeC);
    EXPECT_THAT(figures.dark, ElementsAre(1000, 1001, 1002));
    ASSERT_EQ(figures.dips.size(), 1U);
    EXPECT_NEAR(figures.dips[0].placeMm, (2001.5 - 64) * 0.014 - 0.85, 0.02);
}

TEST(ProfileFigures, DamagedPixelsAreNamedAndNotJudged)
{
    auto values = plainSensor();
    values[1999] = 0;
    values[2999] = 255;
    const std::vector<int> damaged{3000, 2000, 0, -1, 3761};
    const auto figures = profileFigures(values, damaged, "X", link::TypeC);
    EXPECT_THAT(figures.damaged, ElementsAre(2000, 3000));
    EXPECT_THAT(figures.dark, IsEmpty());
    EXPECT_THAT(figures.saturated, IsEmpty());
    EXPECT_EQ(figures.lowest.value, 200);
    EXPECT_EQ(figures.highest.value, 200);
}

TEST(ProfileFigures, TheSeamOfAStitchedSensorIsNoDust)
{
    std::vector<double> values(7330, 200);
    std::fill_n(values.begin() + 3662, 5, 120);
    std::fill_n(values.begin() + 5000, 5, 120);
    const auto figures = profileFigures(values, {}, "Y", link::TypeB);
    ASSERT_EQ(figures.dips.size(), 2U);
    EXPECT_TRUE(figures.dips[0].seam);
    EXPECT_FALSE(figures.dips[1].seam);
    EXPECT_FALSE(profileFigures(std::span(values).first(3760), {}, "Y", link::TypeC).dips.at(0).seam);
}

TEST(ProfileFigures, OfAnythingAtAllAreFinite)
{
    std::mt19937 random(7);
    for (const int count : {0, 1, 2, 130, 199, 400, 3760, 20000}) {
        for (const auto most : {1U, 2U, 200U, 256U}) {
            std::vector<double> values;
            for (int i = 0; i < count; ++i)
                values.push_back(static_cast<double>(random() % most));
            for (const auto& sensor : test::kSensors) {
                const std::vector<int> damaged{1, 2, count, count + 1};
                const auto figures = profileFigures(values, damaged, sensor.direction, sensor.type);
                EXPECT_TRUE(std::isfinite(figures.mean));
                EXPECT_TRUE(!figures.lamp || (figures.lamp->level > 0 && figures.lamp->evenness <= 1));
                for (const auto& dip : figures.dips)
                    EXPECT_TRUE(dip.depth >= kLeastDepth && dip.depth <= 1 && dip.widthMm > 0) << dip.depth;
                EXPECT_TRUE(!figures.shadow || figures.shadow->widthMm > 0);
            }
        }
    }
}

} // namespace
} // namespace quorvel::grayscale
