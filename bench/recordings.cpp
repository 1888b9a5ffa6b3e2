#include "bench/benchmarks.h"
#include "bench/library.h"
#include "bench/support/results.h"
#include "bench/support/temporary_file.h"
#include "companion/log/statistics.h"
#include "frame/text/format.h"

#include <array>
#include <benchmark/benchmark.h>
#include <cstdio>
#include <cstdlib>
#include <vector>

namespace bench
{

namespace
{

constexpr int rows = 1'000'000;

/// As the heat-controller's is: a row of each kind in turn.
std::string recording()
{
    std::string text = "Housekeeping and monitoring data of:\theat-controller\n"
                       "Data acquisition started on:\tSat, 03/14/2026, 09:26:53\n\n"
                       "Time/s\t3V3/V\t5V0/V\t24V/V\tT_CPU/\xB0"
                       "C\tT_PSU/\xB0"
                       "C\tVout/V\tVheat/V\tIout/A\tTheat/\xB0"
                       "C\n";
    for (int i = 0; i < rows; ++i) {
        const double swing = i % 997 * 1e-5;
        if (i % 2 == 0)
            text += formatted("%.3f\t%f\t%.3f\t%.3f\t%.2f\t%.2f\n", i * 0.01, 3.3 + swing,
                              5.0 + swing, 24.0 + swing, 40.0 + swing, 31.0);
        else
            text += formatted("%.3f\t\t\t\t\t\t%f\t%f\t%f\t%.3f\n", i * 0.01, 10.0 + swing,
                              9.8 + swing, 2.0 + swing, 20.0 + i * 1e-5);
    }
    return text;
}

/// Ends the program when it cannot be done: there is nothing to compare then.
void require(bool good, const std::string& name)
{
    if (good)
        return;
    std::fprintf(stderr, "cannot use %s\n", name.c_str());
    std::exit(EXIT_FAILURE);
}

double seconds_of_bytes(const std::string& name)
{
    static std::array<char, 1 << 18> piece;
    const double start = thread_seconds();
    std::FILE* file = std::fopen(name.c_str(), "rb");
    require(file != nullptr, name);
    std::setvbuf(file, nullptr, _IONBF, 0);
    while (std::fread(piece.data(), 1, piece.size(), file) > 0)
        benchmark::DoNotOptimize(piece);
    std::fclose(file);
    return thread_seconds() - start;
}

double seconds_of_statistics(const std::string& name)
{
    const companion::Surroundings outside{.out = [](std::string_view) { return true; },
                                          .err = [](std::string_view) { return true; }};
    const double start = thread_seconds();
    companion::LogReader reader;
    require(reader.open(name, outside), name);
    require(companion::read_statistics(reader).rows == rows, name);
    return thread_seconds() - start;
}

void measure(benchmark::State& state)
{
    const TemporaryFile file;
    file.write(recording());
    std::vector<double> bytes, statistics;
    for (auto _ : state) {
        bytes.push_back(seconds_of_bytes(file.name()));
        statistics.push_back(seconds_of_statistics(file.name()));
        state.SetIterationTime(statistics.back());
    }
    note_result("statistics of a million rows / reading their bytes",
                median(statistics) / median(bytes), at_most(15));
}

} // namespace

void register_recordings()
{
    benchmark::RegisterBenchmark("statistics of a recording", measure)
        ->Iterations(11)
        ->UseManualTime()
        ->Unit(benchmark::kMillisecond);
}

} // namespace bench
