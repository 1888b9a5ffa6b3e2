#include "bench/benchmarks.h"
#include "bench/library.h"
#include "bench/support/results.h"
#include "bench/support/terminal.h"
#include "frame/platform/platform.h"
#include "frame/terminal/console.h"
#include "frame/terminal/keys.h"

#include <benchmark/benchmark.h>
#include <vector>

namespace bench
{

namespace
{

constexpr int wait_ms = 1000;

bool wait_for_any_key()
{
    return wait_for_key_until(platform::tick_ms() + wait_ms);
}

/// The wait that the blank key ends.
bool wait_for_blank()
{
    return wait_until(platform::tick_ms() + wait_ms, true);
}

using Wait = bool (*)();

/// The processor time of a wait, in parts of its length.
void measure_wait(benchmark::State& state, const char* name, Wait wait)
{
    std::vector<double> shares;
    const Terminal terminal;
    console.start();
    start_keys();
    for (auto _ : state) {
        const double start = thread_seconds();
        bool came = wait();
        benchmark::DoNotOptimize(came);
        const double used = thread_seconds() - start;
        shares.push_back(used * 1000.0 / wait_ms);
        state.SetIterationTime(used);
    }
    state.counters["share"] = median(shares);
    note_result(name, median(shares), at_most(0.0003));
}

void add(const char* name, Wait wait)
{
    benchmark::RegisterBenchmark(name,
                                 [=](benchmark::State& state) { measure_wait(state, name, wait); })
        ->Iterations(5)
        ->UseManualTime()
        ->Unit(benchmark::kMicrosecond);
}

} // namespace

void register_key_wait()
{
    add("processor time / time, waiting for a key", wait_for_any_key);
    add("processor time / time, waiting unless blank is pressed", wait_for_blank);
}

} // namespace bench
