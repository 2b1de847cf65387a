#include "app/program.h"

#include <QApplication>

namespace quorvel {

Program::Program(const QStringList& portNames, const std::filesystem::path& folder,
                 const std::filesystem::path& help, const QString& edition, const StandIns& standIns)
    : ports(portNames), mscomm1(ports), module1(mscomm1, standIns.clock ? *standIns.clock : clock),
      filter(gate),
      messages(gate), workplace{bench, module1, gate, standIns.messages ? *standIns.messages : messages},
      form1(benchOf(folder, help, edition), ports)
{
    qApp->installEventFilter(&filter);
    module1.addObserver(trace);
    module1.addObserver(health);
}

Program::~Program()
{
    for (auto* observer : std::initializer_list<link::ExchangeObserver*>{&traffic, &trace, &health})
        module1.removeObserver(*observer);
    if (journal) module1.removeObserver(*journal);
}

void Program::keepJournal(const QString& program)
{
    journal = std::make_unique<line::Journal>(
        line::journalFile(),
        line::JournalWriter{program, line::userName(), [this] { return mscomm1.deviceName(); }});
    module1.addObserver(*journal);
    QObject::connect(journal.get(), &line::Journal::failed, &form1, &Form1::showStatus);
}

/// Fills the bench before the main window looks at it.
const Workplace& Program::benchOf(const std::filesystem::path& folder, const std::filesystem::path& help,
                                  const QString& edition)
{
    bench.edition = edition;
    bench.programFolder = folder;
    bench.helpText = help;
    return workplace;
}

} // namespace quorvel
