#include "support/bench_on_the_bus.h"

#include <QApplication>
#include <QTest>

namespace quorvel::test {

namespace {
constexpr int kLonger = 10'000; // ms, than that moment
}

BenchOnTheBus::BenchOnTheBus(const QStringList& arguments)
    : bus(arguments), ports({bus.device()}, [] { return std::vector<link::PortInfo>(); }), mscomm1(ports),
      module1(mscomm1, clock), filter(gate)
{
    qApp->installEventFilter(&filter);
    bench.programFolder = folder.path().toStdString();
    bench.helpText = bench.programFolder / "readme.txt";
    bench.currentAddress = QStringLiteral("5");
    // A client that its terminal was taken from lets go of the name a moment after the system gives it to the next one.
    QString reason;
    const auto opens = [this, &reason] { return (reason = mscomm1.setPortOpen(true)).isEmpty(); };
    EXPECT_TRUE(QTest::qWaitFor(opens, kLonger)) << qPrintable(reason);
}

} // namespace quorvel::test
