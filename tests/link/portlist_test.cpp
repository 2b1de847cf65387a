#include "link/portlist.h"

#include <gtest/gtest.h>

namespace quorvel::link {
namespace {

std::vector<PortInfo> twoAdapters()
{
    return {{"/dev/ttyUSB0", "USB-Serial Controller", {}}, {"/dev/ttyUSB1", "", {}}};
}

QStringList texts(const PortList& list)
{
    QStringList texts;
    for (const auto& entry : list.entries()) {
        texts << entry.text;
    }
    return texts;
}

TEST(PortList, NumbersFromOneDevicesHandedInFirst)
{
    const PortList list({"/dev/pts/7", "tcp:localhost:4001"}, twoAdapters);
    EXPECT_EQ(texts(list), QStringList({"COM1 /dev/pts/7", "COM2 tcp:localhost:4001",
                                        "COM3 /dev/ttyUSB0 USB-Serial Controller", "COM4 /dev/ttyUSB1"}));
    EXPECT_EQ(list.deviceOf(3), "/dev/ttyUSB0");
    EXPECT_EQ(list.deviceOf(5), "");
    EXPECT_EQ(list.deviceOf(0), "");
}

TEST(PortList, ADeviceHandedInAndEnumeratedIsListedOnce)
{
    const PortList list({"/dev/ttyUSB1"}, twoAdapters);
    EXPECT_EQ(texts(list), QStringList({"COM1 /dev/ttyUSB1", "COM2 /dev/ttyUSB0 USB-Serial Controller"}));
}

TEST(PortList, IsEmptyOnAMachineWithoutPorts)
{
    const PortList list({}, [] { return std::vector<PortInfo>(); });
    EXPECT_TRUE(list.entries().empty());
}

TEST(PortList, AnAddedDeviceComesLastAndStaysWhenRefreshed)
{
    std::vector<PortInfo> plugged = twoAdapters();
    PortList list({}, [&plugged] { return plugged; });
    EXPECT_EQ(list.add("tcp:10.0.0.7:4001"), 2);
    EXPECT_EQ(list.add("tcp:10.0.0.7:4001"), 2);
    plugged.pop_back();
    list.refresh();
    EXPECT_EQ(texts(list),
              QStringList({"COM1 /dev/ttyUSB0 USB-Serial Controller", "COM2 tcp:10.0.0.7:4001"}));
    EXPECT_EQ(list.indexOf("tcp:10.0.0.7:4001"), 1);
    EXPECT_EQ(list.indexOf("/dev/ttyUSB1"), -1);
}

TEST(PortList, KeepsThePlatformsOwnNumbers)
{
    const PortList list({"tcp:localhost:4001"}, [] {
        return std::vector<PortInfo>{{"COM1", "", 1}, {"COM12", "", 12}};
    });
    EXPECT_EQ(texts(list), QStringList({"COM2 tcp:localhost:4001", "COM1", "COM12"}));
    EXPECT_EQ(list.deviceOf(12), "COM12");
}

TEST(PortList, ANameOfThePlatformWithoutNumberIsAnEntryToo)
{
    const PortList list({}, [] { return std::vector<PortInfo>{{"CNCA0", "", 0}, {"COM3", "", 3}}; });
    EXPECT_EQ(texts(list), QStringList({"CNCA0", "COM3"}));
    EXPECT_EQ(list.deviceOf(0), "") << "it would be any port without a number";
}

TEST(PortList, PortsAreSortedByTheirNumbers)
{
    std::vector<PortInfo> ports = {{"/dev/ttyUSB10", "", {}},
                                   {"/dev/ttyUSB2", "", {}},
                                   {"/dev/ttyACM3", "", {}},
                                   {"/dev/modem", "", {}}};
    sortPorts(ports);
    const PortList list({}, [&ports] { return ports; });
    EXPECT_EQ(texts(list), QStringList({"COM1 /dev/modem", "COM2 /dev/ttyACM3", "COM3 /dev/ttyUSB2",
                                        "COM4 /dev/ttyUSB10"}));
}

TEST(PortList, KeepsTheOrderOfThePlatform)
{
    const PortList list({}, [] {
        return std::vector<PortInfo>{{"COM12", "", 12}, {"COM3", "", 3}, {"CNCA0", "", 0}, {"COM1", "", 1}};
    });
    EXPECT_EQ(texts(list), QStringList({"COM12", "COM3", "CNCA0", "COM1"}));
}

TEST(PortList, OfTwoPortsWithOneNumberTheFirstHasIt)
{
    const PortList list({}, [] { return std::vector<PortInfo>{{"COM3", "", 3}, {"VCP3", "", 3}}; });
    EXPECT_EQ(texts(list), QStringList({"COM3", "VCP3"}));
    EXPECT_EQ(list.deviceOf(3), "COM3");
}

} // namespace
} // namespace quorvel::link
