#include "bench/benchmarks.h"

#include <vector>

#include <benchmark/benchmark.h>

#include "bench/child_process.h"
#include "bench/results.h"
#include "bench/terminal.h"

namespace bench
{

namespace
{

/// Seconds of a program without arguments: the program prints the usage text then.
double seconds_of(const char* program, const char* output_file)
{
    constexpr bool may_fail = true; // no arguments are a wrong command line
    return run({.program = program, .arguments = {}, .output_file = output_file}, may_fail).seconds;
}

/// The program with its usage text against a C program with one line.
void compare_with_one_line(benchmark::State& state, const char* name, const char* output_file)
{
    std::vector<double> ours, smallest;
    const Terminal terminal;
    for (auto _ : state) {
        smallest.push_back(seconds_of(KOV_ONE_LINE_PROGRAM, output_file));
        ours.push_back(seconds_of(KOV_PROGRAM, output_file));
        state.SetIterationTime(ours.back());
    }
    const double ratio = median(ours) / median(smallest);
    state.counters["ratio"] = ratio;
    note_result(name, ratio, at_most(1.5));
}

void add(const char* name, const char* output_file)
{
    benchmark::RegisterBenchmark(
        name, [=](benchmark::State& state) { compare_with_one_line(state, name, output_file); })
        ->Iterations(500)
        ->UseManualTime()
        ->Unit(benchmark::kMicrosecond);
}

} // namespace

void register_startup()
{
    add("start to end / C program, to nowhere", nowhere);
    add("start to end / C program, to a terminal", nullptr);
}

} // namespace bench
