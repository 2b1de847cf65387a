#include "site/trendchart.h"

#include <QApplication>

#include <benchmark/benchmark.h>

#include <chrono>
#include <cmath>

/// The trend of a site: drawing days of readings of many readouts.
namespace quorvel::site {
namespace {

constexpr int kReadouts = 20;
constexpr int kDays = 3;
constexpr int kEachSeconds = 10;
constexpr int kManyReadings = kDays * 86400 / kEachSeconds;
constexpr int kFewReadings = 100;
constexpr double kFrame = 1.0 / 60; // s

using Clock = std::chrono::steady_clock;

double secondsFrom(Clock::time_point start)
{
    return std::chrono::duration<double>(Clock::now() - start).count();
}

std::string inDigits(double mm)
{
    const auto text = QString::number(std::abs(mm), 'f', 5);
    return (mm < 0 ? "-" : "+") + text.left(7).toStdString();
}

/// Plumb lines that swing with the day, with noise.
void fill(Trend& trend, int readings)
{
    const QDateTime start(QDate(2024, 5, 17), QTime(0, 0), Qt::UTC);
    for (int readout = 1; readout <= kReadouts; ++readout) {
        for (int i = 0; i < readings; ++i) {
            const double day = i * kEachSeconds / 86400.0;
            const double noise = (i * 7919 % 97) * 1e-4;
            Reading reading;
            reading.address = readout;
            reading.time = start.addSecs(qint64{i} * kEachSeconds);
            reading.received = {inDigits(readout * 0.1 + std::sin(day * 6.28) + noise),
                                inDigits(std::cos(day * 6.28) + noise), std::nullopt, std::nullopt};
            reading.outcome = "complete";
            trend.take(reading);
        }
    }
}

void show(TrendChart& chart)
{
    std::vector<TrendCurve> curves;
    for (int readout = 1; readout <= kReadouts; ++readout)
        curves.push_back({readout, QString::number(readout)});
    chart.resize(1200, 320);
    chart.show();
    QApplication::processEvents();
    chart.setCurves(curves);
    QApplication::processEvents();
}

/// Seconds for a new view: fetching its points, fitting the axes, drawing.
double repaint(TrendChart& chart, const Span& whole, int frame)
{
    const double part = (whole.to - whole.from) * 0.002 * (frame % 50);
    const auto start = Clock::now();
    chart.showSpan({whole.from + part, whole.to});
    chart.replot(QCustomPlot::rpImmediateRefresh);
    return secondsFrom(start);
}

/// Zooming over three days of twenty readouts, beside the same with a hundred readings each. "of_small" is the ratio of
/// the two, "of_frame" the part of a sixtieth of a second.
void zoomDays(benchmark::State& state)
{
    Trend days;
    Trend minutes;
    fill(days, kManyReadings);
    fill(minutes, kFewReadings);
    TrendChart large(days);
    TrendChart small(minutes);
    show(large);
    show(small);
    const auto wholeOfLarge = large.span();
    const auto wholeOfSmall = small.span();
    double forLarge = 0;
    double forSmall = 0;
    int frame = 0;
    for (auto _ : state) {
        ++frame;
        forLarge += repaint(large, wholeOfLarge, frame);
        forSmall += repaint(small, wholeOfSmall, frame);
    }
    state.counters["of_small"] = forLarge / forSmall;
    state.counters["of_frame"] = forLarge / frame / kFrame;
}
BENCHMARK(zoomDays)->Unit(benchmark::kMillisecond);

} // namespace
} // namespace quorvel::site

int main(int argc, char** argv)
{
    qputenv("QT_QPA_PLATFORM", "offscreen");
    const QApplication application(argc, argv);
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}
