#include "support/simulated_bus.h"

#include <QJsonDocument>

#include <gtest/gtest.h>

namespace quorvel::test {

namespace {

constexpr int kPatience = 10'000; // ms

/// Windows has no pseudo-terminals.
QStringList place()
{
#ifdef Q_OS_WIN
    return {QStringLiteral("--tcp"), QStringLiteral("127.0.0.1:0")};
#else
    return {};
#endif
}

} // namespace

SimulatedBus::SimulatedBus(const QStringList& arguments)
{
    process_.setProcessChannelMode(QProcess::ForwardedErrorChannel);
    process_.start(QStringLiteral(QUORVEL_BINARIES "/quorvel-sim"), place() + arguments);
    EXPECT_TRUE(process_.waitForStarted(kPatience)) << qPrintable(process_.errorString());
    device_ = QString::fromLocal8Bit(readLine());
    EXPECT_FALSE(device_.isEmpty()) << "quorvel-sim names no device";
}

SimulatedBus::~SimulatedBus()
{
    process_.closeWriteChannel();
    if (!process_.waitForFinished(kPatience)) process_.kill();
}

QByteArray SimulatedBus::readLine()
{
    while (!process_.canReadLine()) {
        if (!process_.waitForReadyRead(kPatience)) break;
    }
    return process_.readLine().trimmed();
}

QJsonObject SimulatedBus::command(const QString& line)
{
    process_.write(line.toUtf8() + '\n');
    const auto answer = readLine();
    const auto object = QJsonDocument::fromJson(answer).object();
    EXPECT_FALSE(object.isEmpty()) << "no answer to \"" << qPrintable(line) << "\": " << answer.constData();
    EXPECT_FALSE(object.contains(QStringLiteral("error"))) << qPrintable(line) << ": " << answer.constData();
    return object;
}

QStringList SimulatedBus::frames()
{
    QStringList texts;
    const auto frames = command(QStringLiteral("frames")).value(QStringLiteral("frames")).toArray();
    for (const auto& frame : frames) {
        texts << frame.toObject().value(QStringLiteral("text")).toString().trimmed();
    }
    return texts;
}

} // namespace quorvel::test
