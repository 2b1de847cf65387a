#include "link/portlist.h"

#include <QRegularExpression>

#include <algorithm>
#include <set>
#include <tuple>

namespace quorvel::link {

namespace {

std::tuple<QString, int, QString> sortKey(const PortInfo& port)
{
    static const QRegularExpression number(QStringLiteral("^(.*?)(\\d+)$"));
    const auto match = number.match(port.device);
    return {match.hasMatch() ? match.captured(1) : port.device, match.captured(2).toInt(), port.device};
}

} // namespace

void sortPorts(std::vector<PortInfo>& ports)
{
    std::sort(ports.begin(), ports.end(),
              [](const PortInfo& a, const PortInfo& b) { return sortKey(a) < sortKey(b); });
}

PortList::PortList(QStringList handedIn, Enumerator enumerate)
    : handedIn_(std::move(handedIn)), enumerate_(std::move(enumerate))
{
    refresh();
}

void PortList::refresh()
{
    std::vector<PortInfo> ports;
    const auto append = [&ports](const PortInfo& port) {
        const auto listed = std::find_if(ports.begin(), ports.end(), [&port](const PortInfo& other) {
            return other.device == port.device;
        });
        if (listed == ports.end()) {
            ports.push_back(port);
        } else if (listed->serialNumber.isEmpty()) {
            listed->serialNumber = port.serialNumber;
        }
    };
    for (const auto& device : handedIn_) {
        append({device, {}, {}});
    }
    for (const auto& port : enumerate_()) {
        append(port);
    }
    for (const auto& device : added_) {
        append({device, {}, {}});
    }
    number(ports);
}

int PortList::add(const QString& device)
{
    if (indexOf(device) < 0) {
        added_.append(device);
        refresh();
    }
    return indexOf(device);
}

void PortList::number(const std::vector<PortInfo>& ports)
{
    std::set<int> taken;
    for (const auto& port : ports) {
        if (port.number) taken.insert(*port.number);
    }
    entries_.clear();
    int next = 1;
    for (const auto& port : ports) {
        while (!port.number && taken.count(next) > 0) {
            ++next;
        }
        const int number = port.number.value_or(next);
        taken.insert(number);
        QStringList words{port.device};
        if (!port.number) words.prepend(QStringLiteral("COM%1").arg(number));
        if (!port.description.isEmpty()) words << port.description;
        entries_.push_back({number, port.device, words.join(u' '), port.serialNumber});
    }
}

QString PortList::deviceOf(int number) const
{
    const auto found = std::find_if(entries_.begin(), entries_.end(), [number](const PortEntry& entry) {
        return entry.number == number && entry.number > 0;
    });
    return found == entries_.end() ? QString() : found->device;
}

int PortList::indexOf(const QString& device) const
{
    const auto found = std::find_if(entries_.begin(), entries_.end(),
                                    [&device](const PortEntry& entry) { return entry.device == device; });
    return found == entries_.end() ? -1 : static_cast<int>(found - entries_.begin());
}

} // namespace quorvel::link
