#include "bench/benchmarks.h"
#include "bench/library.h"
#include "bench/support/child_process.h"
#include "bench/support/results.h"
#include "bench/support/temporary_file.h"

#include <array>
#include <benchmark/benchmark.h>
#include <cstdio>
#include <cstdlib>
#include <fcntl.h>
#include <filesystem>
#include <unistd.h>
#include <vector>

namespace bench
{

namespace
{

/// The seconds that reading the bytes of files takes; looking at none of them.
double read_bytes(const std::vector<std::string>& files)
{
    static std::array<char, 1 << 16> buffer;
    const double start = now_seconds();
    for (const std::string& file : files) {
        const int opened = open(file.c_str(), O_RDONLY | O_CLOEXEC);
        if (opened < 0) {
            std::fprintf(stderr, "cannot read %s\n", file.c_str());
            std::exit(EXIT_FAILURE);
        }
        while (read(opened, buffer.data(), buffer.size()) > 0)
            continue;
        close(opened);
    }
    return now_seconds() - start;
}

Spent check(const std::vector<std::string>& files)
{
    Command command = {.program = KOV_COMPANION, .arguments = {"report", "check", "--simulated"}};
    command.arguments.insert(command.arguments.end(), files.begin(), files.end());
    command.output_file = nowhere;
    return run(command, true); // the verdict on the simulated instrument is its own affair
}

/// A thousand reports of an acceptance test, and ten thousand: each of these ten times.
void measure_check(benchmark::State& state)
{
    constexpr int copies = 1000;
    constexpr int times_each = 10;
    const TemporaryFolder folder;
    const std::filesystem::path first = folder.name() / "0.txt";
    (void)run(
        {.program = KOV_ACCEPTANCE_RUN, .arguments = {first.string()}, .output_file = nowhere});
    std::vector<std::string> thousand = {first.string()};
    for (int i = 1; i < copies; ++i) {
        thousand.push_back((folder.name() / (std::to_string(i) + ".txt")).string());
        std::filesystem::copy_file(first, thousand.back());
    }
    std::vector<std::string> ten_thousand;
    for (int i = 0; i < times_each; ++i)
        ten_thousand.insert(ten_thousand.end(), thousand.begin(), thousand.end());

    std::vector<double> bytes, few, many;
    double few_kib = 0;
    double many_kib = 0;
    for (auto _ : state) {
        bytes.push_back(read_bytes(thousand));
        const Spent for_few = check(thousand);
        const Spent for_many = check(ten_thousand);
        few.push_back(for_few.seconds);
        many.push_back(for_many.seconds);
        few_kib = for_few.most_memory_kib;
        many_kib = for_many.most_memory_kib;
        state.SetIterationTime(for_few.seconds);
    }
    note_result("checking 1000 reports / reading their bytes", median(few) / median(bytes),
                at_most(40));
    note_result("checking 10 000 reports / 1000", median(many) / median(few), at_most(10.5));
    note_result("memory for checking 10 000 reports / 1000", many_kib / few_kib, at_most(1.5));
}

} // namespace

void register_reports()
{
    benchmark::RegisterBenchmark("checking reports", measure_check)
        ->Iterations(3)
        ->UseManualTime()
        ->Unit(benchmark::kMillisecond);
}

} // namespace bench
