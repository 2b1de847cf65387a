#include "support/fake_device.h"
#include "support/hand_clock.h"
#include "windows/grayscalechart_on_the_bus.h"

namespace quorvel {
namespace {

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
        shown = std::make_unique<Shown>(workplace);
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
    Workplace workplace{bench, module1, gate, messages};
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
    EXPECT_EQ(shown->chart().graphCount(), 3);
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
        series = shown->chart().graphCount();
    });
    EXPECT_FALSE(closesByItself("X"));
    EXPECT_EQ(title, "Reading grayscale data .... Please wait!");
    EXPECT_FALSE(enabled);
    EXPECT_EQ(series, 0);
    EXPECT_EQ(messages.shown, QStringList{QStringLiteral("Comm Error")});
}

TEST_F(GrayScaleChartAlone, TheStatusTellsHowFarTheReadingIs)
{
    openPort();
    // the status follows after a while of real time
    const auto expect = [&](const QString& status) {
        EXPECT_TRUE(QTest::qWaitFor([&] { return shown->status() == status; }, 10'000))
            << qPrintable(shown->status()) << " instead of " << qPrintable(status);
    };
    clock.plan(1, [&] { expect("Waiting for the readout ..."); });
    clock.plan(1.5, [&] { device->receive(":05650003AABB"); });
    clock.plan(2, [&] { expect("2 of 3 pixels arrived."); });
    clock.plan(2.5, [&] {
        shown->window.close();
        expect("2 of 3 pixels arrived. The window closes when the reply has ended.");
        device->receive("CCFF\r\n");
    });
    EXPECT_TRUE(closesByItself("X"));
    EXPECT_EQ(shown->status(), "3 pixels read.");
}

TEST_F(GrayScaleChartAlone, WhyThePortVanishedStaysInTheStatus)
{
    openPort();
    clock.plan(1, [&] { device->receive(":05650003AABB"); });
    clock.plan(2, [&] {
        device->vanish();
        // the reading shows how far it is every 0.2 s of real time
        QTest::qWait(500);
    });
    EXPECT_FALSE(closesByItself("X"));
    EXPECT_EQ(messages.shown, QStringList{QStringLiteral("Comm Error")});
    EXPECT_TRUE(shown->status().contains(QStringLiteral("fake"))) << qPrintable(shown->status());
}

TEST_F(GrayScaleChartAlone, AReplyWithoutEndIsGivenUp)
{
    openPort();
    int sent = 0;
    clock.onEvents = [&] {
        device->receive("A");
        ++sent;
    };
    EXPECT_FALSE(closesByItself("X"));
    EXPECT_EQ(messages.shown, QStringList{QStringLiteral("Comm Error")});
    EXPECT_GE(sent, link::Module1::kLongestLine);
    EXPECT_TRUE(shown->saveData().isEnabled());
    EXPECT_FALSE(shown->window.dataReady());
    EXPECT_EQ(shown->drawn(), 0);
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

TEST_F(GrayScaleChartAlone, AnAddressOfBlanksPassesTheCheckOfZToo)
{
    openPort();
    bench.currentAddress = QStringLiteral(" ");
    for (const auto& [direction, frame] : {std::pair{"Z1", ":007803FF\r\n"}, {"Z2", ":007804FF\r\n"}}) {
        device->written.clear();
        messages.shown.clear();
        EXPECT_FALSE(closesByItself(direction));
        EXPECT_EQ(device->written, frame);
        EXPECT_EQ(messages.shown, QStringList{QStringLiteral("Comm Error")});
    }
}

TEST_F(GrayScaleChartAlone, ACommErrorEnablesTheButtonsOfEveryDirection)
{
    openPort();
    for (const auto* direction : {"X", "Y", "Z1", "Z2"}) {
        messages.shown.clear();
        bool enabledMeanwhile = true;
        clock.plan(
            1, [&] { enabledMeanwhile = shown->saveGraph().isEnabled() || shown->saveData().isEnabled(); });
        EXPECT_FALSE(closesByItself(direction));
        EXPECT_EQ(messages.shown, QStringList{QStringLiteral("Comm Error")});
        EXPECT_FALSE(enabledMeanwhile) << direction;
        EXPECT_TRUE(shown->saveGraph().isEnabled()) << direction;
        EXPECT_TRUE(shown->saveData().isEnabled()) << direction;
        EXPECT_FALSE(shown->window.dataReady()) << direction;
    }
}

// Where a window manager shows only the title of a minimised window, its size says nothing.
TEST_F(GrayScaleChartAlone, AMinimisedWindowIsNotLaidOut)
{
    openPort();
    closesByItself("X");
    const auto before = shown->chart().geometry();
    shown->window.showMinimized();
    ASSERT_TRUE(shown->window.isMinimized());
    QResizeEvent small(QSize(160, 24), shown->window.size());
    QCoreApplication::sendEvent(&shown->window, &small);
    shown->window.resize(160, 24);
    EXPECT_EQ(shown->chart().geometry(), before);
    shown->window.showNormal();
    shown->window.resize(800, 600);
    EXPECT_EQ(shown->chart().width(), 800);
    EXPECT_EQ(shown->chart().height(), 600 - shown->chart().y());
}

} // namespace
} // namespace quorvel
