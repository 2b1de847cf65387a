// What watching the traffic costs.
//
//   pacing_ratio  time to send a frame with the panel open and recording, over that without either; the two take turns in
//                 one run. Of each the lower quartile, because what else the machine does only adds
//   frame_ratio   median time to scroll by a step and paint, with 100,000 lines, over a frame of 1/60 s; worst_ratio that
//                 of the slowest one of a hundred
//   of_limit      at most 1 is good: of the deviation from 1 over 0.01, of frame_ratio itself

#include "line/trafficpanel.h"
#include "link/module1.h"
#include "protocol/command.h"
#include "support/fake_device.h"
#include "support/test_messages.h"

#include <QApplication>
#include <QScrollBar>
#include <QTemporaryDir>

#include <benchmark/benchmark.h>

#include <algorithm>
#include <chrono>
#include <cmath>
#include <vector>

namespace quorvel {
namespace {

using line::TrafficModel;

constexpr double kPacingTolerance = 0.01;
constexpr double kFrameTime = 1.0 / 60; // s
constexpr int kBlock = 5;               // frames in a row with, then without
constexpr int kFramesPerBlock = 25;
constexpr int kStep = 7; // lines scrolled by: every cell is another one
constexpr double kQuartile = 0.25;
constexpr double kMedian = 0.5;
constexpr double kSlowest = 0.99;
constexpr QSize kPanelSize(1110, 300); // as the program opens it

/// A link without hardware, in real time, whose readout answers at once.
struct Watched {
    Watched()
    {
        comm.setPortOpen(true);
        device->onCharacter = [this](char c) {
            if (c == '\n') device->receive(":0572+1.50000FF\r\n");
        };
        panel.resize(kPanelSize);
    }
    ~Watched() { watch(false); }
    Watched(const Watched&) = delete;
    Watched& operator=(const Watched&) = delete;

    void watch(bool on)
    {
        if (on == watching) return;
        watching = on;
        for (auto* observer : std::initializer_list<link::ExchangeObserver*>{&model, &trace}) {
            if (on) {
                module1.addObserver(*observer);
            } else {
                module1.removeObserver(*observer);
            }
        }
        if (on && !trace.open(folder.filePath(QStringLiteral("traffic.jsonl"))).isEmpty()) std::abort();
        if (!on) trace.close();
        panel.setVisible(on);
        QApplication::processEvents();
    }
    /// Seconds from the call to the last character out.
    double send()
    {
        const auto exchange =
            module1.transact(protocol::transaction(protocol::CommandId::QueryOffsetX, "05"));
        if (!exchange.complete()) std::abort();
        return *exchange.lastOut;
    }
    /// As many lines as the panel keeps.
    void fill()
    {
        link::Exchange exchange;
        exchange.transaction = protocol::transaction(protocol::CommandId::QueryOffsetX, "05");
        exchange.sent = exchange.transaction.frame.size();
        exchange.outcome = link::Outcome::Complete;
        exchange.begun = QDateTime::currentDateTime();
        exchange.lastOut = 0.1;
        exchange.firstIn = 0.105;
        exchange.lastIn = 0.125;
        for (int i = 0; i < TrafficModel::kMostLines; ++i) {
            exchange.number = next++;
            exchange.reply = ":0572+" + std::to_string(i) + "FF\r\n";
            model.sending(exchange);
            model.ended(exchange);
        }
        model.flush();
    }

    QTemporaryDir folder;
    QPointer<test::FakeDevice> device;
    link::PortList ports{{"/dev/ttyFake"}, [] { return std::vector<link::PortInfo>(); }};
    link::MSComm comm{ports, [this](const QString&, const link::LineSettings&) {
                          auto made = std::make_unique<test::FakeDevice>();
                          device = made.get();
                          return link::OpenedDevice{std::move(made), {}};
                      }};
    link::SystemClock clock;
    link::Module1 module1{comm, clock};
    link::Bench bench;
    link::Gate gate;
    test::TestMessages messages;
    Workplace workplace{bench, module1, gate, messages};
    TrafficModel model;
    line::Trace trace;
    line::TrafficPanel panel{model, trace, workplace};
    bool watching = false;
    std::uint64_t next = 1'000'000; ///< numbers of lines that nobody sent
};

/// The figure that this part of all is below.
double quantile(std::vector<double>& all, double part)
{
    const auto place = all.begin() + static_cast<std::ptrdiff_t>(part * static_cast<double>(all.size()));
    std::nth_element(all.begin(), place, all.end());
    return *place;
}

void pacingWhileRecording(benchmark::State& state)
{
    Watched link;
    std::vector<double> with;
    std::vector<double> without;
    for (auto _ : state) {
        for (const bool on : {true, false}) {
            link.watch(on);
            for (int i = 0; i < kBlock; ++i) {
                (on ? with : without).push_back(link.send());
            }
        }
    }
    const double ratio = quantile(with, kQuartile) / quantile(without, kQuartile);
    state.counters["pacing_ratio"] = ratio;
    state.counters["of_limit"] = std::abs(ratio - 1) / kPacingTolerance;
}
BENCHMARK(pacingWhileRecording)->Iterations(50)->Unit(benchmark::kMillisecond)->UseRealTime();

/// Takes frames and tells how long they took.
template<class Step>
void paint(benchmark::State& state, Step step)
{
    Watched link;
    link.fill();
    link.panel.show();
    QApplication::processEvents();
    auto& table = *link.panel.findChild<QTableView*>(QStringLiteral("TrafficLines"));
    std::vector<double> frames;
    for (auto _ : state) {
        for (int i = 0; i < kFramesPerBlock; ++i) {
            const auto start = std::chrono::steady_clock::now();
            step(link, table);
            table.viewport()->repaint();
            frames.push_back(std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count());
        }
    }
    constexpr int kLeast = TrafficModel::kMostLines * 9 / 10; // the oldest give way many at once
    if (table.model()->rowCount() < kLeast) state.SkipWithError("not all lines are there");
    const double ratio = quantile(frames, kMedian) / kFrameTime;
    state.counters["frame_ratio"] = ratio;
    state.counters["worst_ratio"] = quantile(frames, kSlowest) / kFrameTime;
    state.counters["of_limit"] = ratio;
}

void scrollThroughAllLines(benchmark::State& state)
{
    paint(state, [](Watched&, QTableView& table) {
        auto& bar = *table.verticalScrollBar();
        bar.setValue(bar.value() + kStep > bar.maximum() ? 0 : bar.value() + kStep);
    });
}
BENCHMARK(scrollThroughAllLines)->Iterations(40)->Unit(benchmark::kMillisecond);

void lineComesWhileAllAreThere(benchmark::State& state)
{
    paint(state, [](Watched& link, QTableView&) {
        link::Exchange exchange;
        exchange.transaction = protocol::transaction(protocol::CommandId::ReadXY, "05");
        exchange.number = link.next++;
        link.model.sending(exchange);
        link.model.ended(exchange);
        link.model.flush();
        QApplication::processEvents(); // the table follows
    });
}
BENCHMARK(lineComesWhileAllAreThere)->Iterations(40)->Unit(benchmark::kMillisecond);

} // namespace
} // namespace quorvel

int main(int argc, char* argv[])
{
    qputenv("QT_QPA_PLATFORM", "offscreen");
    const QApplication application(argc, argv);
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}
