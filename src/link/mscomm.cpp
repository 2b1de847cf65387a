#include "link/mscomm.h"

#include <QAbstractSocket>
#include <QSerialPort>

#include <algorithm>
#include <limits>

namespace quorvel::link {

MSComm::MSComm(const PortList& ports, Opener opener, QObject* parent)
    : QObject(parent), ports_(ports), opener_(std::move(opener))
{}

MSComm::~MSComm()
{
    if (device_) device_->disconnect(this);
}

QString MSComm::setPortOpen(bool open)
{
    lostReason_.clear();
    left_.clear();
    if (device_) {
        device_->disconnect(this);
        device_->close();
        device_.reset();
    }
    if (!open) return {};
    const auto name = ports_.deviceOf(commPort_);
    if (name.isEmpty()) return tr("No port is chosen. Add one from the context menu of the port list.");
    auto line = parseLineSettings(settings_);
    if (!line) return tr("\"%1\" is not a valid line setting.").arg(QString::fromStdString(settings_));
    line->rts = rts_;
    line->dtr = dtr_;
    auto opened = opener_(name, *line);
    if (!opened.device) return opened.reason;
    device_ = std::move(opened.device);
    name_ = name;
    connect(device_.get(), &QIODevice::readyRead, this, &MSComm::arrived);
    connect(device_.get(), &QIODevice::readChannelFinished, this, &MSComm::drop);
    return {};
}

void MSComm::drop()
{
    if (!device_) return;
    device_->disconnect(this);
    const auto reason = tr("%1 is gone (%2). Check the adapter and the cable, then press OpenComm again.")
                            .arg(name_, device_->errorString());
    lostReason_ = reason;
    left_ = device_->readAll().toStdString();
    // The device is in the middle of telling us; it may go only afterwards.
    auto* gone = device_.release();
    gone->close();
    gone->deleteLater();
    Q_EMIT lost(reason);
}

void MSComm::Output(std::string_view characters)
{
    if (!device_) return;
    device_->write(characters.data(), static_cast<qint64>(characters.size()));
    // Unflushed, the characters would leave with the next turn of the event loop and blur the pacing.
    if (auto* serial = qobject_cast<QSerialPort*>(device_.get())) {
        serial->flush();
    } else if (auto* socket = qobject_cast<QAbstractSocket*>(device_.get())) {
        socket->flush();
    }
}

std::string MSComm::Input()
{
    const int waiting = InBufferCount();
    const int wanted = inputLength_ > 0 ? std::min(inputLength_, waiting) : waiting;
    if (!device_) {
        auto characters = left_.substr(0, static_cast<std::size_t>(wanted));
        left_.erase(0, characters.size());
        return characters;
    }
    std::string characters(static_cast<std::size_t>(wanted), '\0');
    const auto taken = device_->read(characters.data(), wanted);
    characters.resize(static_cast<std::size_t>(std::max<qint64>(taken, 0)));
    return characters;
}

int MSComm::InBufferCount() const
{
    const auto waiting = device_ ? device_->bytesAvailable() : static_cast<qint64>(left_.size());
    return static_cast<int>(std::min<qint64>(waiting, std::numeric_limits<int>::max()));
}

void MSComm::fetch()
{
    if (device_) device_->waitForReadyRead(0);
}

} // namespace quorvel::link
