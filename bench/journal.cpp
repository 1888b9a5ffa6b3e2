#include "bench/benchmarks.h"
#include "bench/support/child_process.h"
#include "bench/support/results.h"
#include "bench/support/temporary_file.h"

#include <benchmark/benchmark.h>
#include <cstdlib>
#include <filesystem>
#include <vector>

namespace bench
{

#ifdef KOV_TAP

namespace
{

/// Seconds of a program that makes a thousand different calls of 1 ms each.
double seconds_of_calls()
{
    Command command = {.program = KOV_PROGRAM, .arguments = {"1", "-q"}, .output_file = nowhere};
    for (int i = 0; i < 200; ++i)
        command.arguments.insert(command.arguments.end(), {"-u", "-s", "-pk", "-pu", "-sv"});
    command.arguments.emplace_back("-T");
    return run(command).seconds;
}

double seconds_with_journal(const std::string& journal)
{
    std::filesystem::remove(journal); // an old one is never overwritten
    setenv("KOV_JOURNAL", journal.c_str(), 1);
    setenv("KOV_DEVICE_LIBRARY", KOV_TAP, 1);
    const double seconds = seconds_of_calls();
    unsetenv("KOV_DEVICE_LIBRARY");
    unsetenv("KOV_JOURNAL");
    return seconds;
}

void compare(benchmark::State& state)
{
    setenv("KOV_SIMULATOR_STATE", "none", 1);
    const TemporaryFile journal;
    std::vector<double> ratios;
    for (auto _ : state) {
        const double untapped = seconds_of_calls();
        const double tapped = seconds_with_journal(journal.name());
        ratios.push_back(untapped / tapped);
        state.SetIterationTime(tapped);
    }
    unsetenv("KOV_SIMULATOR_STATE");
    state.counters["ratio"] = median(ratios);
    note_result("call rate with a journal / without, 1 ms a call", median(ratios), at_least(0.99));
}

} // namespace

void register_journal()
{
    benchmark::RegisterBenchmark("calls with a journal / without", compare)
        ->Iterations(9)
        ->UseManualTime()
        ->Unit(benchmark::kMillisecond);
}

#else

void register_journal() {} // the companion is not built

#endif

} // namespace bench
