#include "link/comport_windows.h"
#include "link/device.h"
#include "link/serialport.h"

#include <QWinEventNotifier>

#include <algorithm>
#include <chrono>
#include <cstring>
#include <memory>
#include <string>
#include <utility>

#include <winsock2.h>

// mstcpip.h needs the types of winsock2.h
#include <mstcpip.h>

namespace quorvel::link {

namespace {

/// What Windows says of an error, without the full stop behind it.
QString wordsOf(DWORD error)
{
    auto words = qt_error_string(static_cast<int>(error)).trimmed();
    while (words.endsWith(u'.') || words.endsWith(u'\u3002')) {
        words.chop(1);
    }
    return words;
}

QString reasonFor(const ComPort& port, const QString& name)
{
    switch (port.trouble()) {
    case ComPort::Trouble::Missing:
        return missingText(name);
    case ComPort::Trouble::InUse:
        return inUseText(name);
    case ComPort::Trouble::Refused:
        return QStringLiteral(
                   "%1 is used by another program, or you may not use it. Close that program%2, or ask the "
                   "administrator of this PC.")
            .arg(name, thenAgain(" and "));
    case ComPort::Trouble::NotAllowed:
        return QStringLiteral("You may not use %1. Ask the administrator of this PC to allow it%2.")
            .arg(name, thenAgain(", then "));
    default:
        return unusableText(name, wordsOf(port.error()));
    }
}

/// A serial port as a device: characters come and the loss is announced as events of the one thread.
class ComDevice final : public QIODevice {
public:
    explicit ComDevice(std::unique_ptr<ComPort> port)
        : port_(std::move(port)), arrived_(port_->arrived()), sent_(port_->sent())
    {
        connect(&arrived_, &QWinEventNotifier::activated, this, [this] { take(); });
        connect(&sent_, &QWinEventNotifier::activated, this, [this] {
            if (port_) port_->sendOn();
            announceLoss();
        });
        open(ReadWrite | Unbuffered);
    }
    ~ComDevice() override { ComDevice::close(); }
    ComDevice(const ComDevice&) = delete;
    ComDevice& operator=(const ComDevice&) = delete;

    bool isSequential() const override { return true; }
    qint64 bytesAvailable() const override
    {
        return static_cast<qint64>(input_.size()) + QIODevice::bytesAvailable();
    }

    void close() override
    {
        stopWatching();
        port_.reset();
        input_.clear();
        if (isOpen()) QIODevice::close();
    }

    bool waitForReadyRead(int patience) override
    {
        if (!port_) return false;
        const DWORD atMost = patience < 0 ? INFINITE : static_cast<DWORD>(patience);
        if (::WaitForSingleObject(port_->arrived(), atMost) != WAIT_OBJECT_0) return false;
        const auto before = input_.size();
        take();
        return input_.size() > before;
    }

protected:
    qint64 readData(char* data, qint64 most) override
    {
        const auto count = std::min(input_.size(), static_cast<std::size_t>(std::max<qint64>(most, 0)));
        std::memcpy(data, input_.data(), count);
        input_.erase(0, count);
        return static_cast<qint64>(count);
    }

    qint64 writeData(const char* data, qint64 size) override
    {
        const bool taken = port_ && port_->send({data, static_cast<std::size_t>(size)});
        announceLoss();
        return taken ? size : -1;
    }

private:
    void take()
    {
        if (!port_) return;
        const auto come = port_->receive();
        input_ += come;
        if (!come.empty()) Q_EMIT readyRead();
        announceLoss();
    }

    void announceLoss()
    {
        if (!port_ || port_->error() == ERROR_SUCCESS || std::exchange(announced_, true)) return;
        stopWatching();
        setErrorString(wordsOf(port_->error()));
        Q_EMIT readChannelFinished();
    }

    void stopWatching()
    {
        arrived_.setEnabled(false);
        sent_.setEnabled(false);
    }

    std::unique_ptr<ComPort> port_;
    QWinEventNotifier arrived_, sent_;
    std::string input_;
    bool announced_ = false;
};

// The first sign of life is asked for after kFirst; Windows asks ten times before it gives up.
constexpr auto kFirst = std::chrono::milliseconds(10'000);
constexpr int kAttempts = 10;
constexpr auto kNext = (std::chrono::milliseconds(kSilence) - kFirst) / kAttempts;

constexpr int kGiveUpAfter = 5; // kGiveUpAfter, which the headers lack

} // namespace

OpenedDevice openSerialPort(const QString& name, const LineSettings& line)
{
    auto port = std::make_unique<ComPort>(name.toStdWString(), line);
    if (!port->isOpen()) return {nullptr, reasonFor(*port, name)};
    return {std::make_unique<ComDevice>(std::move(port)), {}};
}

// The driver's buffer has a limit, and what it gives is announced at once.
void limitSerialBuffer(QIODevice& /*device*/, qint64 /*most*/) {}

// Written characters leave at once.
void sendSerialNow(QIODevice& /*device*/) {}

void watchConnection(qintptr socket)
{
    tcp_keepalive signs{1, static_cast<ULONG>(kFirst.count()), static_cast<ULONG>(kNext.count())};
    DWORD ignored = 0;
    ::WSAIoctl(static_cast<SOCKET>(socket), SIO_KEEPALIVE_VALS, &signs, sizeof signs, nullptr, 0, &ignored,
               nullptr, nullptr);
    // While something is under way no sign of life is asked for; unconfirmed it is repeated for so long.
    const DWORD unconfirmed = static_cast<DWORD>(kSilence.count()); // s
    ::setsockopt(static_cast<SOCKET>(socket), IPPROTO_TCP, kGiveUpAfter,
                 reinterpret_cast<const char*>(&unconfirmed), sizeof unconfirmed);
}

} // namespace quorvel::link
