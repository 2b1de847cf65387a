#include "link/device.h"
#include "link/mscomm.h"
#include "link/serialport.h"
#include "support/simulated_bus.h"

#include <QFile>
#include <QSerialPort>
#include <QTcpServer>
#include <QTcpSocket>
#include <QTemporaryDir>
#include <QTest>

#include <gtest/gtest.h>

#include <netinet/in.h>
#include <netinet/tcp.h>
#include <sys/file.h>
#include <sys/socket.h>

namespace quorvel::link {
namespace {

const QStringList kBus = {QStringLiteral("--fast"), QStringLiteral("--readout"), QStringLiteral("5:A")};

TEST(LineSettings, AreReadFromTheirUsualForm)
{
    const auto mark = parseLineSettings("9600,M,8,1");
    ASSERT_TRUE(mark);
    EXPECT_EQ(mark->parity, 'm');
    const auto even = parseLineSettings("19200,e,7,2");
    ASSERT_TRUE(even);
    EXPECT_EQ(even->baud, 19200);
    EXPECT_EQ(even->dataBits, 7);
    EXPECT_EQ(even->stopBits, 2);
}

TEST(LineSettings, AnythingElseIsRefused)
{
    for (const auto* text : {"", "9600", "9600,n,8", "9600,n,8,1,1", "9600,x,8,1", "9600,n,9,1", "9600,n,8,3",
                             "fast,n,8,1", "0,n,8,1", ",,,", "4000001,n,8,1", "99999999999999999999,n,8,1"}) {
        EXPECT_FALSE(parseLineSettings(text)) << text;
    }
}

TEST(Device, AMissingPortIsNamed)
{
    const auto opened = openDevice("/dev/ttyNowhere", {});
    EXPECT_FALSE(opened.device);
    EXPECT_TRUE(opened.reason.contains("/dev/ttyNowhere does not exist")) << qPrintable(opened.reason);
}

TEST(Device, ANameWithoutFolderIsLookedForAmongTheDevices)
{
    const auto opened = openDevice("null", {});
    EXPECT_FALSE(opened.device);
    EXPECT_TRUE(opened.reason.startsWith("null cannot be opened as a serial port: "))
        << qPrintable(opened.reason);
    EXPECT_TRUE(openDevice("ttyNowhere", {}).reason.startsWith("ttyNowhere does not exist."));
}

TEST(Device, WhoMayNotUseAPortIsToldWhichGroupMay)
{
    EXPECT_EQ(
        notAllowedText("/dev/ttyUSB0", "uucp"),
        "You may not use /dev/ttyUSB0. Join the group \"uucp\" (sudo usermod -aG uucp YOUR-NAME), log in "
        "again and press OpenComm again.");
    EXPECT_TRUE(notAllowedText("/dev/ttyUSB0", "").contains("the group \"dialout\""));
}

TEST(Device, WhatToDoNextIsSaidInTheWordsOfTheProgram)
{
    const auto said = [](Adviser adviser) {
        setAdviser(adviser);
        return QStringList{missingText("a"), inUseText("a"), notAllowedText("a", "g"), unusableText("a", "b"),
                           goneText("a", "b")};
    };
    EXPECT_EQ(said(Adviser::Service).join('\n'),
              "a does not exist. Plug the adapter in, or name another port.\n"
              "a is used by another program. Close it.\n"
              "You may not use a. Join the group \"g\" (sudo usermod -aG g YOUR-NAME) and log in again.\n"
              "a cannot be opened as a serial port: b. Name another port.\n"
              "a is gone (b). Check the adapter and the cable.");
    for (const auto& text : said(Adviser::CommandLine)) {
        EXPECT_FALSE(text.contains("OpenComm") || text.contains("F5")) << qPrintable(text);
        EXPECT_TRUE(text.contains("run the command again") || text.contains("--port")) << qPrintable(text);
    }
    EXPECT_EQ(said(Adviser::Windows)[1], "a is used by another program. Close it and press OpenComm again.");
}

TEST(Device, AFileIsNoSerialPort)
{
    const QTemporaryDir folder;
    QFile file(folder.filePath("text"));
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    const auto opened = openDevice(file.fileName(), {});
    EXPECT_FALSE(opened.device);
    EXPECT_TRUE(opened.reason.contains(file.fileName())) << qPrintable(opened.reason);
}

TEST(Device, APortIsHeldExclusively)
{
    const test::SimulatedBus bus(kBus);
    const auto first = openDevice(bus.device(), {});
    ASSERT_TRUE(first.device) << qPrintable(first.reason);
    const auto second = openDevice(bus.device(), {});
    EXPECT_FALSE(second.device);
    EXPECT_TRUE(second.reason.contains("used by another program")) << qPrintable(second.reason);
}

TEST(Device, AnotherNameOfAPortInUseIsRefusedToo)
{
    const test::SimulatedBus bus(kBus);
    const QTemporaryDir folder;
    const auto alias = folder.filePath("alias");
    ASSERT_TRUE(QFile::link(bus.device(), alias));
    const auto first = openDevice(bus.device(), {});
    ASSERT_TRUE(first.device) << qPrintable(first.reason);
    const auto second = openDevice(alias, {});
    EXPECT_FALSE(second.device);
    EXPECT_TRUE(second.reason.contains("used by another program")) << qPrintable(second.reason);
}

TEST(Device, AClosedPortCanBeOpenedAgain)
{
    const test::SimulatedBus bus(kBus);
    for (int i = 0; i < 3; ++i) {
        const auto opened = openDevice(bus.device(), {});
        EXPECT_TRUE(opened.device) << qPrintable(opened.reason);
    }
}

TEST(Device, AnUnpluggedPortClosesByItself)
{
    test::SimulatedBus bus(kBus);
    const PortList ports({bus.device()}, [] { return std::vector<PortInfo>(); });
    MSComm comm(ports);
    ASSERT_EQ(comm.setPortOpen(true), "");
    QString reason;
    QObject::connect(&comm, &MSComm::lost, &comm, [&reason](const QString& text) { reason = text; });
    bus.unplug();
    EXPECT_TRUE(QTest::qWaitFor([&comm] { return !comm.PortOpen(); }, 10'000));
    EXPECT_TRUE(reason.contains(bus.device())) << qPrintable(reason);
}

TEST(Device, APortThatHangsUpSaysSo)
{
    test::SimulatedBus bus(kBus + QStringList{"--fault", "hangup@2101"});
    PortList ports({bus.device()}, [] { return std::vector<PortInfo>(); });
    MSComm comm(ports);
    ASSERT_TRUE(comm.setPortOpen(true).isEmpty());
    comm.Output(":052101FF\r\n");
    ASSERT_TRUE(QTest::qWaitFor([&comm] { return !comm.PortOpen(); }, 10'000));
    EXPECT_EQ(comm.lostReason(), bus.device() + " is gone (unplugged, or closed at its other end). Check the "
                                                "adapter and the cable, then press OpenComm again.");
}

TEST(Device, APortHasTheParityOfItsSettings)
{
    const std::pair<const char*, QSerialPort::Parity> parities[] = {{"9600,n,8,1", QSerialPort::NoParity},
                                                                    {"9600,e,8,1", QSerialPort::EvenParity},
                                                                    {"9600,o,8,1", QSerialPort::OddParity},
                                                                    {"9600,m,8,1", QSerialPort::MarkParity},
                                                                    {"9600,s,8,1", QSerialPort::SpaceParity}};
    for (const auto& [settings, parity] : parities) {
        test::SimulatedBus bus(kBus);
        const auto opened = openDevice(bus.device(), *parseLineSettings(settings));
        const auto* port = qobject_cast<QSerialPort*>(opened.device.get());
        ASSERT_TRUE(port) << settings << ": " << qPrintable(opened.reason);
        EXPECT_EQ(port->parity(), parity) << settings;
    }
}

TEST(Device, ADeviceServerIsReachedByTcp)
{
    QTcpServer server;
    ASSERT_TRUE(server.listen(QHostAddress::LocalHost));
    const auto opened = openDevice(QStringLiteral("tcp:127.0.0.1:%1").arg(server.serverPort()), {});
    ASSERT_TRUE(opened.device) << qPrintable(opened.reason);
    ASSERT_TRUE(QTest::qWaitFor([&server] { return server.hasPendingConnections(); }, 10'000));
    auto* peer = server.nextPendingConnection();
    peer->write("hello");
    EXPECT_TRUE(QTest::qWaitFor([&opened] { return opened.device->bytesAvailable() == 5; }, 10'000));
    bool gone = false;
    QObject::connect(opened.device.get(), &QIODevice::readChannelFinished, peer, [&gone] { gone = true; });
    peer->disconnectFromHost();
    EXPECT_TRUE(QTest::qWaitFor([&gone] { return gone; }, 10'000));
}

TEST(Device, ADeviceServerThatIsNotThereIsNamed)
{
    QTcpServer server;
    ASSERT_TRUE(server.listen(QHostAddress::LocalHost));
    const auto name = QStringLiteral("tcp:127.0.0.1:%1").arg(server.serverPort());
    server.close();
    const auto opened = openDevice(name, {});
    EXPECT_FALSE(opened.device);
    EXPECT_TRUE(opened.reason.contains(name)) << qPrintable(opened.reason);
}

TEST(Device, ATcpNameWithoutPortIsExplained)
{
    for (const auto* name :
         {"tcp:", "tcp:4001", "tcp:host", "tcp:host:", "tcp::4001", "tcp:host:0", "tcp:host:99999"}) {
        const auto opened = openDevice(name, {});
        EXPECT_FALSE(opened.device) << name;
        EXPECT_TRUE(opened.reason.contains("tcp:host:port")) << name << ": " << qPrintable(opened.reason);
    }
}

TEST(Device, ADeviceServerThatIsSwitchedOffIsNoticed)
{
    QTcpServer server;
    ASSERT_TRUE(server.listen(QHostAddress::LocalHost));
    const auto opened = openDevice(QStringLiteral("tcp:127.0.0.1:%1").arg(server.serverPort()), {});
    ASSERT_TRUE(opened.device) << qPrintable(opened.reason);
    const auto* socket = qobject_cast<QTcpSocket*>(opened.device.get());
    ASSERT_TRUE(socket);
    const auto option = [socket](int level, int name) {
        int value = 0;
        socklen_t size = sizeof value;
        EXPECT_EQ(::getsockopt(static_cast<int>(socket->socketDescriptor()), level, name, &value, &size), 0);
        return value;
    };
    EXPECT_EQ(option(SOL_SOCKET, SO_KEEPALIVE), 1);
    EXPECT_EQ(option(IPPROTO_TCP, TCP_KEEPIDLE) +
                  option(IPPROTO_TCP, TCP_KEEPINTVL) * option(IPPROTO_TCP, TCP_KEEPCNT),
              kSilence.count());
    EXPECT_EQ(option(IPPROTO_TCP, TCP_USER_TIMEOUT), 1000 * kSilence.count());
}

TEST(Device, AServerThatFloodsDoesNotFillTheMemory)
{
    QTcpServer server;
    ASSERT_TRUE(server.listen(QHostAddress::LocalHost));
    const PortList ports({QStringLiteral("tcp:127.0.0.1:%1").arg(server.serverPort())},
                         [] { return std::vector<PortInfo>(); });
    MSComm comm(ports);
    ASSERT_EQ(comm.setPortOpen(true), "");
    ASSERT_TRUE(QTest::qWaitFor([&server] { return server.hasPendingConnections(); }, 10'000));
    auto* peer = server.nextPendingConnection();
    constexpr int kFlood = 4'000'000;
    peer->write(QByteArray(kFlood, 'x'));
    std::uint64_t lost = 0;
    EXPECT_TRUE(QTest::qWaitFor(
        [&] {
            lost += comm.takeLostCharacters();
            return lost + MSComm::kInputBuffer >= kFlood;
        },
        60'000));
    EXPECT_EQ(comm.Input().size(), MSComm::kInputBuffer);
}

} // namespace
} // namespace quorvel::link
