#include "grayscale/drawthart.h"
#include "link/module1.h"
#include "support/simulated_bus.h"

#include <QApplication>

#include <benchmark/benchmark.h>

#include <chrono>
#include <cmath>

/// Grayscale: reading a long reply, drawing a long curve, and the time that a reply takes on the wire.
namespace quorvel::grayscale {
namespace {

using protocol::kHighestIndex;

constexpr double kBitsPerSecond = 9600;
constexpr double kBitsPerCharacter = 10;
constexpr double kPauseBeforeFrame = 0.03;
constexpr double kPauseAfterCharacter = 0.005;

constexpr double kParseLimit = 0.001;    // s
constexpr double kFrameLimit = 1.0 / 60; // s

using Clock = std::chrono::steady_clock;

double secondsSince(Clock::time_point start)
{
    return std::chrono::duration<double>(Clock::now() - start).count();
}

/// Runs the iterations and tells what part of the seconds allowed one takes: good below 1.
template<class Step>
void measure(benchmark::State& state, double limit, Step step)
{
    const auto start = Clock::now();
    for (auto _ : state) {
        step();
    }
    state.counters["limit_ratio"] = secondsSince(start) / static_cast<double>(state.iterations()) / limit;
}

std::string longestReply()
{
    std::string reply = ":01654E20";
    for (int i = 0; i < kHighestIndex; ++i) {
        reply += i % 2 == 0 ? "7F" : "a0";
    }
    return reply + "FF\r\n";
}

/// Aim: below kParseLimit.
void parseLongestReply(benchmark::State& state)
{
    const auto reply = longestReply();
    PixelArray array;
    measure(state, kParseLimit, [&] {
        if (!readGrayscale(protocol::kGrayscales[0], reply, array).good)
            state.SkipWithError("the reply is refused");
    });
}
BENCHMARK(parseLongestReply)->Unit(benchmark::kMicrosecond);

/// A noisy lamp profile of the longest length on a chart of 1200 x 600 pixels.
void fill(TChart& chart)
{
    std::vector<std::int16_t> pixels;
    for (int i = 0; i < kHighestIndex; ++i) {
        pixels.push_back(
            static_cast<std::int16_t>(150 + 60 * std::sin(i * 3.14159 / kHighestIndex) + i * 7919 % 9));
    }
    PixelArray array;
    array.store(pixels);
    chart.resize(1200, 600);
    chart.show();
    QApplication::processEvents();
    drawThart(chart, array, "X", link::TypeA);
}

/// One frame, from the new view to the pixels on the screen. Aim: below kFrameLimit.
template<class NextView>
void drawFrames(benchmark::State& state, NextView nextView)
{
    TChart chart;
    fill(chart);
    int frame = 0;
    measure(state, kFrameLimit, [&] {
        nextView(chart, frame++);
        chart.replot(QCustomPlot::rpImmediateRefresh);
    });
}

void zoomLongestCurve(benchmark::State& state)
{
    drawFrames(state, [](TChart& chart, int frame) {
        const double half = 70 * std::pow(0.97, frame % 100);
        chart.showPart({60 - half, 60 + half}, {0, 300});
    });
}
BENCHMARK(zoomLongestCurve)->Unit(benchmark::kMillisecond);

void moveWholeCurve(benchmark::State& state)
{
    drawFrames(state, [](TChart& chart, int frame) {
        chart.showPart({frame % 50 - 25.0, frame % 50 + 115.0}, {0, 300});
    });
}
BENCHMARK(moveWholeCurve)->Unit(benchmark::kMillisecond);

/// A reply of 7450 pixels from a bus as slow as a real one. Aim: at most 1.02 of what the wire and the prescribed
/// pauses take.
void transfer7450Pixels(benchmark::State& state)
{
    test::SimulatedBus bus({"--readout", "5:A"});
    const link::PortList ports({bus.device()}, [] { return std::vector<link::PortInfo>(); });
    link::MSComm port(ports);
    link::SystemClock clock;
    link::Module1 module1(port, clock);
    if (!port.setPortOpen(true).isEmpty()) return state.SkipWithError("the bus cannot be opened");
    const auto request = protocol::grayscaleQuery(protocol::kGrayscales[0], "05");
    const double sending =
        kPauseBeforeFrame + kPauseAfterCharacter * static_cast<double>(request.frame.size());
    PixelArray array;
    for (auto _ : state) {
        const auto start = Clock::now();
        const auto exchange = module1.transact(request);
        if (!readGrayscale(protocol::kGrayscales[0], exchange.reply, array).good)
            state.SkipWithError("no reply");
        const double seconds = secondsSince(start);
        const double floor =
            sending + static_cast<double>(exchange.reply.size()) * kBitsPerCharacter / kBitsPerSecond;
        state.SetIterationTime(seconds);
        state.counters["floor_s"] = floor;
        state.counters["ratio"] = seconds / floor;
    }
}
BENCHMARK(transfer7450Pixels)->Unit(benchmark::kSecond)->UseManualTime()->Iterations(1);

} // namespace
} // namespace quorvel::grayscale

int main(int argc, char* argv[])
{
    qputenv("QT_QPA_PLATFORM", "offscreen");
    const QApplication application(argc, argv);
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}
