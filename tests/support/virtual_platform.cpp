#include "tests/support/virtual_platform.h"

#include "tests/support/linked_functions.h"
#include "tests/support/virtual_time.h"

#include <algorithm>
#include <chrono>
#include <csignal>
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <iterator>
#include <limits>
#include <map>
#include <utility>

VirtualPlatform virtual_platform;

namespace
{

int raised_signal = 0;
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

std::string text_of_file(const char* name)
{
    std::ifstream file{name, std::ios::binary};
    return {std::istreambuf_iterator<char>{file}, {}};
}

/// What the file of a marked copy held then. (Not all systems set times as finely as a mark is.)
std::map<std::string, std::string>& marked_copies()
{
    static std::map<std::string, std::string> copies; // outlives a trial, as files do
    return copies;
}

bool is_marked(const char* name, const char* copy_name)
{
    const auto found = marked_copies().find(std::filesystem::absolute(copy_name).string());
    return found != marked_copies().end() && std::filesystem::exists(copy_name) &&
           found->second == text_of_file(name);
}

/// When the first of the events happens.
template <class Events>
std::int64_t next_ms(const Events& events)
{
    return events.empty() ? never : events.front().at_ms;
}

/// Whether the next event has happened.
template <class Events>
bool is_due(const Events& events)
{
    return next_ms(events) <= now_ms();
}

} // namespace

void reset_virtual_platform()
{
    virtual_platform = {};
    raised_signal = 0;
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

void restore_terminal() {}

std::int64_t tick_ms()
{
    constexpr int too_many = 2'000'000;
    constexpr std::int64_t longest_run_ms = 10'800'000; // three hours
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
        const std::int64_t next = std::min(next_ms(virtual_platform.signals), end);
        virtual_time::advance_us((next - now_ms()) * 1000);
    }
}

void rest_ms(std::int64_t milliseconds)
{
    virtual_time::advance_us(milliseconds * 1000);
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
    for (auto& events = virtual_platform.window_events; is_due(events); events.pop_front()) {
        virtual_platform.size = events.front().size;
        change = events.front().change;
    }
    return change;
}

std::size_t write_output(std::string_view bytes, int)
{
    virtual_platform.writes += bytes.empty() ? 0U : 1U;
    if (virtual_platform.output_is_closed)
        raised_signal = SIGPIPE;
    else
        virtual_platform.output += bytes;
    return bytes.size();
}

void hold_output(bool) {}

std::string output_failure()
{
    return {};
}

void tell_error(std::string_view) {}

void protect_run(bool on)
{
    virtual_platform.run_is_protected = on;
}

void set_last_act(const LastAct*) {}

std::size_t write_some_output(std::string_view bytes, int)
{
    const std::string_view taken = bytes.substr(0, virtual_platform.output_room);
    virtual_platform.output_room -=
        virtual_platform.output_room == std::string::npos ? 0 : taken.size();
    return write_output(taken, 0);
}

bool input_is_terminal()
{
    return virtual_platform.input_is_terminal;
}

void start_raw_input() {}

InputResult read_input(unsigned char* buffer, std::size_t size, std::size_t& count,
                       std::int64_t timeout_ms)
{
    const std::int64_t deadline = timeout_ms < 0 ? never : now_ms() + timeout_ms;
    count = 0;
    for (;;) {
        VirtualPlatform& world = virtual_platform;
        if (stop_signal() != 0)
            return InputResult::nothing;
        if (world.typed.empty() && !world.input_is_terminal)
            return InputResult::ended;
        while (count < size && is_due(world.typed)) {
            std::string& bytes = world.typed.front().bytes;
            const std::size_t taken =
                bytes.copy(reinterpret_cast<char*>(buffer) + count, size - count);
            count += taken;
            bytes.erase(0, taken);
            if (bytes.empty())
                world.typed.pop_front();
        }
        if (count > 0)
            return InputResult::bytes;
        const std::int64_t interrupt =
            std::min(next_ms(world.signals), next_ms(world.window_events));
        const std::int64_t next = std::min({interrupt, next_ms(world.typed), deadline});
        if (next == never) {
            end_hanging_program("it waits for a key that nobody will press");
            return InputResult::nothing;
        }
        virtual_time::advance_us(std::max<std::int64_t>(next - now_ms(), 0) * 1000);
        if (interrupt <= next || now_ms() >= deadline)
            return InputResult::nothing;
    }
}

void drop_input()
{
    while (is_due(virtual_platform.typed))
        virtual_platform.typed.pop_front();
}

std::vector<LibraryCandidate> library_candidates(const std::string&, bool)
{
    return {{LibraryPlace::beside_program, "/usr/bin/libCOM-KOV-CTRL.so"}};
}

bool is_there(const std::string&)
{
    return true;
}

LibraryFailure look_beside(const std::string&)
{
    return {};
}

LibraryFailure load_library(const std::string&)
{
    return virtual_platform.library_failure;
}

LibraryFunctionPointer library_function(const char* name)
{
    if (virtual_platform.missing_functions.contains(name))
        return nullptr;
    return virtual_platform.library != nullptr
               ? virtual_platform.library->at(devlib::find_function(name))
               : linked_functions.at(name);
}

void begin_writing_file() {}

void end_writing_file() {}

std::thread start_thread(std::function<void()> work)
{
    return std::thread{std::move(work)};
}

std::FILE* open_file(const char* name, const char* mode, void (*)(const char* name))
{
    return std::fopen(name, *mode == 'w' ? "wb" : mode); // the same line ends everywhere
}

bool store_file(std::FILE*)
{
    ++virtual_platform.stores;
    return true;
}

FilePlace place_of_file(std::FILE*, const char* name)
{
    return std::filesystem::exists(name) ? FilePlace::there : FilePlace::nowhere;
}

Copied copy_file(const char* name, const char* copy_name)
{
    namespace fs = std::filesystem;
    std::error_code failed;
    if (!fs::is_regular_file(name, failed))
        return Copied::nothing;
    if (is_marked(name, copy_name))
        return Copied::already;
    if (fs::file_size(name) == 0)
        return Copied::nothing;
    if (fs::copy_file(name, copy_name, failed))
        return Copied::yes;
    return failed == std::errc::file_exists         ? Copied::name_taken
           : failed == std::errc::filename_too_long ? Copied::name_too_long
                                                    : Copied::no;
}

void mark_copy(const char* name, const char* copy_name)
{
    marked_copies()[std::filesystem::absolute(copy_name).string()] = text_of_file(name);
}

ProgramRun run_program(const std::vector<std::string>&, std::string_view)
{
    return {}; // there is none
}

void remove_file(const char* name)
{
    std::error_code failed;
    std::filesystem::remove(name, failed);
}

int stop_signal()
{
    for (auto& signals = virtual_platform.signals; is_due(signals); signals.pop_front())
        raised_signal = signals.front().number;
    return raised_signal;
}

const char* environment(const char* name)
{
    const auto found = virtual_platform.environment.find(name);
    return found == virtual_platform.environment.end() ? nullptr : found->second.c_str();
}

} // namespace platform
