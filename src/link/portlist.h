#pragma once

#include <QString>
#include <QStringList>

#include <functional>
#include <optional>
#include <vector>

namespace quorvel::link {

/// A serial port as the platform reports it.
struct PortInfo {
    QString device;            ///< device path or COM name
    QString description;       ///< what is plugged in there, may be empty
    std::optional<int> number; ///< the number the platform itself gives it by its name ("COM12": 12), if any
    QString serialNumber = {}; ///< of the adapter; empty where it has none, or the platform does not tell it
};

/// Sorts by device, numbers at the end by their value: ttyUSB2 before ttyUSB10.
void sortPorts(std::vector<PortInfo>& ports);

/// The machine's serial ports that have hardware behind them, in a stable order.
/// One source file per platform.
std::vector<PortInfo> enumeratePorts();

/// One line of the port list.
struct PortEntry {
    int number = 0; ///< what `CommPort` is set to, from 1 on; 0 where the platform's name has no number
    QString device;
    QString text; ///< "COM<n> <device> <description>"; without "COM<n>" where the platform gives the number
    QString serialNumber; ///< of the adapter; empty where it is not known
};

/// The list behind `Combo1`: devices handed in by the command line first, then what the platform
/// enumerates, then what the operator added.
class PortList {
public:
    using Enumerator = std::function<std::vector<PortInfo>()>;

    explicit PortList(QStringList handedIn, Enumerator enumerate = enumeratePorts);

    /// Enumerates again; the devices handed in and added stay.
    void refresh();
    /// Appends a device path or "tcp:host:port"; one that is listed already is not listed twice.
    /// @return its place in entries().
    int add(const QString& device);

    const std::vector<PortEntry>& entries() const { return entries_; }
    /// The device of a port number; empty when the list has no such number.
    QString deviceOf(int number) const;
    /// The place of a device in entries(), -1 when it is not listed.
    int indexOf(const QString& device) const;

private:
    void number(const std::vector<PortInfo>& ports);

    QStringList handedIn_;
    QStringList added_;
    Enumerator enumerate_;
    std::vector<PortEntry> entries_;
};

} // namespace quorvel::link
