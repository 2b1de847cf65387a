// How fast a site is swept: 20 readouts of a simulated bus at 9600 baud.
//
//   sweep_ratio  time of a sweep over the sum of its pauses and characters: for each readout 0.03 s, 0.005 s for each of
//                the 11 characters of the frame, and the 29 characters of its answer. The 4 ms that a simulated readout
//                thinks fall into the pause behind the last character
//   of_limit     sweep_ratio over its limit, 1.04: at most 1 is good
//   cpu_share    processor time of this program over real time

#include "link/gate.h"
#include "link/module1.h"
#include "main/workplace.h"
#include "site/sitewindow.h"
#include "site/sweep.h"
#include "support/simulated_bus.h"
#include "support/test_messages.h"

#include <QApplication>
#include <QPushButton>
#include <QTemporaryDir>

#include <benchmark/benchmark.h>

#include <algorithm>
#include <chrono>
#include <ctime>
#include <functional>

namespace quorvel {
namespace {

constexpr int kReadouts = 20;
constexpr double kCharacter = 10 / 9600.0;                            // s
constexpr double kReadoutFloor = 0.03 + 11 * 0.005 + 29 * kCharacter; // s
constexpr double kSweepLimit = 1.04;

site::Site theSite()
{
    site::Site site;
    site.readouts.resize(kReadouts);
    for (int i = 0; i < kReadouts; ++i)
        site.readouts[static_cast<std::size_t>(i)].address = i + 1;
    return site;
}

/// A link to a simulated bus with these readouts, open.
struct Line {
    link::SystemClock clock;
    test::SimulatedBus bus{{"--seed", "1", "--readout", QStringLiteral("1-%1:A").arg(kReadouts)}};
    link::PortList ports{{bus.device()}, [] { return std::vector<link::PortInfo>(); }};
    link::MSComm comm{ports};
    bool open = comm.setPortOpen(true).isEmpty();
    link::Module1 module1{comm, clock};
};

/// Times sweeps. @param sweep  makes one; false when a readout did not answer.
void time(benchmark::State& state, const std::function<bool()>& sweep)
{
    double total = 0;
    const auto processor = std::clock();
    for (auto _ : state) {
        const auto start = std::chrono::steady_clock::now();
        if (!sweep()) return state.SkipWithError("not all readouts have answered");
        total += std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
    }
    const auto ratio = total / static_cast<double>(state.iterations()) / (kReadouts * kReadoutFloor);
    state.counters["sweep_ratio"] = ratio;
    state.counters["of_limit"] = ratio / kSweepLimit;
    state.counters["cpu_share"] = static_cast<double>(std::clock() - processor) / CLOCKS_PER_SEC / total;
}

void sweepASite(benchmark::State& state)
{
    Line line;
    if (!line.open) return state.SkipWithError("the port cannot be opened");
    time(state, [&line] {
        const auto sweep = site::takeSweep(line.module1, theSite().readouts, {});
        return std::ranges::all_of(sweep.readings, &site::Reading::complete);
    });
}
BENCHMARK(sweepASite)->Iterations(5)->Unit(benchmark::kMillisecond)->UseRealTime();

/// The same by "Sweep" of the window, with its table, its trend and the words below.
void sweepInTheWindow(benchmark::State& state)
{
    Line line;
    const QTemporaryDir folder;
    const auto path = folder.filePath(QStringLiteral("dam.quorvel-site.json"));
    if (!line.open || !site::saveSite(path.toStdString(), theSite()))
        return state.SkipWithError("no port or no file");
    link::Bench bench;
    link::Gate gate;
    test::TestMessages messages;
    site::SiteWindow window(Workplace{bench, line.module1, gate, messages},
                            {[] { return std::vector<int>(); }, [](int) { return site::LineState(); },
                             [](const QDateTime&) { return site::ChangesMade(); }, QString()});
    window.open(path);
    window.show();
    QApplication::processEvents();
    auto* button = window.findChild<QPushButton*>(QStringLiteral("SiteSweep"));
    auto* table = window.findChild<QTableView*>(QStringLiteral("SiteTable"));
    time(state, [&] {
        button->click();
        int answered = 0;
        for (int row = 0; row < table->model()->rowCount(); ++row) {
            for (int column = 0; column < table->model()->columnCount(); ++column)
                answered +=
                    static_cast<int>(table->model()->index(row, column).data() == QLatin1String("complete"));
        }
        return answered == kReadouts;
    });
}
BENCHMARK(sweepInTheWindow)->Iterations(5)->Unit(benchmark::kMillisecond)->UseRealTime();

} // namespace
} // namespace quorvel

int main(int argc, char* argv[])
{
    const QApplication application(argc, argv);
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}
