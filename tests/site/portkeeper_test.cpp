#include "site/portkeeper.h"
#include "support/fake_device.h"
#include "support/hand_clock.h"

#include <QPointer>

#include <gmock/gmock.h>

namespace quorvel::site {
namespace {

using ::testing::ElementsAre;

/// Ports that come and go.
class PortKeepers : public ::testing::Test {
protected:
    PortKeepers() { plug("/dev/ttyUSB0", "A1"); }

    void plug(const char* name, const char* serialNumber)
    {
        there.push_back({QString::fromLatin1(name), {}, {}, QString::fromLatin1(serialNumber)});
    }
    /// The adapter that is open is pulled.
    void pull()
    {
        there.clear();
        device->vanish();
    }
    link::OpenedDevice open(const QString& name)
    {
        ++attempts;
        for (const auto& present : there) {
            if (present.device != name) continue;
            auto fake = std::make_unique<test::FakeDevice>();
            device = fake.get();
            return {std::move(fake), {}};
        }
        return {nullptr, name + QStringLiteral(" does not exist.")};
    }
    /// Looks every 0.2 s, as a watch does.
    void keepFor(double seconds)
    {
        const auto end = clock.passed() + seconds;
        for (; clock.passed() < end; clock.move(0.2))
            keeper.keepOpen();
    }

    std::vector<link::PortInfo> there;
    int attempts = 0;
    QPointer<test::FakeDevice> device;
    test::HandClock clock;
    link::PortList ports{{}, [this] { return there; }};
    link::MSComm port{ports, [this](const QString& name, const link::LineSettings&) { return open(name); }};
    link::Module1 module1{port, clock};
    std::vector<std::string> told;
    PortKeeper keeper{module1, ports, QStringLiteral("/dev/ttyUSB0"),
                      [this](const QString& words) { told.push_back(words.toStdString()); }};
};

TEST_F(PortKeepers, OpenWhatIsNamed)
{
    EXPECT_EQ(keeper.open(), "");
    EXPECT_EQ(port.deviceName(), "/dev/ttyUSB0");
    EXPECT_TRUE(keeper.isOpen());
}

TEST_F(PortKeepers, SayWhyTheyCannot)
{
    there.clear();
    EXPECT_EQ(keeper.open(), "/dev/ttyUSB0 does not exist.");
    PortKeeper first(module1, ports, {}, {});
    plug("/dev/ttyS0", "");
    EXPECT_EQ(first.open(), "");
    EXPECT_EQ(port.deviceName(), "/dev/ttyS0");
}

TEST_F(PortKeepers, OpenAPortAgainWhenItIsBack)
{
    ASSERT_EQ(keeper.open(), "");
    pull();
    keepFor(20);
    EXPECT_FALSE(keeper.isOpen());
    plug("/dev/ttyUSB0", "A1");
    keepFor(PortKeeper::kLongestPause);
    EXPECT_TRUE(keeper.isOpen());
    EXPECT_THAT(told,
                ElementsAre("/dev/ttyUSB0 does not exist. It is tried again, at the latest every minute.",
                            "/dev/ttyUSB0 is open again."));
}

TEST_F(PortKeepers, TryWithPausesThatGrowToAMinute)
{
    plug("/dev/ttyUSB9", "");
    PortKeeper nine(module1, ports, QStringLiteral("/dev/ttyUSB9"), [](const QString&) {});
    ASSERT_EQ(nine.open(), "");
    there.clear();
    device->vanish();
    attempts = 0;
    std::vector<int> moments;
    for (int tenths = 0; tenths < 3600; ++tenths, clock.move(0.1)) {
        const int before = attempts;
        nine.keepOpen();
        if (attempts > before) moments.push_back((tenths + 5) / 10);
    }
    EXPECT_THAT(moments, ElementsAre(0, 1, 3, 7, 15, 31, 63, 123, 183, 243, 303));
}

TEST_F(PortKeepers, FindTheSameAdapterUnderAnotherName)
{
    ASSERT_EQ(keeper.open(), "");
    pull();
    plug("/dev/ttyUSB0", "B2"); // another one, with another bus
    plug("/dev/ttyUSB1", "A1");
    keepFor(2);
    EXPECT_EQ(port.deviceName(), "/dev/ttyUSB1");
    EXPECT_THAT(told, ElementsAre("/dev/ttyUSB1 is open again."));
}

TEST_F(PortKeepers, LeaveAnotherAdapterAlone)
{
    ASSERT_EQ(keeper.open(), "");
    pull();
    plug("/dev/ttyUSB0", "B2");
    keepFor(300);
    EXPECT_FALSE(keeper.isOpen());
    EXPECT_EQ(told.size(), 1U) << "told once, not at each attempt";
}

TEST_F(PortKeepers, AnAdapterWithoutANumberIsFoundByItsName)
{
    there.clear();
    plug("/dev/ttyUSB0", "");
    ASSERT_EQ(keeper.open(), "");
    pull();
    plug("/dev/ttyUSB1", "");
    keepFor(100);
    EXPECT_FALSE(keeper.isOpen());
    plug("/dev/ttyUSB0", "");
    keepFor(PortKeeper::kLongestPause);
    EXPECT_EQ(port.deviceName(), "/dev/ttyUSB0");
}

TEST_F(PortKeepers, TakeAnotherPortWhenItIsChanged)
{
    ASSERT_EQ(keeper.open(), "");
    plug("/dev/ttyUSB5", "C3");
    keeper.change("/dev/ttyUSB0");
    EXPECT_TRUE(keeper.isOpen()) << "the same";
    keeper.change("/dev/ttyUSB5");
    EXPECT_FALSE(keeper.isOpen());
    keeper.keepOpen();
    EXPECT_EQ(port.deviceName(), "/dev/ttyUSB5");
}

} // namespace
} // namespace quorvel::site
