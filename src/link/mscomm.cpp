#include "link/mscomm.h"

#include "link/serialport.h"

#include <algorithm>

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
    input_.clear();
    lostCharacters_ = 0;
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
    // What comes while the program is kept from gathering it must not pile up in the device either.
    limitBuffer(*device_, kInputBuffer);
    connect(device_.get(), &QIODevice::readyRead, this, &MSComm::gather);
    connect(device_.get(), &QIODevice::readyRead, this, &MSComm::arrived);
    connect(device_.get(), &QIODevice::readChannelFinished, this, &MSComm::drop);
    return {};
}

void MSComm::drop()
{
    if (!device_) return;
    device_->disconnect(this);
    const auto reason = goneText(name_, device_->errorString());
    lostReason_ = reason;
    gather();
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
    // Unflushed, the characters would leave with the next turn of the event loop and blur the pacing. The device may have
    // vanished with the writing.
    if (device_) sendNow(*device_);
}

std::string MSComm::Input()
{
    const int waiting = InBufferCount();
    const int wanted = inputLength_ > 0 ? std::min(inputLength_, waiting) : waiting;
    const auto end = input_.begin() + wanted;
    std::string characters(input_.begin(), end);
    input_.erase(input_.begin(), end);
    return characters;
}

int MSComm::InBufferCount()
{
    gather();
    return static_cast<int>(input_.size());
}

void MSComm::gather()
{
    while (device_ && device_->bytesAvailable() > 0) {
        char characters[4096];
        const auto count = device_->read(characters, sizeof characters);
        if (count <= 0) return;
        const auto came = static_cast<std::size_t>(count);
        const auto kept = std::min(came, kInputBuffer - input_.size());
        input_.insert(input_.end(), characters, characters + kept);
        lostCharacters_ += came - kept;
    }
}

void MSComm::fetch()
{
    if (device_) device_->waitForReadyRead(0);
}

} // namespace quorvel::link
