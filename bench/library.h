/// The device library as the benchmarks need it. GetHousekeeping of this executable stands in front
/// of the simulated instrument's: it answers the way that was asked for, and measures what happens
/// between two of its calls. So do the other functions that the full screen calls in its cycles,
/// but without measuring. All the rest are the simulated instrument's.
#pragma once

#include <cstdint>
#include <functional>

namespace bench
{

enum class Answer {
    at_once,       ///< an empty function that writes five values, new ones each time
    after_300_us,  ///< the same, busy for 300 us before
    by_instrument, ///< the simulated instrument without an answer time
};

/// What a run is measured by.
struct Window {
    Answer answer = Answer::at_once;
    std::uint32_t cycles = 0;   ///< calls from the window's start to its end
    std::uint32_t warm_up = 64; ///< calls before it: a display draws in each of its first 32 cycles
    bool metered = false;       ///< measure the processor time outside the library, too
};

/// What the calling thread used from the window's start to its end.
struct Usage {
    std::uint32_t cycles = 0;
    double seconds = 0.0;
    double outside_seconds = 0.0; ///< processor time between the calls; metered windows only
    std::uint64_t writes = 0;
    std::uint64_t written_bytes = 0;
    std::uint64_t polls = 0;
    std::uint64_t reads = 0;

    [[nodiscard]] double cycles_per_second() const { return cycles / seconds; }
    [[nodiscard]] double per_second(std::uint64_t count) const
    {
        return static_cast<double>(count) / seconds;
    }
    [[nodiscard]] double per_cycle(std::uint64_t count) const
    {
        return static_cast<double>(count) / cycles;
    }
};

/// Opens the simulated instrument, without an answer time and without a state file. False, with a
/// message, when that fails.
[[nodiscard]] bool open_instrument();

/// Prepares the library for a run. `at_end` is called once, in the call that ends the window; calls
/// beyond that one take a millisecond and are not measured.
void start_window(const Window& window, std::function<void()> at_end);

/// Calls of a run that ends with its window.
[[nodiscard]] inline std::uint32_t calls_of(const Window& window)
{
    return window.warm_up + window.cycles + 1;
}

/// Takes the answer time of the window's library.
void take_answer_time();

/// What the last run used.
[[nodiscard]] Usage window_usage();

/// Seconds of a clock that only ever goes forward.
[[nodiscard]] double now_seconds();

/// Processor time of the calling thread in seconds.
[[nodiscard]] double thread_seconds();

} // namespace bench
