// A download of the stored ring in the real window, from a simulated readout at 9600 baud, against its floor.
//
//   floor_ratio  time over the sum of the prescribed pauses and of the replies' characters on the wire at 10 bits
//                each (aim: at most 1.05)
//   cpu_share    processor time of the program over real time (aim: at most 0.05)
//   sync_ms      what bringing one row to the disk of the temporary folder takes here, which is part of it

#include "autoread/setauto.h"
#include "link/clock.h"
#include "protocol/ring.h"
#include "support/simulated_bus.h"
#include "support/test_messages.h"

#include <QApplication>
#include <QDir>
#include <QPushButton>
#include <QTemporaryDir>

#include <benchmark/benchmark.h>

#include <chrono>
#include <ctime>

namespace quorvel {
namespace {

using Clock = std::chrono::steady_clock;

constexpr double kCharacter = 10.0 / 9600; // s

double secondsSince(Clock::time_point start)
{
    return std::chrono::duration<double>(Clock::now() - start).count();
}

double processorSeconds() { return static_cast<double>(std::clock()) / CLOCKS_PER_SEC; }

double floorOf(const link::Transaction& transaction)
{
    return 0.03 + static_cast<double>(transaction.frame.size()) * 0.005 +
           transaction.reply.count * kCharacter;
}

/// Seconds that one durable row takes in a file of its own.
double syncSeconds(const std::filesystem::path& path)
{
    constexpr int kRows = 50;
    auto sink = autoread::createRecordFile(path, protocol::kTwoDirections, autoread::Existing::Keep);
    const auto start = Clock::now();
    for (int i = 0; i < kRows; ++i) {
        if (!sink->sink->append({*jet::Date::of({2024, 1, 1, 0, i, 0}), {}})) return -1;
    }
    return secondsSince(start) / kRows;
}

/// The window, open on a paced bus whose readout 5 has a wrapped ring of so many slots.
struct Station {
    explicit Station(int slots)
        : bus({"--seed", "1", "--readout", "5:A", "--ring",
               QStringLiteral("5:%1,%2,%3").arg(slots).arg(slots - 2).arg(2)}),
          ports({bus.device()}, [] { return std::vector<link::PortInfo>(); })
    {
        bench.currentAddress = "5";
        comm.setPortOpen(true);
    }

    test::SimulatedBus bus;
    link::PortList ports;
    link::MSComm comm{ports};
    link::SystemClock clock;
    link::Module1 module1{comm, clock};
    link::Bench bench;
    link::Gate gate;
    test::TestMessages messages;
    QTemporaryDir folder;
};

void download(benchmark::State& state)
{
    const auto slots = static_cast<int>(state.range(0));
    Station station(slots);
    autoread::Book book;
    SetAuto window({station.bench, station.module1, station.gate, station.messages}, book);
    window.show();
    const std::filesystem::path folder = station.folder.path().toStdString();
    state.counters["sync_ms"] = syncSeconds(folder / "sync.mdb") * 1000;
    const double processor = processorSeconds();
    const auto start = Clock::now();
    for (auto _ : state) {
        station.messages.files.push_back(station.folder.filePath("a.mdb"));
        window.findChild<QPushButton*>("Command2")->click();
    }
    const double passed = secondsSince(start);
    const double floor = floorOf(protocol::pointersQuery("05")) +
                         slots * floorOf(protocol::recordFetch("05", 0, protocol::kTwoDirections));
    state.counters["floor_ratio"] = passed / floor;
    state.counters["cpu_share"] = (processorSeconds() - processor) / passed;
    if (!station.messages.shown.isEmpty()) state.SkipWithError(qPrintable(station.messages.last()));
}
BENCHMARK(download)->Arg(100)->Arg(1000)->Iterations(1)->Unit(benchmark::kSecond)->UseRealTime();

} // namespace
} // namespace quorvel

int main(int argc, char* argv[])
{
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM")) qputenv("QT_QPA_PLATFORM", "offscreen");
    const QApplication application(argc, argv);
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}
