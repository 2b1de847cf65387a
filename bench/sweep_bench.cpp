// How fast a site is swept: 20 readouts of a simulated bus at 9600 baud.
//
//   sweep_ratio  time of a sweep over the sum of its pauses and characters: for each readout 0.03 s, 0.005 s for each of
//                the 11 characters of the frame, and the 29 characters of its answer. The 4 ms that a simulated readout
//                thinks fall into the pause behind the last character
//   of_limit     sweep_ratio over its limit, 1.04: at most 1 is good
//   cpu_share    processor time of this program over real time

#include "link/module1.h"
#include "site/sweep.h"
#include "support/simulated_bus.h"

#include <QCoreApplication>

#include <benchmark/benchmark.h>

#include <ctime>

namespace quorvel {
namespace {

constexpr int kReadouts = 20;
constexpr double kCharacter = 10 / 9600.0;                            // s
constexpr double kReadoutFloor = 0.03 + 11 * 0.005 + 29 * kCharacter; // s
constexpr double kSweepLimit = 1.04;

void sweepASite(benchmark::State& state)
{
    const test::SimulatedBus bus({"--seed", "1", "--readout", QStringLiteral("1-%1:A").arg(kReadouts)});
    link::PortList ports({bus.device()}, [] { return std::vector<link::PortInfo>(); });
    link::MSComm comm(ports);
    if (!comm.setPortOpen(true).isEmpty()) return state.SkipWithError("the port cannot be opened");
    link::SystemClock clock;
    link::Module1 module1(comm, clock);
    std::vector<site::Readout> readouts(kReadouts);
    for (int i = 0; i < kReadouts; ++i)
        readouts[static_cast<std::size_t>(i)].address = i + 1;
    double total = 0;
    const auto processor = std::clock();
    for (auto _ : state) {
        const auto start = std::chrono::steady_clock::now();
        const auto sweep = site::takeSweep(module1, readouts, {});
        total += std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
        for (const auto& reading : sweep.readings) {
            if (!reading.complete()) return state.SkipWithError(reading.outcome.c_str());
        }
    }
    const auto ratio = total / static_cast<double>(state.iterations()) / (kReadouts * kReadoutFloor);
    state.counters["sweep_ratio"] = ratio;
    state.counters["of_limit"] = ratio / kSweepLimit;
    state.counters["cpu_share"] = static_cast<double>(std::clock() - processor) / CLOCKS_PER_SEC / total;
}
BENCHMARK(sweepASite)->Iterations(5)->Unit(benchmark::kMillisecond)->UseRealTime();

} // namespace
} // namespace quorvel

int main(int argc, char* argv[])
{
    const QCoreApplication application(argc, argv);
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}
