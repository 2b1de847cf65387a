#pragma once

#include <QJsonArray>
#include <QJsonObject>
#include <QProcess>
#include <QStringList>

namespace quorvel::test {

/// A real `quorvel-sim` process, steered through its input. It ends with this object.
class SimulatedBus {
public:
    /// Starts the bus and waits for its device; a failure to start fails the running test.
    explicit SimulatedBus(const QStringList& arguments);
    ~SimulatedBus();
    SimulatedBus(const SimulatedBus&) = delete;
    SimulatedBus& operator=(const SimulatedBus&) = delete;

    /// What `--port` takes to reach this bus.
    QString device() const { return device_; }

    /// Sends one control line and gives the answer line, an object; fails the test when none comes.
    QJsonObject command(const QString& line);
    /// The frames received since the last call, without their line ends.
    QStringList frames();
    /// The state of one readout.
    QJsonObject state(int address) { return command(QStringLiteral("state %1").arg(address)); }
    /// Makes readouts misbehave, as `--fault` does: "silent@2101", "short@22:1" ...
    void fault(const QString& kindAtCommand) { command(QStringLiteral("fault ") + kindAtCommand); }
    void clearFaults() { command(QStringLiteral("faults clear")); }
    /// The adapter is pulled out.
    void unplug() { command(QStringLiteral("unplug")); }

private:
    QByteArray readLine();

    QProcess process_;
    QString device_;
};

} // namespace quorvel::test
