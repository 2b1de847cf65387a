#include "link/mscomm.h"
#include "support/fake_device.h"

#include <gtest/gtest.h>

namespace quorvel::link {
namespace {

class MSCommOnAFakeDevice : public ::testing::Test {
protected:
    OpenedDevice openFake(const QString& name, const LineSettings& line)
    {
        openedName = name;
        openedLine = line;
        auto opened = std::make_unique<test::FakeDevice>();
        device = opened.get();
        return {std::move(opened), {}};
    }

    QString openedName;
    LineSettings openedLine;
    test::FakeDevice* device = nullptr;
    PortList ports{{"/dev/ttyFirst", "/dev/ttySecond"}, [] { return std::vector<PortInfo>(); }};
    MSComm comm{ports,
                [this](const QString& name, const LineSettings& line) { return openFake(name, line); }};
};

TEST_F(MSCommOnAFakeDevice, OpensThePortOfItsNumberWithItsSettings)
{
    EXPECT_FALSE(comm.PortOpen());
    comm.setCommPort(2);
    comm.setSettings("9600,n,8,1");
    EXPECT_EQ(comm.setPortOpen(true), "");
    EXPECT_TRUE(comm.PortOpen());
    EXPECT_EQ(openedName, "/dev/ttySecond");
    EXPECT_EQ(openedLine.baud, 9600);
    EXPECT_EQ(openedLine.parity, 'n');
    EXPECT_EQ(openedLine.dataBits, 8);
    EXPECT_EQ(openedLine.stopBits, 1);
    EXPECT_EQ(comm.setPortOpen(false), "");
    EXPECT_FALSE(comm.PortOpen());
}

TEST_F(MSCommOnAFakeDevice, ANumberThatNoPortHasIsRefusedWithAReason)
{
    comm.setCommPort(7);
    EXPECT_NE(comm.setPortOpen(true), "");
    EXPECT_FALSE(comm.PortOpen());
}

TEST_F(MSCommOnAFakeDevice, WrongSettingsAreRefusedWithAReason)
{
    comm.setSettings("fast");
    EXPECT_NE(comm.setPortOpen(true), "");
    EXPECT_FALSE(comm.PortOpen());
}

TEST_F(MSCommOnAFakeDevice, AFailedOpeningGivesItsReason)
{
    MSComm refused(ports, [](const QString&, const LineSettings&) {
        return OpenedDevice{nullptr, "in use"};
    });
    EXPECT_EQ(refused.setPortOpen(true), "in use");
    EXPECT_FALSE(refused.PortOpen());
}

TEST_F(MSCommOnAFakeDevice, InputTakesAsManyAsInputLenSays)
{
    comm.setPortOpen(true);
    device->receive("abcdef");
    EXPECT_EQ(comm.InBufferCount(), 6);
    comm.setInputLen(1);
    EXPECT_EQ(comm.Input(), "a");
    comm.setInputLen(0);
    EXPECT_EQ(comm.Input(), "bcdef");
    EXPECT_EQ(comm.InBufferCount(), 0);
    EXPECT_EQ(comm.Input(), "");
}

TEST_F(MSCommOnAFakeDevice, ADeviceThatVanishesClosesThePortAndSaysWhy)
{
    comm.setPortOpen(true);
    QString reason;
    QObject::connect(&comm, &MSComm::lost, &comm, [&reason](const QString& text) { reason = text; });
    device->vanish();
    EXPECT_FALSE(comm.PortOpen());
    EXPECT_TRUE(reason.contains("/dev/ttyFirst")) << qPrintable(reason);
    EXPECT_TRUE(reason.contains("pulled")) << qPrintable(reason);
    EXPECT_EQ(comm.InBufferCount(), 0);
    EXPECT_EQ(comm.Input(), "");
    comm.Output("into the void");
    EXPECT_EQ(comm.setPortOpen(true), "");
    EXPECT_TRUE(comm.PortOpen());
}

TEST_F(MSCommOnAFakeDevice, TheReasonOfALossIsKeptUntilThePortIsOpenedOrClosed)
{
    for (const bool open : {true, false}) {
        comm.setPortOpen(true);
        EXPECT_EQ(comm.lostReason(), "");
        device->vanish();
        EXPECT_TRUE(comm.lostReason().startsWith("/dev/ttyFirst is gone (pulled)."))
            << qPrintable(comm.lostReason());
        comm.setPortOpen(open);
        EXPECT_EQ(comm.lostReason(), "");
    }
}

TEST_F(MSCommOnAFakeDevice, AFloodTakesNoMoreThanTheInputBuffer)
{
    comm.setPortOpen(true);
    device->receive("first");
    for (int i = 0; i < 100; ++i)
        device->receive(std::string(10'000, 'x'));
    EXPECT_EQ(device->waiting.size(), 0U) << "nothing piles up in the device";
    EXPECT_EQ(comm.InBufferCount(), static_cast<int>(MSComm::kInputBuffer));
    EXPECT_EQ(comm.takeLostCharacters(), 1'000'005 - MSComm::kInputBuffer);
    EXPECT_EQ(comm.takeLostCharacters(), 0U);
    EXPECT_EQ(comm.Input().substr(0, 6), "firstx");
    device->receive("later");
    EXPECT_EQ(comm.Input(), "later");
}

TEST_F(MSCommOnAFakeDevice, ANewPortBeginsWithoutLosses)
{
    comm.setPortOpen(true);
    device->receive(std::string(MSComm::kInputBuffer + 1, 'x'));
    comm.setPortOpen(true);
    EXPECT_EQ(comm.InBufferCount(), 0);
    EXPECT_EQ(comm.takeLostCharacters(), 0U);
}

} // namespace
} // namespace quorvel::link
