#pragma once

#include <QProcess>
#include <QStringList>

namespace quorvel::test {

/// What one run of one of our programs gave.
struct ProgramRun {
    int status = -1; ///< exit status; -1 when it crashed or did not end within the time allowed
    QString out;
    QString err;
    QStringList lines() const { return out.split(u'\n', Qt::SkipEmptyParts); }
};

/// Where the build has put a program of ours.
QString programPath(const QString& name);

/// Runs a program of the build to its end.
/// @param name     the program's name, "quorvelctl" for example.
/// @param seconds  time allowed.
ProgramRun runProgram(const QString& name, const QStringList& arguments, int seconds = 60);

} // namespace quorvel::test
