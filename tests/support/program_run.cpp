#include "support/program_run.h"

namespace quorvel::test {

QString programPath(const QString& name) { return QStringLiteral(QUORVEL_BINARIES "/") + name; }

ProgramRun runProgram(const QString& name, const QStringList& arguments, int seconds)
{
    QProcess process;
    process.setStandardInputFile(QProcess::nullDevice());
    process.start(programPath(name), arguments);
    ProgramRun run;
    if (process.waitForFinished(seconds * 1000) && process.exitStatus() == QProcess::NormalExit) {
        run.status = process.exitCode();
    }
    run.out = QString::fromUtf8(process.readAllStandardOutput());
    run.err = QString::fromUtf8(process.readAllStandardError());
    return run;
}

} // namespace quorvel::test
