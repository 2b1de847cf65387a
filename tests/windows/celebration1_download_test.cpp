#include "support/bench_by_hand.h"
#include "windows/celebration1_on_the_bus.h"

#include <QProgressBar>
#include <QTemporaryDir>
#include <QTimer>

namespace quorvel::test {
namespace {

class Celebration1Download : public Celebration1OnTheBus {};

TEST_F(Celebration1Download, AsksForTheOpenPortFirst)
{
    mscomm1.setPortOpen(false);
    open("X");
    button("Command1").click();
    EXPECT_EQ(lastMessage(), "CommPort not Opened");
}

TEST_F(Celebration1Download, ThatIsEchoedOtherwiseHasFailed)
{
    open("X");
    fill({1, 2});
    bus.fault("echo@6111");
    button("Command1").click();
    EXPECT_EQ(lastMessage(), "X向标定参数下载失败！");
}

TEST_F(Celebration1Download, WithALongEchoEndsInSilence)
{
    open("X");
    fill({1, 2});
    bus.fault("long@6111");
    button("Command1").click();
    EXPECT_TRUE(messages.shown.isEmpty());
    EXPECT_TRUE(status().contains("188 characters came instead of 187")) << qPrintable(status());
}

TEST_F(Celebration1Download, ShowsHowManyCharactersAreOut)
{
    open("X");
    fill({1, 2});
    auto& bar = *child<QProgressBar>(*window, "Progress");
    EXPECT_FALSE(bar.isVisible());
    int early = 0;
    QTimer::singleShot(300, window.get(), [&] {
        EXPECT_TRUE(bar.isVisible());
        EXPECT_EQ(bar.minimum(), 0);
        EXPECT_EQ(bar.maximum(), 187);
        EXPECT_TRUE(status().contains("Sending X_Data")) << qPrintable(status());
        early = bar.value();
    });
    button("Command1").click();
    EXPECT_GT(early, 0);
    EXPECT_LT(early, 187);
    EXPECT_EQ(bar.value(), 187);
    EXPECT_FALSE(bar.isVisible());
    EXPECT_EQ(status(), standing());
}

TEST_F(Celebration1Download, AValueOfAThousandIsNamedAsSoonAsItIsInTheTable)
{
    open("X");
    const QString warning(
        "Point 3 has the value 1000: a download cannot succeed with values of 1000 or more.");
    grid().model()->setData(grid().model()->index(3, 1), "1000");
    EXPECT_EQ(status(), warning + ' ' + standing()) << "although all other points are empty";
    fill({1, 2});
    EXPECT_EQ(status(), standing());
    grid().model()->setData(grid().model()->index(3, 2), "1000");
    EXPECT_EQ(status(), warning + ' ' + standing());
    button("Command1").click();
    EXPECT_TRUE(status().startsWith(warning)) << qPrintable(status());
    EXPECT_FALSE(messages.shown.contains("X向标定参数下载完毕！"));
}

TEST_F(Celebration1Download, EndsBeforeTheWindowCloses)
{
    open("X");
    fill({1, 2});
    QTimer::singleShot(300, window.get(), [&] {
        EXPECT_TRUE(gate.busy());
        window->close();
        EXPECT_TRUE(window->isVisible()) << "the transaction ends first";
    });
    button("Command1").click();
    EXPECT_EQ(lastMessage(), "X向标定参数下载完毕！");
    EXPECT_FALSE(window->isVisible());
}

TEST_F(Celebration1Download, OfZSendsBothTablesBeforeTheWindowCloses)
{
    bench.currentAddress = "33";
    open("Z");
    fill({1, 2, 3});
    QTimer::singleShot(300, window.get(), [&] { window->close(); });
    button("Command1").click();
    EXPECT_EQ(messages.shown, (QStringList{"Z1向标定参数下载完毕！", "Z2向标定参数下载完毕！"}));
    EXPECT_FALSE(window->isVisible());
}

TEST_F(Celebration1Download, SurvivesAnAdapterThatIsPulled)
{
    bench.currentAddress = "33";
    open("Z");
    fill({1, 2, 3});
    QTimer::singleShot(300, window.get(), [&] { bus.unplug(); });
    button("Command1").click();
    EXPECT_FALSE(mscomm1.PortOpen());
    EXPECT_TRUE(status().contains("is gone")) << qPrintable(status());
    EXPECT_TRUE(messages.shown.isEmpty());
}

/// The window before readout 1, whose answers are a list and for which waiting costs no time.
class Celebration1ByHand : public BenchByHand, protected Celebration1Hands {
protected:
    Celebration1ByHand() : Celebration1Hands(workplace)
    {
        bench.programFolder = folder.path().toStdString();
        onFrame = [this] {
            if (!cut.empty()) answers.push_back((frames.back() + "\r\n").substr(cut.front()));
            if (!cut.empty()) cut.pop_front();
        };
        open("Z");
        fill({1, 2, 3});
    }

    QTemporaryDir folder;
    std::deque<std::size_t> cut; ///< characters that the echoes to come lack at their beginning; then silence
};

TEST_F(Celebration1ByHand, DownloadsZ2AfterAShortEchoOfZ1AndTellsOfItInTheEnd)
{
    cut = {1, 0};
    button("Command1").click();
    EXPECT_EQ(messages.shown, QStringList{"Z2向标定参数下载完毕！"});
    EXPECT_TRUE(status().startsWith("Z1_Data: no complete echo, 188 characters came instead of 189"))
        << qPrintable(status());
}

TEST_F(Celebration1ByHand, ShowsNoBoxAfterAShortEchoOfZ2)
{
    cut = {0, 1};
    button("Command1").click();
    EXPECT_EQ(messages.shown, QStringList{"Z1向标定参数下载完毕！"});
    EXPECT_TRUE(status().startsWith("Z2_Data: no complete echo, 188 characters came instead of 189"))
        << qPrintable(status());
}

TEST_F(Celebration1ByHand, WaitsTenSecondsForEachEchoOfASilentReadout)
{
    const double before = clock.passed();
    button("Command1").click();
    EXPECT_NEAR(clock.passed() - before, 2 * (0.03 + 189 * 0.005 + 10), 0.1);
    EXPECT_TRUE(messages.shown.isEmpty());
    const auto lines = status().split('\n');
    ASSERT_EQ(lines.size(), 2) << qPrintable(status());
    EXPECT_TRUE(lines[0].startsWith("Z1_Data: no complete echo, 0 characters"));
    EXPECT_TRUE(lines[1].startsWith("Z2_Data: no complete echo, 0 characters"));
    button("Command2").click();
    EXPECT_EQ(status(), standing());
}

TEST_F(Celebration1ByHand, SendsNothingMoreIntoALostPort)
{
    const double before = clock.passed();
    onFrame = [this] { device->vanish(); };
    button("Command1").click();
    EXPECT_LT(clock.passed() - before, 1.1) << "one frame takes a second";
    EXPECT_TRUE(status().contains("is gone")) << qPrintable(status());
    EXPECT_TRUE(messages.shown.isEmpty());
}

TEST_F(Celebration1ByHand, SendsEveryFrameToTheAddressInItsBox)
{
    child<QLineEdit>(*window, "Text1")->setText("171");
    button("Command1").click();
    measure(0);
    ASSERT_EQ(frames.size(), 3U);
    EXPECT_TRUE(frames[0].starts_with(":AB780111+")) << frames[0];
    EXPECT_TRUE(frames[1].starts_with(":AB781111+")) << frames[1];
    EXPECT_EQ(frames[2], ":AB2102FF");
    EXPECT_EQ(bench.currentAddress, "1") << "the main window keeps its own";
}

TEST_F(Celebration1Download, OfYTellsTheVerdictOfTheReadout)
{
    open("Y");
    fill({1, 2});
    button("Command1").click();
    EXPECT_EQ(messages.shown, QStringList("Y向标定参数下载完毕！"));
    const auto frames = bus.frames();
    ASSERT_EQ(frames.size(), 1);
    EXPECT_EQ(frames[0].left(39), ":056311+000.000+000.000+001.000+001.000");
    bus.fault("echo@6311");
    messages.shown.clear();
    button("Command1").click();
    EXPECT_EQ(messages.shown, QStringList("Y向标定参数下载失败！"));
}

TEST_F(Celebration1Download, OfZGoesOnWithZ2AfterZ1HasFailed)
{
    bench.currentAddress = "33";
    open("Z");
    fill({1, 2, 3});
    bus.fault("echo@780111");
    button("Command1").click();
    EXPECT_EQ(messages.shown, (QStringList{"Z1向标定参数下载失败！", "Z2向标定参数下载完毕！"}));
    EXPECT_EQ(bus.frames().size(), 2);
}

} // namespace
} // namespace quorvel::test
