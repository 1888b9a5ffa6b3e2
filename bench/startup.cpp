#include "bench/benchmarks.h"

#include <cstdio>
#include <cstdlib>
#include <vector>

#include <benchmark/benchmark.h>
#include <fcntl.h>
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

constexpr const char* nowhere = "/dev/null";

/// Seconds from a program's start to its end. Its output goes to the file, or where ours goes.
double seconds_of(const char* path, const char* output_file)
{
    char name[] = "KOV-Controller"; // without arguments it prints the usage text
    char* const arguments[] = {name, nullptr};
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    if (output_file != nullptr)
        posix_spawn_file_actions_addopen(&actions, STDOUT_FILENO, output_file, O_WRONLY, 0);
    const double start = now_seconds();
    pid_t child = 0;
    if (posix_spawn(&child, path, &actions, nullptr, arguments, environ) != 0) {
        std::fprintf(stderr, "cannot start %s\n", path);
        std::exit(EXIT_FAILURE);
    }
    waitpid(child, nullptr, 0);
    const double seconds = now_seconds() - start;
    posix_spawn_file_actions_destroy(&actions);
    return seconds;
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
