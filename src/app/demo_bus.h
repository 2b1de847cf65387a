#pragma once

#include <QProcess>
#include <QString>
#include <QStringList>

namespace quorvel {

/// The options that have `quorvel-sim` offer its bus in the way that this system has: a pseudo-terminal, which needs
/// none, or where there are no pseudo-terminals a free TCP port of this machine.
QStringList busPlace();

/// A simulated bus in a process of its own; it ends with this object.
class DemoBus {
public:
    DemoBus() = default;
    ~DemoBus();
    DemoBus(const DemoBus&) = delete;
    DemoBus& operator=(const DemoBus&) = delete;

    /// Starts the `quorvel-sim` beside this program, and waits up to 5 s for its device.
    /// @return empty on success, otherwise the reason in words.
    QString start();
    /// The device that the bus hangs on.
    QString device() const { return device_; }

private:
    QProcess process_;
    QString device_;
};

} // namespace quorvel
