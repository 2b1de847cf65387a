#include "windows/site_by_hand.h"

#include <QTest>

namespace quorvel::test {

namespace {

using site::SiteModel;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::StartsWith;

TEST_F(SiteByHand, SweepAsksEachReadoutOnceAndShowsTheDigitsReceived)
{
    openDam();
    controls.press("SiteSweep");
    EXPECT_THAT(readout.frames, ElementsAre(":052101FF", ":0C2101FF", ":0C2102FF", ":072101FF"));
    EXPECT_EQ(controls.cell(0, SiteModel::XColumn), "+1.50000");
    EXPECT_EQ(controls.cell(0, SiteModel::YColumn), "-0.25000");
    EXPECT_EQ(controls.cell(0, SiteModel::Z1Column), "");
    EXPECT_EQ(controls.cell(1, SiteModel::Z2Column), "+2.10000");
    EXPECT_EQ(controls.cell(2, SiteModel::XColumn), "-7.00000");
    EXPECT_EQ(controls.cell(2, SiteModel::YColumn), "") << "type D has no Y";
    EXPECT_EQ(controls.cell(1, SiteModel::AnswerColumn), "complete");
    EXPECT_THAT(controls.status(), StartsWith("Sweep of 09:05:30: 3 of 3 readouts answered, "));
    EXPECT_FALSE(gate.busy());
}

TEST_F(SiteByHand, SilentReadoutKeepsItsLastValuesAgedAndHoldsTheOthersNotUp)
{
    openDam();
    controls.press("SiteSweep");
    values.erase("052101");
    values["072101"] = "-7.10000+0.00000";
    clock.move(65);
    controls.press("SiteSweep");
    EXPECT_EQ(controls.cell(0, SiteModel::XColumn), "+1.50000");
    EXPECT_EQ(controls.cell(0, SiteModel::AnswerColumn), "silent");
    EXPECT_THAT(controls.cell(0, SiteModel::AgeColumn), StartsWith("1 min "));
    EXPECT_TRUE(controls.data(0, SiteModel::XColumn, Qt::FontRole).value<QFont>().italic());
    EXPECT_EQ(controls.data(0, SiteModel::XColumn, Qt::AccessibleTextRole).toString(), "+1.50000, old");
    EXPECT_THAT(controls.data(0, SiteModel::XColumn, Qt::ToolTipRole).toString().toStdString(),
                HasSubstr("The latest sweep ended: silent."));
    EXPECT_TRUE(controls.data(0, SiteModel::LimitColumn, Qt::FontRole).value<QFont>().italic());
    EXPECT_EQ(controls.data(0, SiteModel::LimitColumn, Qt::AccessibleTextRole).toString(), "within, old");
    EXPECT_EQ(controls.data(1, SiteModel::LimitColumn, Qt::AccessibleTextRole).toString(), "within");
    EXPECT_EQ(controls.cell(2, SiteModel::XColumn), "-7.10000");
    EXPECT_EQ(controls.cell(2, SiteModel::AgeColumn), "0 s");
    EXPECT_THAT(controls.status(), HasSubstr("2 of 3 readouts answered"));
}

TEST_F(SiteByHand, NextStepIsSaidWhenNobodyAnswersAndTheStatusLineFitsWhatRuns)
{
    openDam();
    values.clear();
    std::string meanwhile;
    onFrame = [&](const std::string& /*frame*/) { meanwhile = controls.status(); };
    controls.press("SiteSweep");
    EXPECT_EQ(meanwhile, "The readouts are asked one after the other. \"Stop\" ends that.");
    EXPECT_THAT(controls.status(), HasSubstr("0 of 3 readouts answered"));
    EXPECT_THAT(controls.status(), HasSubstr("Tools > \"Why no answer?\" tests the line."));
    for (int row = 0; row < 3; ++row)
        EXPECT_EQ(controls.cell(row, SiteModel::XColumn), "");
    controls.press("SiteClocks");
    EXPECT_EQ(controls.status(), "Clocks: 0 of 3 told. Tools > \"Why no answer?\" tests the line.");
}

TEST_F(SiteByHand, ChangesOfAllFourSensorsFitTheirColumns)
{
    openDam();
    controls.press("SiteSweep");
    controls.press("SiteZero");
    values["0C2101"] = "-0.10000-0.20000";
    values["0C2102"] = "-2.00000-2.10000";
    controls.press("SiteSweep");
    for (const int column : {SiteModel::SinceBeforeColumn, SiteModel::SinceZeroColumn}) {
        EXPECT_EQ(controls.cell(1, column), "X -0.20000  Y -0.40000  Z1 -4.00000  Z2 -4.20000");
        EXPECT_GE(controls.table().columnWidth(column),
                  controls.table().sizeHintForIndex(controls.table().model()->index(1, column)).width());
    }
}

TEST_F(SiteByHand, ChangesAreSinceTheSweepBeforeAndSinceTheMarkedZero)
{
    openDam();
    controls.press("SiteSweep");
    controls.press("SiteZero");
    values["052101"] = "+1.51000-0.25000";
    controls.press("SiteSweep");
    values["052101"] = "+1.54000-0.26000";
    controls.press("SiteSweep");
    EXPECT_EQ(controls.cell(0, SiteModel::SinceBeforeColumn), "X +0.03000  Y -0.01000");
    EXPECT_EQ(controls.cell(0, SiteModel::SinceZeroColumn), "X +0.04000  Y -0.01000");
}

TEST_F(SiteByHand, PassedLimitIsSaidInWordsAndNotByColourAlone)
{
    openDam();
    values["052101"] = "+2.00000-0.25000";
    controls.press("SiteSweep");
    EXPECT_EQ(controls.cell(0, SiteModel::LimitColumn), "within");
    EXPECT_EQ(controls.cell(2, SiteModel::LimitColumn), "none set");
    values["052101"] = "+2.00001-0.25000";
    values["0C2102"] = "+3.50000+2.10000";
    controls.press("SiteSweep");
    EXPECT_EQ(controls.cell(0, SiteModel::LimitColumn), "X above 2");
    EXPECT_EQ(controls.cell(1, SiteModel::LimitColumn), "Z1 above 3");
    EXPECT_TRUE(controls.data(0, SiteModel::XColumn, Qt::FontRole).value<QFont>().bold());
    EXPECT_THAT(controls.status(), HasSubstr("Beyond their limits: 2."));
}

TEST_F(SiteByHand, StopEndsBeforeTheNextReadout)
{
    openDam();
    onFrame = [&](const std::string&) { controls.press("SiteStop"); };
    controls.press("SiteSweep");
    EXPECT_EQ(readout.frames.size(), 1U);
    EXPECT_THAT(controls.status(), HasSubstr("Stopped before the end."));
    EXPECT_TRUE(controls.button("SiteSweep").isEnabled());
    EXPECT_FALSE(controls.button("SiteStop").isEnabled());
}

TEST_F(SiteByHand, RepeatedSweepsAreAlignedToTheClockAndLeaveTheGateFreeBetween)
{
    openDam();
    controls.box("SiteEvery").setChecked(true);
    clock.move(3);
    controls.press("SiteSweep");
    EXPECT_THAT(controls.status(), HasSubstr("Next sweep at 09:05:40."));
    moveTo(QTime(9, 5, 39));
    EXPECT_THAT(readout.frames, IsEmpty());
    EXPECT_FALSE(gate.busy());
    moveTo(QTime(9, 5, 40));
    EXPECT_EQ(readout.frames.size(), 4U);
    EXPECT_FALSE(gate.busy());
    EXPECT_THAT(controls.status(), HasSubstr("Next sweep at 09:05:50."));
    moveTo(QTime(9, 5, 50));
    EXPECT_EQ(readout.frames.size(), 8U);
    controls.press("SiteStop");
    moveTo(QTime(9, 6, 10));
    EXPECT_EQ(readout.frames.size(), 8U);
    EXPECT_TRUE(controls.button("SiteSweep").isEnabled());
}

TEST_F(SiteByHand, SweepThatIsDueWhileAnotherCommandRunsIsToldAndSkipped)
{
    openDam();
    controls.box("SiteEvery").setChecked(true);
    controls.press("SiteSweep");
    gate.run([&] {
        moveTo(QTime(9, 5, 40));
        moveTo(QTime(9, 6, 5));
    });
    EXPECT_THAT(readout.frames, IsEmpty());
    EXPECT_THAT(controls.status(), HasSubstr("The sweep of 09:05:50 was skipped: another command runs."));
    EXPECT_THAT(controls.status(), HasSubstr("Sweeps skipped so far: 3."));
    moveTo(QTime(9, 6, 10));
    EXPECT_EQ(readout.frames.size(), 4U) << "one sweep, however many were skipped";
}

TEST_F(SiteByHand, SweepThatTakesLongerThanItsIntervalSkips)
{
    openDam();
    controls.box("SiteEvery").setChecked(true);
    child<QSpinBox>(form, "SiteSeconds")->setValue(1);
    values.clear(); // each of the three costs its time-out
    controls.press("SiteSweep");
    moveTo(QTime(9, 5, 31));
    EXPECT_EQ(readout.frames.size(), 3U);
    EXPECT_THAT(controls.status(), HasSubstr("Next sweep at 09:05:37. Sweeps skipped so far: 5."));
}

TEST_F(SiteByHand, ClosingDuringASweepEndsItAfterTheReadout)
{
    openDam();
    onFrame = [&](const std::string&) {
        form.close();
        EXPECT_TRUE(form.isVisible());
    };
    controls.press("SiteSweep");
    EXPECT_EQ(readout.frames.size(), 1U);
    EXPECT_FALSE(form.isVisible());
}

TEST_F(SiteByHand, ClosingAsksWhileSweepsRepeat)
{
    openDam();
    controls.box("SiteEvery").setChecked(true);
    controls.press("SiteSweep");
    messages.answers = {false, true};
    form.close();
    EXPECT_TRUE(form.isVisible());
    form.close();
    EXPECT_FALSE(form.isVisible());
    moveTo(QTime(9, 6, 0));
    EXPECT_THAT(readout.frames, IsEmpty());
}

TEST_F(SiteByHand, ClosedPortIsSaidAndALostOneIsAnOutcome)
{
    openDam();
    controls.press("SiteSweep");
    EXPECT_TRUE(readout.port.setPortOpen(false).isEmpty());
    controls.press("SiteSweep");
    EXPECT_EQ(messages.last(), kPortNotOpened);
    EXPECT_EQ(readout.frames.size(), 4U);
    EXPECT_TRUE(readout.port.setPortOpen(true).isEmpty());
    onFrame = [&](const std::string&) { readout.device->vanish(); };
    controls.press("SiteSweep");
    EXPECT_EQ(controls.cell(2, SiteModel::AnswerColumn), "port lost");
    EXPECT_EQ(controls.cell(2, SiteModel::XColumn), "-7.00000");
}

TEST_F(SiteByHand, ClocksAreComparedOnRequest)
{
    openDam();
    const std::map<std::string, std::string> clocks{{":0504FF", ":0504240517090533FF\r\n"},
                                                    {":0C04FF", ":0C04240517080530FF\r\n"}};
    readout.answer = [&](const std::string& frame) {
        const auto told = clocks.find(frame);
        return told == clocks.end() ? std::string() : told->second;
    };
    controls.press("SiteClocks");
    EXPECT_EQ(controls.cell(0, SiteModel::ClockColumn), "+3 s");
    EXPECT_EQ(controls.cell(1, SiteModel::ClockColumn), "-1 h 0 min");
    EXPECT_EQ(controls.cell(2, SiteModel::ClockColumn), "silent");
    EXPECT_THAT(controls.status(), HasSubstr("Clocks: 2 of 3 told."));
}

TEST_F(SiteByHand, TableIsSortedByNumbersAndFollowsTheValues)
{
    openDam();
    controls.press("SiteSweep");
    controls.table().sortByColumn(SiteModel::XColumn, Qt::AscendingOrder);
    EXPECT_EQ(controls.cell(0, SiteModel::NameColumn), "Abutment");
    controls.table().sortByColumn(SiteModel::AddressColumn, Qt::DescendingOrder);
    EXPECT_EQ(controls.cell(0, SiteModel::AddressColumn), "12");
    EXPECT_EQ(controls.cell(2, SiteModel::AddressColumn), "5");
}

TEST_F(SiteByHand, WhatIsNoNumberIsSortedByWhatItMeans)
{
    lines = {{5, {100, 99, 40.0}}, {12, {10, 10, 40.0}}, {7, {100, 9, 40.0}}};
    openDam();
    controls.press("SiteSweep");
    controls.press("SiteZero");
    values["052101"] = "+2.50000-0.25000"; // passes its limit
    values["0C2102"] = "+2.00000-9.90000"; // the largest change
    values.erase("072101");
    clock.move(100);
    controls.press("SiteSweep");
    const std::pair<int, const char*> firsts[] = {
        {SiteModel::SinceBeforeColumn, "12"}, {SiteModel::SinceZeroColumn, "12"},
        {SiteModel::AgeColumn, "7"},          {SiteModel::LineColumn, "12"},
        {SiteModel::AnswerColumn, "7"},       {SiteModel::NameColumn, "12"}};
    for (const auto& [column, address] : firsts) {
        controls.table().sortByColumn(column, Qt::DescendingOrder);
        EXPECT_EQ(controls.cell(0, SiteModel::AddressColumn), address) << column;
    }
    for (const auto order : {Qt::AscendingOrder, Qt::DescendingOrder}) {
        controls.table().sortByColumn(SiteModel::SinceBeforeColumn, order);
        EXPECT_EQ(controls.cell(2, SiteModel::AddressColumn), "7") << "not known is last, " << order;
    }
    controls.table().sortByColumn(SiteModel::LimitColumn, Qt::AscendingOrder);
    EXPECT_EQ(controls.cell(0, SiteModel::AddressColumn), "5");
}

TEST_F(SiteByHand, LogHasARowForEachReadingAndADayHasItsFile)
{
    openDam();
    controls.box("SiteDaily").setChecked(true);
    messages.files.push_back(file("log.csv"));
    controls.box("SiteLog").click();
    values.erase("072101");
    controls.press("SiteSweep");
    const auto text = read("log.2024-05-17.csv");
    EXPECT_THAT(text,
                StartsWith("time,site,address,name,type,xMm,yMm,z1Mm,z2Mm,outcome\n2024-05-17T09:05:30"));
    EXPECT_THAT(text, HasSubstr(",North dam,5,Block 7,A,1.50000,-0.25000,,,complete\n"));
    EXPECT_THAT(text, HasSubstr(",North dam,12,Block 9,C,0.10000,0.20000,2.00000,2.10000,complete\n"));
    EXPECT_THAT(text, HasSubstr(",North dam,7,Abutment,D,,,,,silent\n"));
    clock.move(86400);
    controls.press("SiteSweep");
    EXPECT_THAT(read("log.2024-05-18.csv"), HasSubstr("2024-05-18T09:0"));
    controls.box("SiteLog").click();
    controls.press("SiteSweep");
    EXPECT_EQ(QString::fromStdString(read("log.2024-05-18.csv")).count(u'\n'), 4);
}

TEST_F(SiteByHand, LogHasEachRowAsSoonAsItIsRead)
{
    openDam();
    messages.files.push_back(file("log.csv"));
    controls.box("SiteLog").click();
    std::vector<qsizetype> rows;
    onFrame = [&](const std::string&) {
        rows.push_back(QString::fromStdString(read("log.csv")).count(u'\n') - 1);
    };
    controls.press("SiteSweep");
    // 12 is asked twice, for X and Y and for Z
    EXPECT_THAT(rows, ::testing::ElementsAre(0, 1, 1, 2)) << "what a kill would have left";
    EXPECT_EQ(QString::fromStdString(read("log.csv")).count(u'\n'), 4) << "no row is there twice";
}

TEST_F(SiteByHand, LogThatCannotBeWrittenIsToldBeforeTheFirstSweep)
{
    openDam();
    for (const auto* name : {"nowhere/log.csv", "."}) {
        messages.files.push_back(file(name));
        controls.box("SiteLog").click();
        EXPECT_FALSE(controls.box("SiteLog").isChecked()) << name;
        EXPECT_THAT(controls.status(), HasSubstr(" could not be written: ")) << name;
    }
    messages.files.push_back(file("log.csv"));
    controls.box("SiteLog").click();
    EXPECT_THAT(controls.status(), Not(HasSubstr("could not"))) << "that is over";
}

TEST_F(SiteByHand, LogThatLacksRowsWhenItEndsSaysSo)
{
    openDam();
    ASSERT_TRUE(QDir(folder.path()).mkdir("away"));
    messages.files.push_back(file("away/log.csv"));
    controls.box("SiteLog").click();
    ASSERT_TRUE(QDir(file("away")).removeRecursively());
    controls.press("SiteSweep");
    EXPECT_THAT(controls.status(), HasSubstr("away/log.csv could not be written: "));
    controls.box("SiteLog").click();
    EXPECT_THAT(controls.status(), HasSubstr("The readings that it lacks are lost."));
    EXPECT_FALSE(controls.box("SiteLog").isChecked());
}

TEST_F(SiteByHand, LogBoxSaysWhatIsTrueWhileAnotherCommandRuns)
{
    openDam();
    gate.run([this] { controls.box("SiteLog").click(); });
    EXPECT_FALSE(controls.box("SiteLog").isChecked()) << "nothing is logged";
}

TEST_F(SiteByHand, FileThatIsNoLogIsNotAppendedTo)
{
    openDam();
    put("other.csv", "a,b,c\n");
    messages.files.push_back(file("other.csv"));
    controls.box("SiteLog").click();
    EXPECT_FALSE(controls.box("SiteLog").isChecked());
    EXPECT_THAT(controls.status(), HasSubstr("is not a log of readings"));
    controls.press("SiteSweep");
    EXPECT_EQ(read("other.csv"), "a,b,c\n");
}

} // namespace

} // namespace quorvel::test
