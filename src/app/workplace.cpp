#include "app/workplace.h"

#include <QApplication>

namespace quorvel {

namespace {

link::Bench benchOf(const std::filesystem::path& folder, const QString& edition)
{
    link::Bench bench;
    bench.edition = edition;
    bench.programFolder = folder;
    return bench;
}

} // namespace

Workplace::Workplace(const QStringList& portNames, const std::filesystem::path& folder,
                     const QString& edition)
    : bench(benchOf(folder, edition)), ports(portNames), mscomm1(ports), module1(mscomm1, clock),
      filter(gate), messages(gate), form1(bench, ports, module1, gate, messages)
{
    qApp->installEventFilter(&filter);
}

} // namespace quorvel
