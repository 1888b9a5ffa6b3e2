// Benchmarks whose results are ratios of two measurements of the same run.

#include "bench/benchmarks.h"
#include "bench/library.h"
#include "bench/support/results.h"
#include "bench/support/terminal.h"
#include "frame/platform/platform.h"

#include <benchmark/benchmark.h>
#include <cstdlib>

int main(int argc, char** argv)
{
    setenv("TERM", "xterm-256color", 1);
    unsetenv("NO_COLOR");
    unsetenv("CLICOLOR_FORCE");
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv) || !bench::open_instrument())
        return EXIT_FAILURE;
    {
        // The program notes once what it runs on.
        const bench::Terminal terminal;
        platform::start();
        (void)platform::output_is_terminal();
    }
    bench::register_live_displays();
    bench::register_startup();
    bench::register_key_wait();
    bench::register_memory_file();
    bench::register_config_reader();
    bench::register_device_transfers();
    bench::register_acceptance_test();
    bench::register_recordings();
    bench::register_journal();
#ifdef KOV_COMPANION
    bench::register_reports();
#endif
    benchmark::RunSpecifiedBenchmarks();
    bench::print_results();
    return EXIT_SUCCESS;
}
