#include "site/portkeeper.h"

#include <algorithm>

namespace quorvel::site {

namespace {

constexpr int kFirstPause = 1; // s

} // namespace

PortKeeper::PortKeeper(link::Module1& module1, link::PortList& ports, QString device, Tell tell)
    : module1_(module1), ports_(ports), device_(std::move(device)), tell_(std::move(tell))
{}

/// Where the port is now; null when it is not there.
const link::PortEntry* PortKeeper::entry()
{
    if (!device_.isEmpty()) ports_.add(device_);
    ports_.refresh();
    const auto& all = ports_.entries();
    if (!serialNumber_.isEmpty()) {
        const auto same = std::find_if(all.begin(), all.end(), [this](const link::PortEntry& entry) {
            return entry.serialNumber == serialNumber_;
        });
        if (same != all.end()) return &*same;
    }
    const int at = device_.isEmpty() ? 0 : ports_.indexOf(device_);
    if (at < 0 || all.empty()) return nullptr;
    const auto& named = all[static_cast<std::size_t>(at)];
    const bool another = !serialNumber_.isEmpty() && !named.serialNumber.isEmpty();
    return another ? nullptr : &named;
}

QString PortKeeper::open()
{
    tried_ = module1_.clock().now();
    const auto* where = entry();
    if (!where) {
        return serialNumber_.isEmpty()
                   ? QStringLiteral(
                         "There is no serial port. Plug the adapter in, or name a device with --port.")
                   : QStringLiteral("The adapter with the serial number %1 is not there. Plug it in.")
                         .arg(serialNumber_);
    }
    const auto serialNumber = where->serialNumber;
    module1_.port().setCommPort(where->number);
    auto reason = module1_.port().setPortOpen(true);
    if (!reason.isEmpty()) return reason;
    serialNumber_ = serialNumber;
    pause_ = 0;
    told_ = false;
    return {};
}

bool PortKeeper::pauseIsOver()
{
    const auto passed = tried_.isValid() ? tried_.secsTo(module1_.clock().now()) : pause_;
    return passed >= pause_ || passed < 0; // the machine's clock was set back
}

void PortKeeper::keepOpen()
{
    if (isOpen() || !pauseIsOver()) return;
    const auto reason = open();
    if (reason.isEmpty()) return tell_(QStringLiteral("%1 is open again.").arg(module1_.port().deviceName()));
    pause_ = pause_ == 0 ? kFirstPause : std::min(2 * pause_, kLongestPause);
    if (!told_) tell_(reason + QStringLiteral(" It is tried again, at the latest every minute."));
    told_ = true;
}

void PortKeeper::change(const QString& device)
{
    if (device == device_) return;
    device_ = device;
    serialNumber_.clear();
    pause_ = 0;
    tried_ = {};
    told_ = false;
    if (isOpen()) module1_.port().setPortOpen(false);
}

} // namespace quorvel::site
