#include "grayscale/grayscalechart.h"

#include "grayscale/tchart.h"
#include "jet/database.h"
#include "support/bench_on_the_bus.h"
#include "support/fake_device.h"
#include "support/hand_clock.h"

#include <QDir>
#include <QImageReader>
#include <QLabel>
#include <QPushButton>
#include <QTest>

namespace quorvel {
namespace {

using grayscale::TChart;
using test::child;

constexpr auto kTitleX = "Grayscale Graph of CCD's Pixels (X-direction)";

/// Where one window's tests begin: it is shown, and has read.
struct Shown {
    Shown(link::Bench& bench, link::Module1& module1, link::Gate& itsGate, Messages& messages)
        : window(bench, module1, itsGate, messages), gate(itsGate)
    {}

    /// Shows the window (again) and waits until its reading has ended.
    void show()
    {
        auto& chart = *child<TChart>(window, "TChart1");
        chart.setTitle(QString());
        window.show();
        EXPECT_TRUE(QTest::qWaitFor([&] { return !gate.busy() && !chart.title().isEmpty(); }, 30'000));
    }
    QString title() const { return child<TChart>(window, "TChart1")->title(); }
    QString status() const { return child<QLabel>(window, "Status")->text(); }
    QPushButton& saveGraph() const { return *child<QPushButton>(window, "Command1"); }
    QPushButton& saveData() const { return *child<QPushButton>(window, "Command2"); }
    int drawn() const { return child<TChart>(window, "TChart1")->graph(0)->dataCount(); }

    GrayScaleChart window;
    link::Gate& gate;
};

/// The window against readouts of the simulator: 5 of type A, 12 of type C.
class GrayScaleChartOnTheBus : public test::BenchOnTheBus {
protected:
    Shown& open(const char* direction, const char* address = "5", link::InstrumentType type = link::TypeA)
    {
        bench.GrayscaleDirection = QString::fromLatin1(direction);
        bench.currentAddress = QString::fromLatin1(address);
        bench.instrumentType = type;
        shown = std::make_unique<Shown>(bench, module1, gate, messages);
        shown->show();
        return *shown;
    }
    QString file(const char* name) const { return folder.filePath(QString::fromUtf8(name)); }

    std::unique_ptr<Shown> shown;
};

TEST_F(GrayScaleChartOnTheBus, ReadsAndDrawsX)
{
    auto& window = open("X");
    EXPECT_EQ(window.window.windowTitle(), "Gray Scale Graph");
    EXPECT_EQ(bus.frames(), QStringList{QStringLiteral(":0565FF")});
    EXPECT_EQ(window.window.array().count(), 7450);
    EXPECT_EQ(window.drawn(), 7450);
    EXPECT_EQ(window.title(), kTitleX);
    EXPECT_TRUE(window.window.dataReady());
    EXPECT_TRUE(messages.shown.isEmpty());
    EXPECT_TRUE(window.saveGraph().isEnabled());
    EXPECT_TRUE(window.saveData().isEnabled());
}

TEST_F(GrayScaleChartOnTheBus, ReadsEveryDirectionOfATypeC)
{
    struct Row {
        const char* direction;
        const char* frame;
        int pixels;
    };
    for (const auto& row : std::initializer_list<Row>{{"X", ":0C65FF", 3760},
                                                      {"Y", ":0C66FF", 3760},
                                                      {"Z1", ":0C7803FF", 2048},
                                                      {"Z2", ":0C7804FF", 2048}}) {
        auto& window = open(row.direction, "12", link::TypeC);
        EXPECT_EQ(bus.frames(), QStringList{QString::fromLatin1(row.frame)});
        EXPECT_EQ(window.window.array().count(), row.pixels) << row.direction;
        EXPECT_EQ(window.title(),
                  QStringLiteral("Grayscale Graph of CCD's Pixels (%1-direction)").arg(row.direction));
        EXPECT_TRUE(window.window.dataReady());
    }
    EXPECT_TRUE(messages.shown.isEmpty());
}

TEST_F(GrayScaleChartOnTheBus, HintAndCaptionsAreExact)
{
    auto& window = open("X");
    EXPECT_EQ(
        child<QLabel>(window.window, "Label1")->text(),
        "    After pressing the left button,the chart extends if the mouse goes right downwards and turn "
        "original if the mouse goes left upwards!\n\r    After pressing the right button, the chart may move "
        "where the mouse goes!");
    EXPECT_EQ(window.saveGraph().text(), "Save Graph");
    EXPECT_EQ(window.saveData().text(), "Save Data");
}

TEST_F(GrayScaleChartOnTheBus, AMalformedXReplyIsSaidInChineseAndKeepsTheButtonsDisabled)
{
    bus.fault(QStringLiteral("count@65"));
    auto& window = open("X");
    EXPECT_EQ(messages.shown, QStringList{QStringLiteral("灰度数据位数不准确！")});
    EXPECT_FALSE(window.saveGraph().isEnabled());
    EXPECT_FALSE(window.saveData().isEnabled());
    EXPECT_FALSE(window.window.dataReady());
    EXPECT_EQ(window.drawn(), 0);
    EXPECT_EQ(window.title(), kTitleX);
}

TEST_F(GrayScaleChartOnTheBus, AMalformedYReplyIsSaidInEnglishAndKeepsTheButtonsDisabled)
{
    bus.fault(QStringLiteral("echo=5@66"));
    auto& window = open("Y");
    EXPECT_EQ(messages.shown, QStringList{QStringLiteral("The GrayScale data is error!")});
    EXPECT_FALSE(window.saveGraph().isEnabled());
    EXPECT_FALSE(window.window.dataReady());
}

TEST_F(GrayScaleChartOnTheBus, AMalformedZReplyIsNotSaidAndCountsAsDone)
{
    for (const auto* direction : {"Z1", "Z2"}) {
        bus.fault(QStringLiteral("count=20001@78"));
        auto& window = open(direction, "12", link::TypeC);
        EXPECT_TRUE(messages.shown.isEmpty()) << direction;
        EXPECT_TRUE(window.saveGraph().isEnabled());
        EXPECT_TRUE(window.saveData().isEnabled());
        EXPECT_TRUE(window.window.dataReady());
        EXPECT_EQ(window.window.array().count(), 0);
        EXPECT_FALSE(window.status().isEmpty());
    }
}

TEST_F(GrayScaleChartOnTheBus, AReplyWithoutLineFeedIsACommErrorAndEnablesTheButtons)
{
    bus.fault(QStringLiteral("nolf@65"));
    auto& window = open("X");
    EXPECT_EQ(messages.shown, QStringList{QStringLiteral("Comm Error")});
    EXPECT_TRUE(window.saveGraph().isEnabled());
    EXPECT_TRUE(window.saveData().isEnabled());
    EXPECT_FALSE(window.window.dataReady());
    EXPECT_EQ(window.drawn(), 0);
    EXPECT_EQ(child<TChart>(window.window, "TChart1")->graphCount(), 3)
        << "the red lines are drawn all the same";
    EXPECT_EQ(window.title(), kTitleX);
}

TEST_F(GrayScaleChartOnTheBus, APortThatVanishesEndsTheReading)
{
    bus.fault(QStringLiteral("hangup@65"));
    auto& window = open("X");
    EXPECT_EQ(messages.shown, QStringList{QStringLiteral("Comm Error")});
    EXPECT_FALSE(mscomm1.PortOpen());
    EXPECT_TRUE(window.status().contains(bus.device())) << qPrintable(window.status());
}

TEST_F(GrayScaleChartOnTheBus, SaveDataWritesTheTableAndNothingElse)
{
    auto& window = open("X");
    messages.files.push_back(file("x.mdb"));
    window.saveData().click();
    EXPECT_TRUE(messages.shown.isEmpty());
    EXPECT_EQ(messages.lastChoice.filter, "Database file(*.mdb)");
    auto database = jet::OpenDatabase(file("x.mdb").toStdString());
    ASSERT_TRUE(database);
    auto rows = database->OpenRecordset("select * from data order by sn");
    ASSERT_TRUE(rows);
    EXPECT_EQ(rows->RecordCount(), 7450);
    EXPECT_EQ(rows->Fields("sn").Value().text(), "1");
    EXPECT_EQ(rows->Fields("hd").Value().text(), std::to_string(window.window.array()[1]));
    ASSERT_TRUE(rows->MoveLast());
    EXPECT_EQ(rows->Fields("sn").Value().text(), "7450");
    EXPECT_EQ(rows->Fields("hd").Value().text(), std::to_string(window.window.array()[7450]));
    EXPECT_EQ(bus.frames().size(), 1) << "saving reads nothing";
}

TEST_F(GrayScaleChartOnTheBus, SaveDataAsksBeforeItOverwrites)
{
    auto& window = open("X");
    QFile old(file("x.csv"));
    ASSERT_TRUE(old.open(QIODevice::WriteOnly));
    old.write("old");
    old.close();
    messages.files = {file("x.csv"), file("x.csv")};
    messages.answers = {false, true};
    window.saveData().click();
    EXPECT_EQ(messages.last(), "File already exists, overwrite this file?");
    EXPECT_EQ(QFileInfo(file("x.csv")).size(), 3);
    window.saveData().click();
    EXPECT_GT(QFileInfo(file("x.csv")).size(), 7450 * 4);
}

TEST_F(GrayScaleChartOnTheBus, SaveDataSaysWhyAFileCannotBeWritten)
{
    auto& window = open("X");
    messages.files.push_back(file("missing/x.mdb"));
    window.saveData().click();
    EXPECT_TRUE(lastMessage().contains(file("missing/x.mdb"))) << qPrintable(lastMessage());
    messages.shown.clear();
    window.saveData().click();
    EXPECT_TRUE(messages.shown.isEmpty()) << "cancelled";
}

TEST_F(GrayScaleChartOnTheBus, SaveGraphWritesAJpegAndIsSilentWhenItCannot)
{
    auto& window = open("X");
    messages.files = {file("x.jpg"), file("missing/x.jpg")};
    window.saveGraph().click();
    EXPECT_EQ(messages.lastChoice.filter, "(*.jpg)");
    EXPECT_EQ(QImageReader::imageFormat(file("x.jpg")), "jpeg");
    EXPECT_GE(QImageReader(file("x.jpg")).size().width(), 1200);
    window.saveGraph().click();
    EXPECT_TRUE(messages.shown.isEmpty());
    EXPECT_TRUE(window.status().contains(file("missing/x.jpg"))) << qPrintable(window.status());
    window.saveGraph().click();
    EXPECT_TRUE(messages.shown.isEmpty()) << "cancelled";
}

TEST_F(GrayScaleChartOnTheBus, OnlyShowingReads)
{
    auto& window = open("X");
    messages.files = {file("x.csv")};
    window.saveData().click();
    for (const auto type : {QEvent::WindowDeactivate, QEvent::WindowActivate}) {
        QEvent event(type);
        QCoreApplication::sendEvent(&window.window, &event);
    }
    QTest::qWait(50);
    EXPECT_EQ(bus.frames().size(), 1);
    window.window.hide();
    window.show();
    EXPECT_EQ(bus.frames().size(), 1) << "frames() gives those since the last call";
}

TEST_F(GrayScaleChartOnTheBus, AFailedReadingDrawsTheEarlierOne)
{
    auto& window = open("X");
    bus.fault(QStringLiteral("count@65"));
    window.window.hide();
    window.show();
    EXPECT_EQ(lastMessage(), "灰度数据位数不准确！");
    EXPECT_EQ(window.drawn(), 7450);
    EXPECT_FALSE(window.window.dataReady());
    EXPECT_EQ(window.title(), kTitleX);
}

TEST_F(GrayScaleChartOnTheBus, TheChartFillsTheWindowBelowItsPanel)
{
    auto& window = open("X").window;
    const auto& chart = *child<TChart>(window, "TChart1");
    for (const auto& size : {QSize(900, 700), QSize(1300, 500)}) {
        window.resize(size);
        QTest::qWait(20);
        EXPECT_EQ(chart.x(), 0);
        EXPECT_EQ(chart.width(), size.width());
        EXPECT_EQ(chart.height(), size.height() - chart.y());
    }
}

/// The window where only time passes: nothing hangs on the bus.
class GrayScaleChartAlone : public ::testing::Test {
protected:
    GrayScaleChartAlone()
    {
        qApp->installEventFilter(&filter);
        bench.currentAddress = QStringLiteral("5");
    }
    void openPort() { ASSERT_TRUE(mscomm1.setPortOpen(true).isEmpty()); }
    /// What a showing with exec() leaves behind: true when the window closed by itself.
    bool closesByItself(const char* direction)
    {
        bench.GrayscaleDirection = QString::fromLatin1(direction);
        shown = std::make_unique<Shown>(bench, module1, gate, messages);
        shown->show();
        return !shown->window.isVisible();
    }

    link::Bench bench;
    test::HandClock clock;
    link::PortList ports{{QStringLiteral("fake")}, [] { return std::vector<link::PortInfo>(); }};
    test::FakeDevice* device = nullptr;
    link::MSComm mscomm1{ports, [this](const QString&, const link::LineSettings&) {
                             auto made = std::make_unique<test::FakeDevice>();
                             device = made.get();
                             return link::OpenedDevice{std::move(made), QString()};
                         }};
    link::Module1 module1{mscomm1, clock};
    link::Gate gate;
    InputFilter filter{gate};
    test::TestMessages messages;
    std::unique_ptr<Shown> shown;
};

TEST_F(GrayScaleChartAlone, AClosedPortClosesTheWindowForEveryDirectionButY)
{
    for (const auto* direction : {"X", "Z1", "Z2"}) {
        messages.shown.clear();
        EXPECT_TRUE(closesByItself(direction)) << direction;
        EXPECT_EQ(messages.shown, QStringList{QStringLiteral("CommPort not Opened")});
    }
}

TEST_F(GrayScaleChartAlone, AClosedPortKeepsTheWindowForY)
{
    EXPECT_FALSE(closesByItself("Y"));
    EXPECT_EQ(messages.shown, QStringList{QStringLiteral("CommPort not Opened")});
    EXPECT_EQ(shown->title(), "Grayscale Graph of CCD's Pixels (Y-direction)");
    EXPECT_EQ(child<TChart>(shown->window, "TChart1")->graphCount(), 3);
    EXPECT_TRUE(shown->saveGraph().isEnabled());
    EXPECT_FALSE(shown->window.dataReady());
}

TEST_F(GrayScaleChartAlone, AnEmptyAddressClosesTheWindowForEveryDirectionButY)
{
    openPort();
    bench.currentAddress.clear();
    for (const auto* direction : {"X", "Z1", "Z2"}) {
        messages.shown.clear();
        EXPECT_TRUE(closesByItself(direction)) << direction;
        EXPECT_EQ(messages.shown, QStringList{QStringLiteral("Please input the sensor No!")});
    }
    EXPECT_EQ(device->written, "");
    messages.shown.clear();
    EXPECT_FALSE(closesByItself("Y"));
    EXPECT_EQ(messages.shown, QStringList{QStringLiteral("Comm Error")});
    EXPECT_EQ(device->written, ":0066FF\r\n");
}

TEST_F(GrayScaleChartAlone, AnAddressOfBlanksPassesTheCheck)
{
    openPort();
    bench.currentAddress = QStringLiteral("  ");
    EXPECT_FALSE(closesByItself("X"));
    EXPECT_EQ(device->written, ":0065FF\r\n");
}

TEST_F(GrayScaleChartAlone, ThePortIsAskedBeforeTheAddress)
{
    bench.currentAddress.clear();
    EXPECT_TRUE(closesByItself("X"));
    EXPECT_EQ(messages.shown, QStringList{QStringLiteral("CommPort not Opened")});
}

TEST_F(GrayScaleChartAlone, WhileReadingTheTitleAsksToWaitAndTheButtonsAreDisabled)
{
    openPort();
    QString title;
    bool enabled = true;
    int series = -1;
    clock.plan(1, [&] {
        title = shown->title();
        enabled = shown->saveGraph().isEnabled() || shown->saveData().isEnabled();
        series = child<TChart>(shown->window, "TChart1")->graphCount();
    });
    EXPECT_FALSE(closesByItself("X"));
    EXPECT_EQ(title, "Reading grayscale data .... Please wait!");
    EXPECT_FALSE(enabled);
    EXPECT_EQ(series, 0);
    EXPECT_EQ(messages.shown, QStringList{QStringLiteral("Comm Error")});
}

TEST_F(GrayScaleChartAlone, ClosingInMidReadingWaitsForTheReply)
{
    openPort();
    bool visible = false;
    clock.plan(1, [&] {
        shown->window.close();
        visible = shown->window.isVisible();
        device->receive(":05650001FFFF\r\n");
    });
    EXPECT_TRUE(closesByItself("X"));
    EXPECT_TRUE(visible);
    EXPECT_EQ(shown->window.array().count(), 1);
    EXPECT_TRUE(messages.shown.isEmpty());
}

} // namespace
} // namespace quorvel
