#include "link/device.h"

#include <QEventLoop>
#include <QTcpSocket>
#include <QTimer>

#include <algorithm>
#include <chrono>

namespace quorvel::link {

namespace {

constexpr std::string_view kTcpPrefix = "tcp:";
constexpr auto kConnectTimeout = std::chrono::seconds(5);

/// Waits for the connection. Events run meanwhile, input too: kept back it would reach the windows afterwards.
bool waitUntilConnected(QTcpSocket& socket)
{
    QEventLoop loop;
    QObject::connect(&socket, &QTcpSocket::stateChanged, &loop, [&loop](QAbstractSocket::SocketState state) {
        if (state == QAbstractSocket::ConnectedState || state == QAbstractSocket::UnconnectedState)
            loop.quit();
    });
    QTimer::singleShot(kConnectTimeout, &loop, &QEventLoop::quit);
    const auto state = socket.state();
    if (state != QAbstractSocket::ConnectedState && state != QAbstractSocket::UnconnectedState) {
        loop.exec();
    }
    return socket.state() == QAbstractSocket::ConnectedState;
}

bool isTcp(const QString& name) { return name.startsWith(QLatin1String(kTcpPrefix.data())); }

/// A device server.
struct Endpoint {
    QString host;
    quint16 port = 0;
};

/// Reads "tcp:host:port"; nothing when the name has another form.
std::optional<Endpoint> endpointOf(const QString& name)
{
    const auto address = name.mid(static_cast<qsizetype>(kTcpPrefix.size()));
    const auto colon = address.lastIndexOf(u':');
    auto host = address.left(std::max<qsizetype>(colon, 0));
    if (host.startsWith(u'[') && host.endsWith(u']')) host = host.mid(1, host.size() - 2);
    bool isNumber = false;
    const auto port = address.mid(colon + 1).toUShort(&isNumber);
    return host.isEmpty() || !isNumber || port == 0 ? std::nullopt : std::optional(Endpoint{host, port});
}

OpenedDevice openTcp(const QString& name)
{
    const auto endpoint = endpointOf(name);
    if (!endpoint) return {nullptr, deviceNameError(name)};
    auto socket = std::make_unique<QTcpSocket>();
    socket->setSocketOption(QAbstractSocket::LowDelayOption, 1);
    socket->connectToHost(endpoint->host, endpoint->port);
    if (!waitUntilConnected(*socket)) {
        const auto why = socket->error() == QAbstractSocket::UnknownSocketError
                             ? QStringLiteral("it did not answer within 5 s")
                             : socket->errorString();
        return {nullptr, QStringLiteral("%1 cannot be reached: %2. Check the device server and the network.")
                             .arg(name, why)};
    }
    // Frames go out one character at a time; they must not be gathered.
    socket->setSocketOption(QAbstractSocket::LowDelayOption, 1);
    // Nothing says that a device server was switched off, or its cable pulled.
    socket->setSocketOption(QAbstractSocket::KeepAliveOption, 1);
    watchConnection(socket->socketDescriptor());
    return {std::move(socket), {}};
}

} // namespace

OpenedDevice openDevice(const QString& name, const LineSettings& line)
{
    return isTcp(name) ? openTcp(name) : openSerialPort(name, line);
}

void limitBuffer(QIODevice& device, qint64 most)
{
    if (auto* socket = qobject_cast<QAbstractSocket*>(&device)) {
        socket->setReadBufferSize(most);
    } else {
        limitSerialBuffer(device, most);
    }
}

void sendNow(QIODevice& device)
{
    if (auto* socket = qobject_cast<QAbstractSocket*>(&device)) {
        socket->flush();
    } else {
        sendSerialNow(device);
    }
}

QString deviceNameError(const QString& name)
{
    if (!isTcp(name) || endpointOf(name)) return {};
    return QStringLiteral("%1 is not a device server's address. Write it as tcp:host:port, for example "
                          "tcp:192.168.0.7:4001.")
        .arg(name);
}

} // namespace quorvel::link
