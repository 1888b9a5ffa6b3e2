#include "bench/benchmarks.h"

#include <cstdio>
#include <cstdlib>
#include <vector>

#include <benchmark/benchmark.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include "bench/library.h"
#include "bench/results.h"
#include "bench/terminal.h"

namespace bench
{

namespace
{

/// Seconds from a program's start to its end, on the terminal.
double seconds_of(const char* path)
{
    char name[] = "KOV-Controller"; // without arguments it prints the usage text
    char* const arguments[] = {name, nullptr};
    const double start = now_seconds();
    pid_t child = 0;
    if (posix_spawn(&child, path, nullptr, nullptr, arguments, environ) != 0) {
        std::fprintf(stderr, "cannot start %s\n", path);
        std::exit(EXIT_FAILURE);
    }
    waitpid(child, nullptr, 0);
    return now_seconds() - start;
}

void compare_with_one_line(benchmark::State& state)
{
    std::vector<double> ours, smallest;
    const Terminal terminal;
    for (auto _ : state) {
        smallest.push_back(seconds_of(KOV_ONE_LINE_PROGRAM));
        ours.push_back(seconds_of(KOV_PROGRAM));
        state.SetIterationTime(ours.back());
    }
    const double ratio = median(ours) / median(smallest);
    state.counters["ratio"] = ratio;
    note_result("start to end with the usage text / C program with one line", ratio, at_most(1.5));
}

} // namespace

void register_startup()
{
    benchmark::RegisterBenchmark("start-up", compare_with_one_line)
        ->Iterations(500)
        ->UseManualTime()
        ->Unit(benchmark::kMicrosecond);
}

} // namespace bench
