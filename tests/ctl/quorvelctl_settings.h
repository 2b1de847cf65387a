#pragma once

#include "support/program_run.h"
#include "support/simulated_bus.h"

#include <QFile>
#include <QJsonDocument>
#include <QTemporaryDir>

#include <gtest/gtest.h>

namespace quorvel::test {

/// `quorvelctl` before a simulated bus with readouts 5 (type A), 12 (type B) and 33 (type C).
class QuorvelctlSettings : public ::testing::Test {
protected:
    ProgramRun run(const QStringList& arguments)
    {
        return runProgram("quorvelctl", QStringList({"--port", bus.device()}) + arguments);
    }
    /// On the readout of type C.
    ProgramRun runC(const QStringList& arguments)
    {
        return run(QStringList({"--address", "33", "--type", "C"}) + arguments);
    }
    QJsonObject state(const QString& part) { return bus.state(33).value(part).toObject(); }
    QString path(const QString& name) const { return folder.filePath(name); }
    QJsonObject saved(const QString& name)
    {
        QFile file(path(name));
        EXPECT_TRUE(file.open(QIODevice::ReadOnly)) << qPrintable(name);
        return QJsonDocument::fromJson(file.readAll()).object();
    }
    void write(const QString& name, const QByteArray& text)
    {
        QFile file(path(name));
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        file.write(text);
    }

    QTemporaryDir folder;
    SimulatedBus bus{{"--fast", "--seed", "1", "--readout", "5:A", "--readout", "12:B", "--readout", "33:C"}};
};

} // namespace quorvel::test
