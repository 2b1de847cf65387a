#include "support/grayscale_directions.h"
#include "windows/grayscalechart_on_the_bus.h"

namespace quorvel {
namespace {

using ::testing::ElementsAre;

constexpr auto kTitleX = "Grayscale Graph of CCD's Pixels (X-direction)";

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
    for (const auto& direction : test::kGrayscaleDirections) {
        auto& window = open(direction.name, "12", link::TypeC);
        EXPECT_EQ(bus.frames(), QStringList{QString::fromLatin1(direction.frame)});
        EXPECT_EQ(window.window.array().count(), direction.pixels) << direction.name;
        EXPECT_EQ(window.title(),
                  QStringLiteral("Grayscale Graph of CCD's Pixels (%1-direction)").arg(direction.name));
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

TEST_F(GrayScaleChartOnTheBus, AnXReplyOneCharacterLongerIsRejected)
{
    bus.command(QStringLiteral("reply 5 65 :056500021AFFFF"));
    auto& window = open("X");
    EXPECT_THAT(window.pixels(), ElementsAre(26, 255));
    bus.command(QStringLiteral("reply 5 65 :056500021AFF0FF"));
    window.showAgain();
    EXPECT_EQ(messages.shown, QStringList{QStringLiteral("灰度数据位数不准确！")});
    EXPECT_FALSE(window.saveData().isEnabled());
    EXPECT_FALSE(window.window.dataReady());
    EXPECT_THAT(window.pixels(), ElementsAre(26, 255));
}

TEST_F(GrayScaleChartOnTheBus, AYReplyThatEchoesTheCommandOfXIsRejected)
{
    bus.command(QStringLiteral("reply 5 66 :056600011AFF"));
    auto& window = open("Y");
    EXPECT_THAT(window.pixels(), ElementsAre(26));
    bus.command(QStringLiteral("reply 5 66 :056500011BFF"));
    window.showAgain();
    EXPECT_EQ(messages.shown, QStringList{QStringLiteral("The GrayScale data is error!")});
    EXPECT_FALSE(window.saveGraph().isEnabled());
    EXPECT_FALSE(window.saveData().isEnabled());
    EXPECT_THAT(window.pixels(), ElementsAre(26));
}

TEST_F(GrayScaleChartOnTheBus, AMalformedZReplyIsNotSaidCountsAsDoneAndKeepsThePixels)
{
    for (const auto* direction : {"Z1", "Z2"}) {
        auto& window = open(direction, "12", link::TypeC);
        const auto before = window.pixels();
        EXPECT_EQ(before.size(), 2048U);
        bus.fault(QStringLiteral("count=20001@78"));
        window.showAgain();
        bus.clearFaults();
        EXPECT_TRUE(messages.shown.isEmpty()) << direction;
        EXPECT_TRUE(window.saveGraph().isEnabled());
        EXPECT_TRUE(window.saveData().isEnabled());
        EXPECT_TRUE(window.window.dataReady());
        EXPECT_EQ(window.pixels(), before);
        EXPECT_EQ(window.status(), "The reply was not understood. No pixels were read.");
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
    EXPECT_EQ(window.chart().graphCount(), 3) << "the red lines are drawn all the same";
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
    window.showAgain();
    EXPECT_EQ(bus.frames().size(), 1) << "frames() gives those since the last call";
}

/// Counts how often the window system, not the program, brings a window back.
class ShowsFromOutside final : public QObject {
public:
    explicit ShowsFromOutside(QWidget& window) { window.installEventFilter(this); }
    bool eventFilter(QObject*, QEvent* event) override
    {
        if (event->type() == QEvent::Show && event->spontaneous()) ++count;
        return false;
    }
    int count = 0;
};

TEST_F(GrayScaleChartOnTheBus, ComingBackFromTheTaskBarReadsNothing)
{
    auto& window = open("X");
    const ShowsFromOutside shows(window.window);
    window.window.showMinimized();
    window.window.showNormal();
    ASSERT_TRUE(QTest::qWaitFor([&] { return shows.count == 1; }));
    QTest::qWait(50);
    EXPECT_EQ(bus.frames().size(), 1);
}

TEST_F(GrayScaleChartOnTheBus, AShowingDuringAnotherHandlerReadsAfterIt)
{
    bench.GrayscaleDirection = QStringLiteral("X");
    shown = std::make_unique<Shown>(workplace);
    gate.run([this] {
        shown->window.show();
        QTest::qWait(50);
        EXPECT_EQ(bus.frames(), QStringList());
        EXPECT_FALSE(gate.stopRequested());
    });
    EXPECT_EQ(bus.frames(), QStringList{QStringLiteral(":0565FF")});
    EXPECT_EQ(shown->window.array().count(), 7450);
    EXPECT_EQ(shown->title(), kTitleX);
}

TEST_F(GrayScaleChartOnTheBus, ThePixelThatIsPointedAtIsReadOut)
{
    auto& window = open("X");
    auto& chart = window.chart();
    const auto* readout = child<QLabel>(window.window, "Readout");
    chart.showPart({6.97, 7.03}, {0, 300});
    QTest::mouseMove(&chart, {qRound(chart.xAxis->coordToPixel(7)), chart.axisRect()->center().y()});
    EXPECT_EQ(readout->text(), QStringLiteral("Pixel 1256: 7.000 mm, %1").arg(window.window.array()[1256]));
    QEvent leaving(QEvent::Leave);
    QCoreApplication::sendEvent(&chart, &leaving);
    EXPECT_EQ(readout->text(), "");
}

TEST_F(GrayScaleChartOnTheBus, AFailedReadingDrawsTheEarlierOne)
{
    auto& window = open("X");
    bus.fault(QStringLiteral("count@65"));
    window.showAgain();
    EXPECT_EQ(lastMessage(), "灰度数据位数不准确！");
    EXPECT_EQ(window.drawn(), 7450);
    EXPECT_FALSE(window.window.dataReady());
    EXPECT_EQ(window.title(), kTitleX);
}

TEST_F(GrayScaleChartOnTheBus, TheChartFillsTheWindowBelowItsPanel)
{
    auto& window = open("X");
    const auto& chart = window.chart();
    for (const auto& size : {QSize(900, 700), QSize(1300, 500)}) {
        window.window.resize(size);
        QTest::qWait(20);
        EXPECT_EQ(chart.x(), 0);
        EXPECT_EQ(chart.width(), size.width());
        EXPECT_EQ(chart.height(), size.height() - chart.y());
    }
}

/// What stands at the ticks of an axis, from its lower to its upper end.
QStringList ticksOf(const QCPAxis& axis)
{
    QVector<double> ticks;
    QVector<QString> labels;
    axis.ticker()->generate(axis.range(), QLocale::c(), u'g', 6, ticks, nullptr, &labels);
    return {labels.begin(), labels.end()};
}

TEST_F(GrayScaleChartOnTheBus, TheTicksShowMillimetresAndBrightness)
{
    auto& window = open("X");
    EXPECT_EQ(ticksOf(*window.chart().xAxis),
              QStringList({"0", "5", "10", "15", "20", "25", "30", "35", "40", "45", "50", "\n(mm)"}));
    EXPECT_EQ(ticksOf(*window.chart().yAxis),
              QStringList({"0", "20", "40", "60", "80", "100", "120", "140", "160", "180", "200", "220",
                           "240", "260", "280", "GrayScale"}));
}

/// The window against readout 5, of type B.
class GrayScaleChartOfTypeB : public test::BenchOnTheBus {
protected:
    GrayScaleChartOfTypeB() : BenchOnTheBus({"--fast", "--seed", "1", "--readout", "5:B"}) {}
};

TEST_F(GrayScaleChartOfTypeB, YReachesAHundredMillimetres)
{
    bench.GrayscaleDirection = QStringLiteral("Y");
    bench.instrumentType = link::TypeB;
    Shown shown(workplace);
    shown.show();
    EXPECT_EQ(bus.frames(), QStringList{QStringLiteral(":0566FF")});
    EXPECT_EQ(messages.shown, QStringList());
    EXPECT_EQ(shown.drawn(), 7330);
    EXPECT_EQ(shown.title(), "Grayscale Graph of CCD's Pixels (Y-direction)");
    auto& chart = shown.chart();
    ASSERT_EQ(chart.graphCount(), 4);
    for (const auto& [series, at] : {std::pair{1, 0}, {2, 50}, {3, 100}}) {
        EXPECT_EQ(chart.graph(series)->data()->at(0)->key, at);
        EXPECT_EQ(chart.graph(series)->data()->at(1)->key, at);
        EXPECT_EQ(chart.graph(series)->pen().color(), QColor(Qt::red));
    }
    EXPECT_DOUBLE_EQ(chart.graph(0)->data()->at(63)->key, -0.85) << "pixel 64";
    const auto ticks = ticksOf(*chart.xAxis);
    EXPECT_EQ(ticks.first(), "0");
    EXPECT_EQ(ticks.mid(ticks.size() - 2), QStringList({"100", "\n(mm)"}));
}

} // namespace
} // namespace quorvel
