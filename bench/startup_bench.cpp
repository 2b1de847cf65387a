// Start-up of the program, offscreen, to its first painted window, beside a bare main window of the same Qt.
//
//   time_ratio    (aim: at most 1.25)
//   memory_ratio  peaks of resident memory (aim: at most 1.3)

#include <QCoreApplication>
#include <QProcess>

#include <benchmark/benchmark.h>

namespace {

struct Run {
    double seconds = 0;
    double kilobytes = 0;
};

Run run(const QString& name)
{
    QProcess process;
    const auto start = std::chrono::steady_clock::now();
    process.start(QStringLiteral(QUORVEL_BINARIES "/") + name, QStringList());
    process.waitForFinished();
    return {std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count(),
            process.readAllStandardOutput().trimmed().toDouble()};
}

/// The two programs take turns, so that what else the machine does strikes both.
void startUp(benchmark::State& state)
{
    Run ours;
    Run bare;
    for (auto _ : state) {
        for (auto [name, sum] : {std::pair{"startup_quorvel", &ours}, {"startup_bare", &bare}}) {
            const auto one = run(QString::fromLatin1(name));
            sum->seconds += one.seconds;
            sum->kilobytes += one.kilobytes;
        }
    }
    if (bare.kilobytes == 0 || ours.kilobytes == 0) {
        state.SkipWithError("one of the two programs did not start");
        return;
    }
    state.counters["time_ratio"] = ours.seconds / bare.seconds;
    state.counters["memory_ratio"] = ours.kilobytes / bare.kilobytes;
}
BENCHMARK(startUp)->Iterations(20)->Unit(benchmark::kMillisecond)->UseRealTime();

} // namespace

int main(int argc, char* argv[])
{
    qputenv("QT_QPA_PLATFORM", "offscreen");
    const QCoreApplication application(argc, argv);
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}
