#include "support/bench_on_the_bus.h"

#include <QApplication>

namespace quorvel::test {

BenchOnTheBus::BenchOnTheBus(const QStringList& arguments)
    : bus(arguments), ports({bus.device()}, [] { return std::vector<link::PortInfo>(); }), mscomm1(ports),
      module1(mscomm1, clock), filter(gate)
{
    qApp->installEventFilter(&filter);
    bench.programFolder = folder.path().toStdString();
    bench.helpText = bench.programFolder / "readme.txt";
    bench.currentAddress = QStringLiteral("5");
    const auto reason = mscomm1.setPortOpen(true);
    EXPECT_TRUE(reason.isEmpty()) << qPrintable(reason);
}

} // namespace quorvel::test
