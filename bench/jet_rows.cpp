#include "jet/database.h"

#include <algorithm>
#include <benchmark/benchmark.h>
#include <chrono>
#include <cstdio>
#include <filesystem>
#include <functional>
#include <sqlite3.h>
#include <string>
#include <sys/wait.h>

/// 100,000 rows of (Date/Time, Single, Single), appended and read, each beside a program that does the same in the
/// same run. "times" is our speed over theirs.
namespace {

using namespace quorvel;

constexpr int kRows = 100000;
constexpr double kRowBytes = 2 + 8 + 4 + 4 + 1 + 2; // with its slot
const std::filesystem::path kFolder = std::filesystem::temp_directory_path();
const auto kOurs = kFolder / "quorvel-bench.mdb";
const auto kTheirs = kFolder / "quorvel-bench.sqlite";

double secondsOf(const std::function<void()>& work)
{
    const auto begin = std::chrono::steady_clock::now();
    work();
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - begin).count();
}

void require(const jet::Status& status)
{
    if (status) return;
    std::fprintf(stderr, "%s\n", status.error().c_str());
    std::exit(1);
}

void addRows(jet::Recordset& rows)
{
    for (int i = 0; i < kRows; ++i) {
        rows.AddNew();
        rows.Fields("time").SetValue(jet::Date{45000 + i / 86400.0});
        rows.Fields("x").SetValue(static_cast<float>(i) * 0.5F);
        rows.Fields("y").SetValue(static_cast<float>(i) * -0.25F);
        require(rows.Update());
    }
}

jet::Database newDatabase()
{
    std::filesystem::remove(kOurs);
    auto made = jet::CreateDatabase(kOurs, jet::kGeneralLocale);
    if (!made) std::exit(1);
    auto table = jet::Database::CreateTableDef("data");
    table.Append({"time", jet::FieldType::Date});
    table.Append({"x", jet::FieldType::Single});
    table.Append({"y", jet::FieldType::Single});
    require(made->Append(table));
    return std::move(*made);
}

/// Rows go into the database while it is being created.
void appendOurs()
{
    auto made = newDatabase();
    auto rows = made.OpenRecordset("data");
    addRows(*rows);
    require(made.Close());
}

/// Each row is handed to the operating system before the next.
void appendOursRowByRow()
{
    require(newDatabase().Close());
    auto opened = jet::OpenDatabase(kOurs);
    auto rows = opened->OpenRecordset("data");
    addRows(*rows);
    require(opened->Close());
}

void appendSqlite()
{
    std::filesystem::remove(kTheirs);
    sqlite3* database = nullptr;
    sqlite3_open(kTheirs.c_str(), &database);
    sqlite3_exec(database, "create table data (time real, x real, y real); begin", nullptr, nullptr, nullptr);
    sqlite3_stmt* insert = nullptr;
    sqlite3_prepare_v2(database, "insert into data values (?, ?, ?)", -1, &insert, nullptr);
    for (int i = 0; i < kRows; ++i) {
        sqlite3_bind_double(insert, 1, 45000 + i / 86400.0);
        sqlite3_bind_double(insert, 2, i * 0.5);
        sqlite3_bind_double(insert, 3, i * -0.25);
        if (sqlite3_step(insert) != SQLITE_DONE) std::exit(1);
        sqlite3_reset(insert);
    }
    sqlite3_finalize(insert);
    sqlite3_exec(database, "commit", nullptr, nullptr, nullptr);
    sqlite3_close(database);
}

void readOurs()
{
    auto opened = jet::OpenDatabase(kOurs, {.access = jet::Access::ReadOnly});
    auto rows = opened->OpenRecordset("data");
    double sum = 0;
    int count = 0;
    for (; !rows->Eof(); ++count) {
        sum += rows->Fields("time").Value().date()->serial + *rows->Fields("x").Value().number() +
               *rows->Fields("y").Value().number();
        require(rows->MoveNext());
    }
    benchmark::DoNotOptimize(sum);
    if (count != kRows) std::exit(1);
}

void readMdbExport()
{
    if (std::system(("mdb-export '" + kOurs.string() + "' data > /dev/null").c_str()) != 0) std::exit(1);
}

void beside(benchmark::State& state, void (*ours)(), void (*theirs)())
{
    // The best of the runs: a busy machine makes single ones slow, never fast.
    double our = 1e9;
    double their = 1e9;
    for (auto _ : state) {
        const double once = secondsOf(ours);
        state.SetIterationTime(once);
        our = std::min(our, once);
        their = std::min(their, secondsOf(theirs));
    }
    state.counters["rows/s"] = kRows / our;
    state.counters["times"] = their / our;
}

void appendBesideSqlite(benchmark::State& state)
{
    beside(state, appendOurs, appendSqlite);
    const auto pages = static_cast<double>(std::filesystem::file_size(kOurs));
    state.counters["bytes/fullPages"] = pages / (kRows * kRowBytes);
}

void appendRowByRowBesideSqlite(benchmark::State& state) { beside(state, appendOursRowByRow, appendSqlite); }

void readBesideMdbExport(benchmark::State& state)
{
    appendOurs();
    beside(state, readOurs, readMdbExport);
}

BENCHMARK(appendBesideSqlite)->UseManualTime()->Iterations(15)->Unit(benchmark::kMillisecond);
BENCHMARK(appendRowByRowBesideSqlite)->UseManualTime()->Iterations(15)->Unit(benchmark::kMillisecond);
BENCHMARK(readBesideMdbExport)->UseManualTime()->Iterations(15)->Unit(benchmark::kMillisecond);

} // namespace

BENCHMARK_MAIN();
