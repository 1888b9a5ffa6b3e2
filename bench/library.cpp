#include "bench/library.h"

#include "bench/support/system_calls.h"
#include "bench/support/temporary_file.h"
#include "devlib/COM-KOV-CTRL.h"
#include "frame/device_library.h"

#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <dlfcn.h>
#include <unistd.h>
#include <utility>

namespace bench
{

namespace
{

constexpr double busy_seconds = 300e-6;

struct Progress {
    Window window;
    std::function<void()> at_end;
    std::uint32_t calls = 0;
    std::uint32_t next_mark = 0;
    bool inside = false;   ///< the window has started and not ended
    bool finished = false; ///< it has ended
    double start_seconds = 0.0;
    double left_seconds = 0.0; ///< processor time at the end of the last call
    SystemCalls start_calls;
    Usage usage;
};

Progress progress;

/// The simulated instrument's own function.
decltype(&COM_KOV_CTRL_GetHousekeeping) instrument_housekeeping = nullptr;

double clock_seconds(clockid_t clock)
{
    timespec now = {};
    clock_gettime(clock, &now);
    return static_cast<double>(now.tv_sec) + static_cast<double>(now.tv_nsec) * 1e-9;
}

/// The window starts or ends at the beginning of this call.
void pass_mark()
{
    if (!progress.inside) {
        progress.inside = true;
        progress.next_mark += progress.window.cycles;
        progress.start_calls = system_calls;
        progress.usage = {};
        progress.start_seconds = now_seconds();
        return;
    }
    Usage& usage = progress.usage;
    usage.cycles = progress.window.cycles;
    usage.seconds = now_seconds() - progress.start_seconds;
    usage.writes = system_calls.writes - progress.start_calls.writes;
    usage.written_bytes = system_calls.written_bytes - progress.start_calls.written_bytes;
    usage.polls = system_calls.polls - progress.start_calls.polls;
    usage.reads = system_calls.reads - progress.start_calls.reads;
    progress.inside = false;
    progress.finished = true;
    progress.at_end();
}

} // namespace

double now_seconds()
{
    return clock_seconds(CLOCK_MONOTONIC);
}

double thread_seconds()
{
    return clock_seconds(CLOCK_THREAD_CPUTIME_ID);
}

bool open_instrument()
{
    const TemporaryFile scenario;
    scenario.write("latency 0\n");
    setenv("KOV_SIMULATOR_SCENARIO", scenario.name().c_str(), 1);
    setenv("KOV_SIMULATOR_STATE", "none", 1);
    const bool opened = COM_KOV_CTRL_Open(1) == 0;
    if (!opened)
        std::fprintf(stderr, "cannot open the instrument: %s\n", COM_KOV_CTRL_GetErrorMessage());
    unsetenv("KOV_SIMULATOR_SCENARIO"); // programs that are started here get an ordinary one
    unsetenv("KOV_SIMULATOR_STATE");
    // The program calls the functions that stand in front, too.
    for (std::size_t i = 0; i < devlib::function_count; ++i) {
        void* const function = dlsym(RTLD_DEFAULT, devlib::function_names[i].text);
        library_functions[i] = reinterpret_cast<platform::LibraryFunctionPointer>(function);
    }
    void* const found = dlsym(RTLD_NEXT, "COM_KOV_CTRL_GetHousekeeping");
    instrument_housekeeping = reinterpret_cast<decltype(instrument_housekeeping)>(found);
    return opened && instrument_housekeeping != nullptr;
}

void start_window(const Window& window, std::function<void()> at_end)
{
    progress = {};
    progress.window = window;
    progress.at_end = std::move(at_end);
    progress.next_mark = window.warm_up + 1;
    progress.left_seconds = thread_seconds();
}

void take_answer_time()
{
    if (progress.window.answer != Answer::after_300_us)
        return;
    const double end = now_seconds() + busy_seconds;
    while (now_seconds() < end) {
    }
}

Usage window_usage()
{
    return progress.usage;
}

} // namespace bench

using bench::Answer;
using bench::progress;

std::int32_t COM_KOV_CTRL_GetHousekeeping(double* voltage24, double* voltage5, double* voltage33,
                                          double* temperatureCPU, double* temperaturePSU)
{
    if (progress.window.metered)
        progress.usage.outside_seconds +=
            progress.finished ? 0.0 : bench::thread_seconds() - progress.left_seconds;
    if (++progress.calls == progress.next_mark)
        bench::pass_mark();
    if (progress.finished) [[unlikely]]
        usleep(1000);
    std::int32_t status = 0;
    if (progress.window.answer == Answer::by_instrument) {
        status = bench::instrument_housekeeping(voltage24, voltage5, voltage33, temperatureCPU,
                                                temperaturePSU);
    } else {
        bench::take_answer_time();
        const double change = (progress.calls & 1023U) * 0.001;
        *voltage24 = 23.5 + change;
        *voltage5 = 4.5 + change;
        *voltage33 = 2.8 + change;
        *temperatureCPU = 35.0 + 10.0 * change;
        *temperaturePSU = 45.0 - 10.0 * change;
    }
    if (progress.window.metered)
        progress.left_seconds = bench::thread_seconds();
    return status;
}
