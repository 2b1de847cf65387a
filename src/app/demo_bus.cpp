#include "app/demo_bus.h"

#include <QCoreApplication>
#include <QDir>

namespace quorvel {

namespace {

constexpr int kStartTimeout = 5000; // ms
constexpr int kEndTimeout = 2000;   // ms

} // namespace

// The simulator ends when its input closes.
DemoBus::~DemoBus()
{
    process_.closeWriteChannel();
    if (process_.state() != QProcess::NotRunning && !process_.waitForFinished(kEndTimeout)) process_.kill();
}

QString DemoBus::start()
{
    const auto program = QDir(QCoreApplication::applicationDirPath()).filePath(QStringLiteral("quorvel-sim"));
    process_.setProcessChannelMode(QProcess::ForwardedErrorChannel);
    process_.start(program, busPlace());
    if (!process_.waitForStarted(kStartTimeout)) {
        return QStringLiteral(
                   "The simulated bus %1 cannot be started: %2. Build or install it beside this program.")
            .arg(program, process_.errorString());
    }
    while (!process_.canReadLine()) {
        if (!process_.waitForReadyRead(kStartTimeout)) {
            return QStringLiteral("The simulated bus %1 names no device.").arg(program);
        }
    }
    device_ = QString::fromLocal8Bit(process_.readLine()).trimmed();
    return {};
}

} // namespace quorvel
