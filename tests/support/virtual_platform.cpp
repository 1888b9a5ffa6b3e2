#include "tests/support/virtual_platform.h"

#include <algorithm>
#include <chrono>
#include <csignal>
#include <limits>

#include <gtest/gtest.h>

#include "tests/support/virtual_time.h"

VirtualPlatform virtual_platform;

namespace
{

int raised_signal = 0;
std::size_t next_signal = 0;
std::size_t next_window_event = 0;
std::size_t next_typed = 0;
std::size_t taken_of_typed = 0; ///< bytes of the next typed keys that were read already
std::int64_t last_tick_ms = -1;
int ticks_without_progress = 0;

constexpr std::int64_t never = std::numeric_limits<std::int64_t>::max();

std::int64_t now_ms()
{
    return virtual_time::now_us() / 1000;
}

void end_hanging_program(const char* what)
{
    ADD_FAILURE() << "the program would hang: " << what;
    raised_signal = SIGKILL;
}

void raise_due_signals()
{
    const auto& signals = virtual_platform.signals;
    while (next_signal < signals.size() && signals[next_signal].at_ms <= now_ms())
        raised_signal = signals[next_signal++].number;
}

std::int64_t next_event_ms()
{
    const VirtualPlatform& world = virtual_platform;
    std::int64_t next = never;
    if (next_typed < world.typed.size())
        next = std::min(next, world.typed[next_typed].at_ms);
    if (next_signal < world.signals.size())
        next = std::min(next, world.signals[next_signal].at_ms);
    if (next_window_event < world.window_events.size())
        next = std::min(next, world.window_events[next_window_event].at_ms);
    return next;
}

bool interrupts(std::int64_t at_ms)
{
    const VirtualPlatform& world = virtual_platform;
    return (next_signal < world.signals.size() && world.signals[next_signal].at_ms <= at_ms) ||
           (next_window_event < world.window_events.size() &&
            world.window_events[next_window_event].at_ms <= at_ms);
}

} // namespace

void reset_virtual_platform()
{
    virtual_platform = {};
    raised_signal = 0;
    next_signal = next_window_event = next_typed = taken_of_typed = 0;
    last_tick_ms = -1;
    ticks_without_progress = 0;
    virtual_time::reset();
}

namespace platform
{

void start() {}

std::span<char*> arguments(int count, char** values)
{
    return {values, static_cast<std::size_t>(count)};
}

void restore_terminal()
{
    ++virtual_platform.restores;
}

std::int64_t tick_ms()
{
    constexpr int too_many = 2'000'000;
    constexpr std::int64_t longest_run_ms = 3 * 3'600'000;
    if (now_ms() != last_tick_ms)
        ticks_without_progress = 0;
    else if (++ticks_without_progress == too_many)
        end_hanging_program("it looks at the clock, which stands still");
    last_tick_ms = now_ms();
    if (last_tick_ms > longest_run_ms && raised_signal == 0)
        end_hanging_program("hours have passed on its clock");
    return last_tick_ms;
}

LocalTime local_time()
{
    namespace chrono = std::chrono;
    const chrono::sys_time<chrono::milliseconds> now{
        chrono::milliseconds{virtual_time::wall_clock_start_ms + now_ms()}};
    const auto days = chrono::floor<chrono::days>(now);
    const chrono::year_month_day date{days};
    const chrono::hh_mm_ss time{now - days};
    return {.year = static_cast<int>(date.year()),
            .month = static_cast<int>(static_cast<unsigned>(date.month())),
            .day = static_cast<int>(static_cast<unsigned>(date.day())),
            .weekday = static_cast<int>(chrono::weekday{days}.c_encoding()),
            .hour = static_cast<int>(time.hours().count()),
            .minute = static_cast<int>(time.minutes().count()),
            .second = static_cast<int>(time.seconds().count()),
            .millisecond = static_cast<int>(time.subseconds().count())};
}

void sleep_ms(std::int64_t milliseconds)
{
    const std::int64_t end = now_ms() + milliseconds;
    while (now_ms() < end && stop_signal() == 0) {
        const std::int64_t signal = next_signal < virtual_platform.signals.size()
                                        ? virtual_platform.signals[next_signal].at_ms
                                        : never;
        virtual_time::advance_us((std::min(signal, end) - now_ms()) * 1000);
    }
}

bool output_is_terminal()
{
    return virtual_platform.output_is_terminal;
}

WindowSize window_size()
{
    return virtual_platform.size;
}

WindowChange take_window_change()
{
    WindowChange change = WindowChange::none;
    auto& events = virtual_platform.window_events;
    while (next_window_event < events.size() && events[next_window_event].at_ms <= now_ms()) {
        virtual_platform.size = events[next_window_event].size;
        change = events[next_window_event++].change;
    }
    return change;
}

bool write_output(std::string_view bytes)
{
    ++virtual_platform.writes;
    if (virtual_platform.output_is_closed) {
        raised_signal = SIGPIPE;
        return false;
    }
    virtual_platform.output += bytes;
    return true;
}

void protect_run(bool on)
{
    virtual_platform.run_is_protected = on;
}

std::size_t write_some_output(std::string_view bytes)
{
    const std::string_view taken = bytes.substr(0, virtual_platform.output_room);
    virtual_platform.output_room -=
        virtual_platform.output_room == std::string::npos ? 0 : taken.size();
    return taken.empty() || write_output(taken) ? taken.size() : bytes.size();
}

void note_rows_to_leave(int) {}

bool input_is_terminal()
{
    return virtual_platform.input_is_terminal;
}

void start_raw_input()
{
    ++virtual_platform.raw_input_starts;
}

InputResult read_input(unsigned char* buffer, std::size_t size, std::size_t& count,
                       std::int64_t timeout_ms)
{
    const std::int64_t deadline = timeout_ms < 0 ? never : now_ms() + timeout_ms;
    count = 0;
    for (;;) {
        const auto& typed = virtual_platform.typed;
        if (stop_signal() != 0)
            return InputResult::nothing;
        if (next_typed == typed.size() && !virtual_platform.input_is_terminal)
            return InputResult::ended;
        while (count < size && next_typed < typed.size() && typed[next_typed].at_ms <= now_ms()) {
            const std::string& bytes = typed[next_typed].bytes;
            const std::size_t taken =
                bytes.copy(reinterpret_cast<char*>(buffer) + count, size - count, taken_of_typed);
            count += taken;
            taken_of_typed += taken;
            if (taken_of_typed == bytes.size()) {
                ++next_typed;
                taken_of_typed = 0;
            }
        }
        if (count > 0)
            return InputResult::bytes;
        const std::int64_t next = next_event_ms();
        if (next == never && deadline == never) {
            end_hanging_program("it waits for a key that nobody will press");
            return InputResult::nothing;
        }
        const bool interrupted = interrupts(std::min(next, deadline));
        virtual_time::advance_us(std::max<std::int64_t>(std::min(next, deadline) - now_ms(), 0) *
                                 1000);
        if (interrupted || now_ms() >= deadline)
            return InputResult::nothing;
    }
}

void drop_input()
{
    const auto& typed = virtual_platform.typed;
    while (next_typed < typed.size() && typed[next_typed].at_ms <= now_ms()) {
        virtual_platform.dropped_bytes +=
            static_cast<int>(typed[next_typed].bytes.size() - taken_of_typed);
        ++next_typed;
        taken_of_typed = 0;
    }
}

void begin_writing_file() {}

void end_writing_file() {}

std::FILE* open_file(const char* name, const char* mode)
{
    return std::fopen(name, *mode == 'w' ? "wb" : mode); // the same line ends everywhere
}

bool store_file(std::FILE*)
{
    ++virtual_platform.stores;
    return true;
}

int stop_signal()
{
    raise_due_signals();
    return raised_signal;
}

const char* environment(const char* name)
{
    const auto found = virtual_platform.environment.find(name);
    return found == virtual_platform.environment.end() ? nullptr : found->second.c_str();
}

} // namespace platform
