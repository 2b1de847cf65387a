#include "app/close_request.h"
#include "app/demo_bus.h"
#include "app/edition.h"
#include "app/openers.h"
#include "app/options.h"
#include "app/parents_console.h"
#include "app/program.h"
#include "link/program_folder.h"

#include <QApplication>
#include <QFileInfo>

#include <cstdio>

namespace quorvel {

namespace {

int wrongUsage(const QString& what)
{
    std::fprintf(stderr, "%s\nRun with --help for more information.\n", qPrintable(what));
    return kWrongUsage;
}

} // namespace

int runProgram(int argc, char* argv[])
{
    useParentsConsole();
    Options options;
    int status = 0;
    if (!readOptions(argc, argv, options, status)) return status;

    std::vector<char*> qtArguments{argv[0]};
    for (auto& argument : options.rest) {
        qtArguments.push_back(argument.data());
    }
    int count = static_cast<int>(qtArguments.size());
    qtArguments.push_back(nullptr);
    QApplication application(count, qtArguments.data());
    if (count > 1) return wrongUsage(QStringLiteral("Unknown argument: %1").arg(qtArguments[1]));
    QApplication::setApplicationName(link::kProgramName);

    DemoBus demo;
    QString trouble;
    if (options.demo) {
        trouble = demo.start();
        if (trouble.isEmpty()) options.ports.prepend(demo.device());
    }
    const auto own = link::executableFolder();
    Program program(options.ports, link::programFolder(options.folder, own),
                    link::helpText(options.folder, own), QString::fromLatin1(kEdition));
    openAutoread(program);
    openSettings(program);
    openCalibration(program);
    openGrayscale(program);
    program.module1.setReadOnly(options.readOnly);
    if (options.journal) program.keepJournal(QFileInfo(QString::fromLocal8Bit(argv[0])).fileName());
    addTools(program);
    if (!options.trace.empty() && trouble.isEmpty())
        trouble = program.trace.open(QString::fromLocal8Bit(options.trace.c_str()));
    if (!trouble.isEmpty()) program.form1.showStatus(trouble);
    program.form1.show();
    const CloseRequest closing(program.gate, program.form1);
    return QApplication::exec();
}

} // namespace quorvel
