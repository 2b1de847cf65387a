#pragma once

#include "support/program_run.h"

#include <QDeadlineTimer>
#include <QProcess>
#include <QProcessEnvironment>

#include <gtest/gtest.h>

namespace quorvel::test {

/// A real window program without a display, in which somebody works (hands.cpp).
class WorkedProgram {
public:
    /// @param folder  for all that it keeps of a user's.
    WorkedProgram(const QString& program, const QString& device, const QString& folder)
    {
        auto environment = QProcessEnvironment::systemEnvironment();
        environment.insert("QT_QPA_PLATFORM", "offscreen");
        environment.insert("LD_PRELOAD", QUORVEL_HANDS);
        environment.insert("XDG_DATA_HOME", folder);
        // the hands come before the sanitizer's library, and stay until the program has ended
        environment.insert("ASAN_OPTIONS", "verify_asan_link_order=0:detect_leaks=0");
        process_.setProcessEnvironment(environment);
        process_.start(programPath(program), {"--port", device, "--folder", folder});
        EXPECT_TRUE(process_.waitForStarted()) << qPrintable(process_.errorString());
    }
    ~WorkedProgram()
    {
        process_.kill();
        process_.waitForFinished();
    }
    WorkedProgram(const WorkedProgram&) = delete;
    WorkedProgram& operator=(const WorkedProgram&) = delete;

    /// Opens the port and names the readout.
    void openPort(int address) { work({"click Command1", QStringLiteral("type TestNo %1").arg(address)}); }
    /// Begins to download the stored records, as soon as the window has asked for the interval.
    void download(const QString& file)
    {
        work({"trigger AutomaticReading"});
        // the main window has a button of that name, too
        EXPECT_TRUE(shows("Label1: Interval")) << qPrintable(shown());
        work({"insist Command2", "choose " + file});
        EXPECT_TRUE(shows("did choose")) << qPrintable(shown());
    }
    /// Has these things done, one after the other.
    void work(const QStringList& lines)
    {
        for (const auto& line : lines)
            process_.write(line.toUtf8() + '\n');
        process_.waitForBytesWritten();
    }
    /// All that its labels have shown.
    QString shown()
    {
        process_.waitForReadyRead(0);
        shown_ += process_.readAllStandardOutput();
        return QString::fromUtf8(shown_);
    }
    bool shows(const QString& words, int seconds = 30)
    {
        const QDeadlineTimer patience(seconds * 1000LL);
        while (!shown().contains(words)) {
            if (patience.hasExpired() || process_.state() == QProcess::NotRunning) return false;
            process_.waitForReadyRead(20);
        }
        return true;
    }
    void kill()
    {
        process_.kill();
        EXPECT_TRUE(process_.waitForFinished());
        shown();
    }
    /// Asks it to end.
    void terminate() { process_.terminate(); }
    /// The exit status; -1 when it crashed or goes on.
    int ended(int seconds = 60)
    {
        const bool finished = process_.waitForFinished(seconds * 1000);
        return finished && process_.exitStatus() == QProcess::NormalExit ? process_.exitCode() : -1;
    }
    QString errors() { return QString::fromUtf8(process_.readAllStandardError()); }

private:
    QProcess process_;
    QByteArray shown_;
};

} // namespace quorvel::test
