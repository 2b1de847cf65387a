#include "calibration/calibration_files.h"
#include "calibration/judgement.h"
#include "calibration/ownership.h"
#include "calibration/tablefile.h"

#include <gmock/gmock.h>

#include <cmath>
#include <functional>

namespace quorvel::calibration {
namespace {

using ::testing::IsEmpty;

const QDateTime kNine(QDate(2024, 5, 17), QTime(9, 0));

/// A table in memory.
class TableInMemory final : public Records {
public:
    explicit TableInMemory(const std::vector<std::string>& readings) : fields_(columnsOf(readings))
    {
        for (int row = 0; row < kPoints; ++row) {
            rows_.emplace_back(fields_.size(), jet::kNull);
            rows_.back()[0] = jet::Value(row);
        }
    }

    const std::vector<jet::FieldDef>& fields() const override { return fields_; }
    int rowCount() const override { return static_cast<int>(rows_.size()); }
    const jet::Value& value(int row, int column) const override
    {
        return rows_[static_cast<std::size_t>(row)][static_cast<std::size_t>(column)];
    }
    const std::string& readOnlyBecause() const override { return readOnly_; }
    jet::Status write(int row, const Changes& changes) override
    {
        for (const auto& [name, number] : changes) {
            rows_[static_cast<std::size_t>(row)][static_cast<std::size_t>(columnOf(fields_, name))] =
                number ? jet::Value(static_cast<float>(*number)) : jet::kNull;
        }
        return {};
    }

private:
    std::vector<jet::FieldDef> fields_;
    std::vector<std::vector<jet::Value>> rows_;
    std::string readOnly_;
};

using Reading = std::function<double(int)>;

class Judging : public ::testing::Test {
protected:
    /// Takes the points of a run upwards, a millimetre apart.
    void takeAll(RunKind kind, const Reading& reading, int address = 5, const QDateTime& at = kNine)
    {
        for (int i = 0; i < kPoints; ++i)
            take(kind, i, i, reading(i), address, at);
    }
    void take(RunKind kind, int point, double dial, double reading, int address = 5,
              const QDateTime& at = kNine)
    {
        record.run(kind)[static_cast<std::size_t>(point)].put(
            {dial, false, {{at.addSecs(point), address, {reading}}}});
        const bool writes = kind == RunKind::Measured;
        EXPECT_TRUE(!writes || table.write(point, {{"Rule_Data", dial}, {"X_Data", reading}}));
    }
    void downloaded(bool zeros, const QDateTime& at, Verdict verdict = Verdict::Agrees, int address = 5)
    {
        record.downloads.push_back({at, address, "X_Data", zeros, ":", verdict, {}});
    }
    RunJudged judge(RunKind kind) { return judgeRun(record, kind, table, *directionOf("X")); }
    Ownership owners() { return ownershipOf(record, table, *directionOf("X")); }

    RecordData record;
    TableInMemory table{{"X_Data"}};
};

TEST_F(Judging, AsFoundIsComparedWithTheDialAndFails)
{
    record.tolerance = 0.02;
    takeAll(RunKind::Found, [](int i) { return i + (i == 7 ? 0.05 : 0.01); });
    const auto run = judge(RunKind::Found);
    const auto& column = run.columns[0];
    EXPECT_EQ(column.worst, 7U);
    EXPECT_NEAR(*column.points[7].error, 0.05, 1e-9);
    EXPECT_NEAR(*column.points[6].error, 0.01, 1e-9);
    EXPECT_EQ(run.passes, false);
    // one point 0.04 above ten others: the line takes a little of it
    EXPECT_EQ(run.verdict.toStdString(),
              "FAIL: worst error 0.0500 mm at point 7, nonlinear error 0.0118 mm; permitted 0.02 mm.");
}

TEST_F(Judging, AnErrorAsLargeAsPermittedPasses)
{
    record.tolerance = 0.02;
    for (int i = 0; i < kPoints; ++i) // 0.27 - 0.25 is more than 0.02 in binary
        take(RunKind::Found, i, 0.25 * i, std::round(1000 * (0.25 * i + 0.02)) / 1000);
    const auto run = judge(RunKind::Found);
    EXPECT_EQ(run.passes, true) << qPrintable(run.verdict);
    EXPECT_TRUE(run.verdict.startsWith("pass: worst error 0.0200 mm at point 0,")) << qPrintable(run.verdict);
    record.tolerance = 0.0199;
    EXPECT_EQ(judge(RunKind::Found).passes, false);
}

TEST_F(Judging, AFreeZeroIsTakenOff)
{
    record.tolerance = 0.02;
    record.zeroIsFree = true;
    takeAll(RunKind::Left, [](int i) { return i + 12.345; });
    downloaded(false, kNine.addSecs(-1));
    const auto run = judge(RunKind::Left);
    EXPECT_EQ(run.passes, true);
    EXPECT_EQ(run.verdict.toStdString(),
              "pass: worst error 0.0000 mm at point 0, nonlinear error 0.0000 mm, zero +12.3450 mm taken "
              "off; permitted 0.02 mm.");
    EXPECT_THAT(run.hints, IsEmpty());
    record.zeroIsFree = false;
    EXPECT_EQ(judge(RunKind::Left).passes, false);
}

TEST_F(Judging, MeasuredIsComparedWithItsLine)
{
    record.tolerance = 0.02;
    takeAll(RunKind::Measured, [](int i) { return 2 * i + 10 + (i == 5 ? 0.011 : 0); });
    const auto run = judge(RunKind::Measured);
    EXPECT_EQ(run.columns[0].worst, 5U);
    EXPECT_NEAR(*run.columns[0].points[5].error, 0.010, 1e-5);
    EXPECT_NEAR(*run.columns[0].points[0].error, -0.001, 1e-5);
    EXPECT_EQ(run.passes, true);
}

TEST_F(Judging, ThereIsNoVerdictBeforeAllPointsAndNoneWithoutATolerance)
{
    EXPECT_EQ(judge(RunKind::Found).verdict.toStdString(), "not taken.");
    take(RunKind::Found, 3, 3, 3.001);
    EXPECT_EQ(judge(RunKind::Found).verdict.toStdString(),
              "1 of 11 points, no verdict before all are there.");
    EXPECT_NEAR(*judge(RunKind::Found).columns[0].points[3].error, 0.001, 1e-9);
    takeAll(RunKind::Found, [](int i) { return i; });
    EXPECT_EQ(judge(RunKind::Found).verdict.toStdString(),
              "worst error 0.0000 mm at point 0, nonlinear error 0.0000 mm. No tolerance is entered.");
    EXPECT_FALSE(judge(RunKind::Found).passes);
}

TEST_F(Judging, SpreadIsOfOneWayAndHysteresisBetweenBoth)
{
    auto& point = record.run(RunKind::Found)[2];
    point.put({2.0, false, {{kNine, 5, {2.01}}, {kNine, 5, {2.04}}, {kNine, 5, {2.01}}}});
    point.put({2.5, true, {{kNine, 5, {2.50}}, {kNine, 5, {2.51}}}});
    const auto judged = judge(RunKind::Found).columns[0].points[2];
    EXPECT_EQ(judged.takes, 5);
    EXPECT_NEAR(*judged.spread, 0.03, 1e-9);
    EXPECT_NEAR(*judged.dial, 2.25, 1e-9);
    // up 0.02 above its dial reading, down 0.005
    EXPECT_NEAR(*judged.hysteresis, 0.015, 1e-9);
}

TEST_F(Judging, TakesThatTheWorkingFileNoLongerShowsDoNotCount)
{
    takeAll(RunKind::Measured, [](int i) { return 2 * i; });
    EXPECT_TRUE(table.write(4, {{"X_Data", 8.5}}));
    const auto run = judge(RunKind::Measured);
    EXPECT_EQ(run.columns[0].points[3].takes, 1);
    EXPECT_EQ(run.columns[0].points[4].takes, 0);
    EXPECT_EQ(run.columns[0].points[4].reading, 8.5);
}

TEST_F(Judging, HintsAtDoubledAndDisorderedReadings)
{
    takeAll(RunKind::Measured, [](int i) { return 2 * i + 10; });
    EXPECT_THAT(judge(RunKind::Measured).hints, IsEmpty());
    take(RunKind::Measured, 4, 3, 18);
    EXPECT_EQ(judge(RunKind::Measured).hints,
              QStringList{"Points 3 and 4 have the same dial reading, 3 mm."});
    take(RunKind::Measured, 4, 2.5, 18);
    EXPECT_EQ(judge(RunKind::Measured).hints, QStringList{"The dial reading of point 4 is out of order."});
    take(RunKind::Measured, 4, 4, 15);
    EXPECT_EQ(judge(RunKind::Measured).hints, QStringList{"The reading of point 4 is out of order."});
    // downwards is an order, too
    takeAll(RunKind::Measured, [](int i) { return 100 - 2 * i; });
    EXPECT_THAT(judge(RunKind::Measured).hints, IsEmpty());
    take(RunKind::Measured, 10, 10, -1000);
    EXPECT_EQ(judge(RunKind::Measured).hints,
              QStringList{"Point 10 has a value of 1000 or more, which no download can carry."});
}

TEST_F(Judging, HintsAtASpreadThatIsWiderThanPermitted)
{
    record.tolerance = 0.02;
    record.run(RunKind::Found)[1].put({1.0, false, {{kNine, 5, {1.0}}, {kNine, 5, {1.03}}}});
    EXPECT_EQ(judge(RunKind::Found).hints,
              QStringList{"The readings of point 1 spread over 0.0300 mm, more than is permitted."});
    record.run(RunKind::Found)[1].put({1.0, false, {{kNine, 5, {0.25}}, {kNine, 5, {0.27}}}});
    EXPECT_THAT(judge(RunKind::Found).hints, IsEmpty());
}

// Sums of dial readings near 100 with steps of 0.1 keep too few digits of their differences.
TEST_F(Judging, HintsAtSinglePrecisionThatLosesDigits)
{
    for (int i = 0; i < kPoints; ++i)
        take(RunKind::Measured, i, 100 + 0.1 * i, 2 * (100 + 0.1 * i) + 1);
    const auto run = judge(RunKind::Measured);
    ASSERT_TRUE(run.columns[0].fit);
    EXPECT_EQ(lineText(*run.columns[0].fit).substr(0, 8), "Y=1.9718");
    EXPECT_EQ(lineText(*run.columns[0].exact).substr(0, 8), "Y=2.0000");
    ASSERT_EQ(run.hints.size(), 1);
    EXPECT_TRUE(run.hints[0].startsWith("The sums in single precision lose digits: the line is Y=1.9718*X+("))
        << qPrintable(run.hints[0]);
    EXPECT_TRUE(run.hints[0].contains("Y=2.0000*X+(1.000) in double precision")) << qPrintable(run.hints[0]);
}

TEST_F(Judging, SaysWhetherTheReadingsWereCorrected)
{
    takeAll(RunKind::Measured, [](int i) { return i + 0.01; });
    EXPECT_TRUE(judge(RunKind::Measured).hints.join(' ').contains("seems to have a table already"));
    takeAll(RunKind::Measured, [](int i) { return 2 * i; });
    EXPECT_THAT(judge(RunKind::Measured).hints, IsEmpty());
    downloaded(false, kNine.addDays(-300));
    EXPECT_TRUE(judge(RunKind::Measured).hints.join(' ').startsWith("Readings came back corrected"));
    downloaded(true, kNine.addSecs(-10));
    EXPECT_THAT(judge(RunKind::Measured).hints, IsEmpty());
    takeAll(RunKind::Found, [](int i) { return i; });
    EXPECT_EQ(judge(RunKind::Found).hints,
              QStringList{"The correction was switched off when this was taken."});
    takeAll(
        RunKind::Left, [](int i) { return i; }, 5, kNine.addSecs(100));
    EXPECT_EQ(judge(RunKind::Left).hints,
              QStringList{"No confirmed download to this readout came before it."});
    downloaded(false, kNine.addSecs(50), Verdict::Differs);
    EXPECT_EQ(judge(RunKind::Left).hints.size(), 1);
    downloaded(false, kNine.addSecs(60), Verdict::Agrees, 12);
    EXPECT_EQ(judge(RunKind::Left).hints.size(), 1) << "another readout";
    downloaded(false, kNine.addSecs(70));
    EXPECT_THAT(judge(RunKind::Left).hints, IsEmpty());
}

TEST_F(Judging, KnowsWhoseTheReadingsAre)
{
    EXPECT_EQ(ownershipText(owners()), "");
    EXPECT_TRUE(table.write(0, {{"X_Data", 1.0}}));
    EXPECT_EQ(owners().unknown, 1);
    EXPECT_EQ(whyNotTheirs(owners(), 12), "") << "nothing is known";
    takeAll(RunKind::Measured, [](int i) { return 2 * i; });
    EXPECT_EQ(ownershipText(owners()), "readout 5, 2024-05-17 09:00.");
    EXPECT_EQ(whyNotTheirs(owners(), 5), "");
    EXPECT_EQ(whyNotTheirs(owners(), 12),
              "The points were measured at readout 5, the address is 12: they are not this readout's.");
    take(RunKind::Measured, 10, 10, 20, 7, kNine.addDays(1));
    EXPECT_TRUE(table.write(9, {{"X_Data", 1.0}}));
    EXPECT_EQ(ownershipText(owners()),
              "readout 5 (9 points) and 7 (1 points), 2024-05-17 09:00 to 2024-05-18 "
              "09:00. Of 1 more it is not known where they were measured.");
    EXPECT_NE(whyNotTheirs(owners(), 5), "");
}

TEST_F(Judging, FailsWhenOneColumnOfZDoes)
{
    TableInMemory z({"Z1_Data", "Z2_Data"});
    RecordData both;
    both.tolerance = 0.02;
    for (std::size_t i = 0; i < kPoints; ++i) {
        const auto at = static_cast<double>(i);
        both.run(RunKind::Left)[i].put({at, false, {{kNine, 33, {at, at + 0.125}}}});
    }
    const auto run = judgeRun(both, RunKind::Left, z, *directionOf("Z"));
    EXPECT_EQ(run.passes, false);
    EXPECT_EQ(run.verdict.toStdString(),
              "FAIL: Z1_Data: worst error 0.0000 mm at point 0, nonlinear error 0.0000 mm; Z2_Data: worst "
              "error 0.1250 mm at point 0, nonlinear error 0.0000 mm; permitted 0.02 mm.");
}

} // namespace
} // namespace quorvel::calibration
