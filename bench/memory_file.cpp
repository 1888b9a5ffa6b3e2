#include "bench/benchmarks.h"
#include "bench/library.h"
#include "bench/support/results.h"
#include "bench/support/temporary_file.h"
#include "diagnostics/memory_image.h"

#include <benchmark/benchmark.h>
#include <cstdio>
#include <cstdlib>
#include <vector>

namespace bench
{

namespace
{

constexpr int blocks = 1171;
constexpr int values = blocks * static_cast<int>(memory_block_size);

MemoryBlock block_of_all_digits()
{
    MemoryBlock block;
    for (std::size_t i = 0; i < block.size(); ++i)
        block[i] = static_cast<std::uint8_t>(i * 37);
    return block;
}

bool write_blocks(const char* name)
{
    const MemoryBlock block = block_of_all_digits();
    OutputFile file;
    bool good = file.create(name);
    for (int i = 0; i < blocks && good; ++i)
        good = write_block(file, block);
    return good && file.close();
}

bool print_lines(const char* name)
{
    const MemoryBlock block = block_of_all_digits();
    std::FILE* file = std::fopen(name, "w");
    bool good = file != nullptr;
    for (int i = 0; i < values && good; ++i)
        good = std::fprintf(file, "%02X\n", block[static_cast<std::size_t>(i) % block.size()]) > 0;
    return good && std::fclose(file) == 0;
}

bool read_blocks(const char* name)
{
    MemoryBlock block;
    InputFile file;
    bool good = file.open(name);
    for (int i = 0; i < blocks && good; ++i)
        good = read_block(file, block);
    benchmark::DoNotOptimize(block);
    return good && file.close();
}

bool scan_values(const char* name)
{
    unsigned value = 0;
    std::FILE* file = std::fopen(name, "r");
    bool good = file != nullptr;
    for (int i = 0; i < values && good; ++i)
        good = std::fscanf(file, "%02X\n", &value) == 1;
    benchmark::DoNotOptimize(value);
    return good && std::fclose(file) == 0;
}

using Transfer = bool (*)(const char* file_name);

double seconds_of(Transfer transfer, const char* file_name)
{
    const double start = thread_seconds();
    if (!transfer(file_name)) {
        std::fprintf(stderr, "cannot use %s\n", file_name);
        std::exit(EXIT_FAILURE);
    }
    return thread_seconds() - start;
}

/// A whole memory image to or from a file: ours against the C library's formatted functions.
void compare(benchmark::State& state, const char* name, Transfer ours, Transfer theirs, Goal goal)
{
    std::vector<double> our_times, their_times;
    const TemporaryFile temporary;
    const char* const file = temporary.name().c_str();
    (void)seconds_of(print_lines, file); // for those that read
    for (auto _ : state) {
        their_times.push_back(seconds_of(theirs, file));
        our_times.push_back(seconds_of(ours, file));
        state.SetIterationTime(our_times.back());
    }
    const double ratio = median(our_times) / median(their_times);
    state.counters["ratio"] = ratio;
    note_result(name, ratio, goal);
}

void add(const char* name, Transfer ours, Transfer theirs, Goal goal)
{
    benchmark::RegisterBenchmark(
        name, [=](benchmark::State& state) { compare(state, name, ours, theirs, goal); })
        ->Iterations(51)
        ->UseManualTime()
        ->Unit(benchmark::kMicrosecond);
}

} // namespace

void register_memory_file()
{
    add("memory image to a file / fprintf a line", write_blocks, print_lines, at_most(0.25));
    add("memory image from a file / fscanf a value", read_blocks, scan_values, at_most(0.1));
}

} // namespace bench
