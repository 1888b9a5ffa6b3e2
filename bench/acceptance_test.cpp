#include "bench/benchmarks.h"
#include "bench/support/child_process.h"
#include "bench/support/results.h"
#include "bench/support/temporary_file.h"

#include <benchmark/benchmark.h>
#include <fstream>
#include <vector>

namespace bench
{

namespace
{

/// Real against virtual time, and the seconds that a developer waits for it.
void measure(benchmark::State& state)
{
    const TemporaryFile output;
    const Command command = {.program = KOV_ACCEPTANCE_RUN, .output_file = output.name().c_str()};
    std::vector<double> times;
    for (auto _ : state) {
        times.push_back(run(command).seconds);
        state.SetIterationTime(times.back());
    }
    double virtual_seconds = 0.0;
    std::ifstream{output.name()} >> virtual_seconds;
    state.counters["virtual_s"] = virtual_seconds;
    note_result("acceptance test on the virtual clock, time / virtual time",
                median(times) / virtual_seconds, no_goal);
    note_result("acceptance test on the virtual clock, seconds", median(times), at_most(2.0));
}

} // namespace

void register_acceptance_test()
{
    benchmark::RegisterBenchmark("acceptance test on the virtual clock", measure)
        ->Iterations(5)
        ->UseManualTime()
        ->Unit(benchmark::kMillisecond);
}

} // namespace bench
