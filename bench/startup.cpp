#include "bench/benchmarks.h"
#include "bench/support/child_process.h"
#include "bench/support/results.h"
#include "bench/support/temporary_file.h"
#include "bench/support/terminal.h"

#include <benchmark/benchmark.h>
#include <filesystem>
#include <string>
#include <vector>

namespace bench
{

namespace
{

/// Seconds of a program without arguments: the program prints the usage text then.
double seconds_of(const std::string& program, const char* output_file)
{
    constexpr bool may_fail = true; // no arguments are a wrong command line
    return run({.program = program, .arguments = {}, .output_file = output_file}, may_fail).seconds;
}

/// Both programs and the library, as near to the root as if they were installed: the search for the
/// library walks some thirty times through all folders of the path.
class StartFolder
{
public:
    StartFolder()
    {
        for (const char* file : {KOV_PROGRAM, KOV_LIBRARY, KOV_ONE_LINE_PROGRAM})
            std::filesystem::copy(file, folder_.name());
    }
    [[nodiscard]] std::string program(const char* built) const
    {
        return folder_.name() / std::filesystem::path{built}.filename();
    }

private:
    TemporaryFolder folder_;
};

/// The program with its usage text against a C program with one line.
void compare_with_one_line(benchmark::State& state, const char* name, const char* output_file)
{
    std::vector<double> ours, smallest;
    const StartFolder folder;
    const std::string our_program = folder.program(KOV_PROGRAM);
    const std::string one_line_program = folder.program(KOV_ONE_LINE_PROGRAM);
    const Terminal terminal;
    for (auto _ : state) {
        smallest.push_back(seconds_of(one_line_program, output_file));
        ours.push_back(seconds_of(our_program, output_file));
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
