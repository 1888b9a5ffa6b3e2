#include "bench/benchmarks.h"
#include "bench/library.h"
#include "bench/support/results.h"
#include "bench/support/set_file.h"
#include "config/file_format.h"
#include "frame/switches.h"
#include "tests/support/restarting_reader.h"

#include <benchmark/benchmark.h>
#include <string>
#include <vector>

namespace bench
{

namespace
{

/// Seconds that it takes to read all sets of a file, from its bytes to records.
double seconds_with_index(const std::string& file, unsigned count)
{
    const double start = thread_seconds();
    ConfigFileIndex index;
    index.add(file);
    index.finish();
    for (unsigned number = 1; number <= count; ++number) {
        const std::string* name = index.find(number, name_key);
        ConfigRecord record;
        const char* failed = read_record(index, number, record);
        benchmark::DoNotOptimize(name);
        benchmark::DoNotOptimize(failed);
    }
    return thread_seconds() - start;
}

/// The same, when each entry is looked for from the start of the file.
double seconds_from_start(const std::string& file, unsigned count)
{
    const double start = thread_seconds();
    for (unsigned number = 1; number <= count; ++number) {
        const std::string section = section_name(number);
        benchmark::DoNotOptimize(read_entry_from_start(file, section, name_key));
        ConfigRecord record = {};
        for (const ConfigEntry& entry : config_entries) {
            const auto value = read_entry_from_start(file, section, entry.key);
            bool good = value && set_entry(entry, *value, record);
            benchmark::DoNotOptimize(good);
        }
    }
    return thread_seconds() - start;
}

double median_with_index(const std::string& file, unsigned count)
{
    std::vector<double> seconds(21);
    for (double& one : seconds)
        one = seconds_with_index(file, count);
    return median(seconds);
}

void measure(benchmark::State& state)
{
    constexpr unsigned half = highest_set_number / 2;
    const std::string all = file_of_sets(highest_set_number);
    const std::string some = file_of_sets(half);
    const std::string twice = file_of_sets(2 * half);
    for (auto _ : state) {
        const double with_index = median_with_index(all, highest_set_number);
        note_result("reading 1023 sets / looking from the start for each entry",
                    with_index / seconds_from_start(all, highest_set_number), at_most(1.0 / 500));
        note_result("reading 1022 sets / 511 sets",
                    median_with_index(twice, 2 * half) / median_with_index(some, half),
                    at_most(2.5));
        state.counters["ms"] = with_index * 1e3;
        state.SetIterationTime(with_index);
    }
}

} // namespace

void register_config_reader()
{
    benchmark::RegisterBenchmark("reading 1023 sets", measure)
        ->Iterations(1)
        ->UseManualTime()
        ->Unit(benchmark::kMillisecond);
}

} // namespace bench
