#include "windows/celebration1_on_the_bus.h"

namespace quorvel::test {
namespace {

class Celebration1Window : public Celebration1OnTheBus {
protected:
    /// Calibrates a direction from 0 to 2.5 mm of the dial gauge: a click and a number for each point.
    void calibrate(int address, const std::vector<const char*>& sensors)
    {
        for (int point = 0; point < 11; ++point) {
            for (std::size_t i = 0; i < sensors.size(); ++i) {
                put(address, sensors[i], 10.0 + static_cast<double>(i) + 0.5 * point);
            }
            measure(point);
        }
        goTo(0, 1);
        for (int point = 0; point < 11; ++point) {
            enter(QString::number(0.25 * point));
        }
    }
    void wipe()
    {
        for (int row = 0; row < 11; ++row) {
            for (int column = 1; column < grid().model()->columnCount(); ++column) {
                grid().model()->setData(grid().model()->index(row, column), "");
            }
        }
    }
    /// @param working  the direction's file.
    void saveWipeAndLoad(const char* working)
    {
        messages.files = {inFolder("cal1")};
        button("Command4").click();
        EXPECT_EQ(messages.lastChoice.filter, "*.mdb");
        wipe();
        EXPECT_EQ(rowsOf(inFolder(working))[10].count('-'), grid().model()->columnCount() - 1);
        button("Command2").click();
        EXPECT_EQ(lastMessage(), "Some Data is empty, Please check!");
        messages.files = {inFolder("cal1.mdb")};
        button("Command3").click();
        EXPECT_EQ(messages.lastChoice.filter, "");
        EXPECT_EQ(cell(10, 1), "2.5");
        window.reset();
        EXPECT_EQ(rowsOf(inFolder(working)), rowsOf(inFolder("cal1.mdb")));
    }
};

TEST_F(Celebration1Window, CreatesAnEmptyTableAndShowsItByNumber)
{
    open("X");
    EXPECT_EQ(window->windowTitle(), "X向标定");
    EXPECT_EQ(label("GridCaption"), "X_Direction");
    EXPECT_EQ(label("Label2"), "Rule_Data是千分表读数，手动输入；X_Data请点表格中小按钮进行测量！");
    EXPECT_EQ(child<QLineEdit>(*window, "Text1")->text(), "5");
    EXPECT_EQ(button("Command1").text(), "下载标定数据");
    EXPECT_EQ(button("Command2").text(), "计算非线性容差");
    EXPECT_EQ(button("Command3").text(), "加载标定数据");
    EXPECT_EQ(button("Command4").text(), "保存标定数据");
    ASSERT_EQ(grid().model()->rowCount(), 11);
    for (int row = 0; row < 11; ++row) {
        EXPECT_EQ(cell(row, 0), QString::number(row));
        EXPECT_EQ(cell(row, 1) + cell(row, 2), "");
    }
    window.reset();
    EXPECT_EQ(rowsOf(inFolder("XDirection.mdb")).size(), 11);
}

TEST_F(Celebration1Window, ShowsElevenRowsWithoutScrolling)
{
    open("Z");
    window->resize(900, 820);
    QCoreApplication::processEvents();
    EXPECT_EQ(window->size(), QSize(900, 820));
    const auto last = grid().visualRect(grid().model()->index(10, 3));
    EXPECT_TRUE(grid().viewport()->rect().contains(last));
}

TEST_F(Celebration1Window, HasItsCellButtonInTheThirdColumnOnly)
{
    open("Z");
    auto& button = *grid().cellButton();
    for (int column = 0; column < 4; ++column) {
        goTo(4, column);
        EXPECT_EQ(button.isVisible(), column == 2) << column;
    }
    goTo(4, 2);
    const auto cell = grid().visualRect(grid().currentIndex());
    const QRect place(grid().viewport()->mapFromGlobal(button.mapToGlobal(QPoint())), button.size());
    EXPECT_EQ(place.right(), cell.right());
    EXPECT_EQ(place.top(), cell.top());
    EXPECT_EQ(place.bottom(), cell.bottom());
}

TEST_F(Celebration1Window, CalibratesXFromFirstPointToDownload)
{
    open("X");
    calibrate(5, {"x"});
    EXPECT_EQ(cell(4, 1), "1");
    EXPECT_EQ(cell(4, 2), "12");
    bus.frames();

    button("Command2").click();
    EXPECT_EQ(lastMessage(), "X: Y=2.0000*X+(10.000)\r\nNonlinear Error: 0.000, Max Error: 0.000");
    EXPECT_EQ(child<calibration::FitChart>(*window, "FitChart")->count(), 1);

    button("Command1").click();
    EXPECT_EQ(lastMessage(), "X向标定参数下载完毕！");
    const auto frames = bus.frames();
    ASSERT_EQ(frames.size(), 1);
    EXPECT_EQ(frames[0].left(39), ":056111+010.000+000.000+010.500+000.250");
    EXPECT_NEAR(bus.state(5)["reading"].toObject()["X"].toDouble(), 2.5, 0.001) << "the readout corrects now";

    saveWipeAndLoad("XDirection.mdb");
}

TEST_F(Celebration1Window, CalibratesZWithBothItsSensors)
{
    bench.currentAddress = "33";
    open("Z");
    calibrate(33, {"z1", "z2"});
    EXPECT_EQ(cell(10, 2), "15");
    EXPECT_EQ(cell(10, 3), "16");
    const auto frames = bus.frames();
    EXPECT_EQ(frames.count(":212102FF"), 11);

    messages.shown.clear();
    button("Command2").click();
    EXPECT_EQ(messages.shown,
              (QStringList{"X: Y=2.0000*X+(10.000)\r\nNonlinear Error: 0.000, Max Error: 0.000",
                           "X: Y=2.0000*X+(11.000)\r\nNonlinear Error: 0.000, Max Error: 0.000"}));
    messages.shown.clear();
    button("Command1").click();
    EXPECT_EQ(messages.shown, (QStringList{"Z1向标定参数下载完毕！", "Z2向标定参数下载完毕！"}));
    EXPECT_NEAR(bus.state(33)["reading"].toObject()["Z2"].toDouble(), 2.5, 0.001);
}

TEST_F(Celebration1Window, MeasuresYFromTheSecondValueInBothReplyLengths)
{
    open("Y");
    put(5, "x", 1);
    put(5, "y", 2);
    measure(0);
    bus.command("set 5 readinglength 27");
    put(5, "y", 3);
    measure(1);
    EXPECT_EQ(cell(0, 2), "2");
    EXPECT_EQ(cell(1, 2), "3");
}

TEST_F(Celebration1Window, LeavesTheCellAloneWhenTheReplyIsNoMeasurement)
{
    open("X");
    put(5, "x", 7);
    measure(0);
    EXPECT_TRUE(status().startsWith(standing() + ". Points: readout 5, ")) << qPrintable(status());
    struct Row {
        const char* fault;
        const char* told;
    };
    for (const auto& [fault, told] :
         {Row{"short@2101", "28 characters came instead of 27 or 29"},
          Row{"long@2101", "30 characters came instead of 27 or 29"},
          Row{"twice@2101", "58 characters came instead of 27 or 29"},
          Row{"badnumber@2101",
              "X_Data was not measured: the readout answered \"XYZABCDE\". The cell stays as it was."},
          Row{"silent@2101", "the readout did not answer"}}) {
        bus.clearFaults();
        bus.fault(fault);
        put(5, "x", 8);
        measure(0);
        EXPECT_EQ(cell(0, 2), "7") << fault;
        EXPECT_TRUE(status().contains(told)) << fault << ": " << qPrintable(status());
    }
    mscomm1.setPortOpen(false);
    measure(0);
    EXPECT_EQ(cell(0, 2), "7");
    EXPECT_TRUE(status().contains("port is closed")) << qPrintable(status());
    EXPECT_TRUE(messages.shown.isEmpty());
}

TEST_F(Celebration1Window, LeavesTheCellAloneWhenTheAdapterIsPulledWhileItMeasures)
{
    open("X");
    bus.fault("hangup@2101");
    measure(0);
    EXPECT_EQ(cell(0, 2), "");
    EXPECT_FALSE(mscomm1.PortOpen());
    EXPECT_TRUE(status().contains("is gone")) << qPrintable(status());
    EXPECT_TRUE(messages.shown.isEmpty());
}

TEST_F(Celebration1Window, FitsNoTableWithEqualDialReadings)
{
    open("X");
    for (int row = 0; row < 11; ++row) {
        for (const int column : {1, 2}) {
            grid().model()->setData(grid().model()->index(row, column), "0.1");
        }
    }
    button("Command2").click();
    EXPECT_TRUE(lastMessage().startsWith("No line can be fitted")) << qPrintable(lastMessage());
    window->DeleteLastCalibrationRow();
    button("Command2").click();
    EXPECT_EQ(lastMessage(), "Some Data is empty, Please check!");
}

TEST_F(Celebration1Window, FindsAnEmptyZ2OnlyAfterTheResultOfZ1)
{
    open("Z");
    fill({1, 2});
    bus.frames();
    button("Command2").click();
    EXPECT_EQ(messages.shown,
              (QStringList{"X: Y=1.0000*X+(0.000)\r\nNonlinear Error: 0.000, Max Error: 0.000",
                           "Some Data is empty, Please check!"}));
    button("Command1").click();
    EXPECT_EQ(lastMessage(), "Some Data is empty, Please check!");
    EXPECT_TRUE(bus.frames().isEmpty()) << "nothing is sent, not even the table of Z1";
}

TEST_F(Celebration1Window, AddsAndDeletesRowsThatNoControlAsksFor)
{
    open("X");
    window->AddCalibrationRow();
    EXPECT_EQ(grid().model()->rowCount(), 12);
    EXPECT_EQ(cell(11, 0), "12");
    window->DeleteLastCalibrationRow();
    window->DeleteLastCalibrationRow();
    EXPECT_EQ(grid().model()->rowCount(), 10);
}

TEST_F(Celebration1Window, IsEmptyForNoDirection)
{
    open("W");
    EXPECT_EQ(window->windowTitle(), "标定");
    EXPECT_EQ(label("Label2") + label("GridCaption"), "");
    for (const auto* name : {"Command1", "Command2", "Command3", "Command4"}) {
        button(name).click();
    }
    EXPECT_TRUE(messages.shown.isEmpty());
}

} // namespace
} // namespace quorvel::test
