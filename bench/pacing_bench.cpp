// How exactly frames are paced, and what waiting costs.
//
//   pacing_ratio  time of a 13-character frame over its floor of 0.095 s
//   cpu_share     processor time over real time, while sending or while waiting for a silent readout
//   of_limit      either over its limit, 1.04 or 0.03: at most 1 is good

#include "link/module1.h"
#include "support/fake_device.h"
#include "support/processor_time.h"

#include <QCoreApplication>

#include <benchmark/benchmark.h>

namespace quorvel {
namespace {

using test::processorSeconds;

constexpr double kFrameFloor = 0.03 + 13 * 0.005; // s
constexpr float kSilence = 1.5F;                  // s
constexpr double kPacingLimit = 1.04;
constexpr double kCpuLimit = 0.03;

/// A link without hardware, in real time.
struct Link {
    Link() { comm.setPortOpen(true); }

    link::PortList ports{{"/dev/ttyFake"}, [] { return std::vector<link::PortInfo>(); }};
    link::MSComm comm{ports, [](const QString&, const link::LineSettings&) {
                          return link::OpenedDevice{std::make_unique<test::FakeDevice>(), {}};
                      }};
    link::SystemClock clock;
    link::Module1 module1{comm, clock};
};

void report(benchmark::State& state, const std::string& name, double figure, double limit)
{
    state.counters[name] = figure;
    state.counters["of_limit"] = figure / limit;
}

void sendFrame(benchmark::State& state)
{
    Link link;
    double total = 0;
    for (auto _ : state) {
        const auto start = std::chrono::steady_clock::now();
        link.module1.SendFrame(":052101FF12\r\n");
        total += std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
    }
    report(state, "pacing_ratio", total / static_cast<double>(state.iterations()) / kFrameFloor,
           kPacingLimit);
}
BENCHMARK(sendFrame)->Iterations(50)->Unit(benchmark::kMillisecond)->UseRealTime();

void waitForASilentReadout(benchmark::State& state)
{
    Link link;
    const double before = processorSeconds();
    for (auto _ : state) {
        link.module1.WaitForInput(kSilence, 29);
    }
    const double real = static_cast<double>(state.iterations()) * static_cast<double>(kSilence);
    report(state, "cpu_share", (processorSeconds() - before) / real, kCpuLimit);
}
BENCHMARK(waitForASilentReadout)->Iterations(4)->Unit(benchmark::kMillisecond)->UseRealTime();

void sendFrameCpu(benchmark::State& state)
{
    Link link;
    const double before = processorSeconds();
    const auto start = std::chrono::steady_clock::now();
    for (auto _ : state) {
        link.module1.SendFrame(":052101FF12\r\n");
    }
    const double real = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
    report(state, "cpu_share", (processorSeconds() - before) / real, kCpuLimit);
}
BENCHMARK(sendFrameCpu)->Iterations(30)->Unit(benchmark::kMillisecond)->UseRealTime();

} // namespace
} // namespace quorvel

int main(int argc, char* argv[])
{
    const QCoreApplication application(argc, argv);
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}
