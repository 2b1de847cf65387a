#include "link/device.h"

#include "text/number.h"

#include <QEventLoop>
#include <QTcpSocket>
#include <QTimer>

#include <algorithm>
#include <array>
#include <cctype>
#include <chrono>

namespace quorvel::link {

namespace {

constexpr std::string_view kTcpPrefix = "tcp:";
constexpr auto kConnectTimeout = std::chrono::seconds(5);

// What serial ports can do.
constexpr double kLowestBaud = 50;
constexpr double kHighestBaud = 4'000'000;

/// The texts between the commas, as many as "9600,n,8,1" has; nothing when there are more or fewer.
std::optional<std::array<std::string_view, 4>> fourFields(std::string_view text)
{
    std::array<std::string_view, 4> fields;
    for (std::size_t i = 0; i < fields.size(); ++i) {
        const auto comma = text.find(',');
        const bool last = i + 1 == fields.size();
        if ((comma == std::string_view::npos) != last) return std::nullopt;
        fields[i] = text.substr(0, comma);
        if (!last) text.remove_prefix(comma + 1);
    }
    return fields;
}

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

std::optional<LineSettings> parseLineSettings(std::string_view text)
{
    const auto fields = fourFields(text);
    if (!fields) return std::nullopt;
    const auto& [baud, parity, dataBits, stopBits] = *fields;
    LineSettings line;
    line.baud = static_cast<int>(std::min(text::Val(baud), kHighestBaud + 1));
    line.parity =
        parity.size() == 1 ? static_cast<char>(std::tolower(static_cast<unsigned char>(parity[0]))) : '?';
    line.dataBits = text::integerOf(dataBits);
    line.stopBits = text::integerOf(stopBits);
    const bool valid = text::allDigits(baud) && line.baud >= kLowestBaud && line.baud <= kHighestBaud &&
                       std::string_view("neoms").find(line.parity) != std::string_view::npos &&
                       line.dataBits >= 5 && line.dataBits <= 8 && line.stopBits >= 1 && line.stopBits <= 2;
    return valid ? std::optional(line) : std::nullopt;
}

OpenedDevice openDevice(const QString& name, const LineSettings& line)
{
    return isTcp(name) ? openTcp(name) : openSerialPort(name, line);
}

QString deviceNameError(const QString& name)
{
    if (!isTcp(name) || endpointOf(name)) return {};
    return QStringLiteral("%1 is not a device server's address. Write it as tcp:host:port, for example "
                          "tcp:192.168.0.7:4001.")
        .arg(name);
}

} // namespace quorvel::link
