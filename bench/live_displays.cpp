#include "bench/benchmarks.h"
#include "bench/displays.h"
#include "bench/library.h"
#include "bench/support/results.h"
#include "bench/support/terminal.h"

#include <algorithm>
#include <benchmark/benchmark.h>
#include <string>
#include <vector>

namespace bench
{

namespace
{

constexpr char escape_key = '\033';

struct Subject {
    const char* name;
    Display display;
    Display ncurses_display;
    BareLoop bare_loop;
    TerminalKind terminal = {};
    double seconds = 0.25;      ///< of a measurement
    std::uint32_t warm_up = 64; ///< cycles before it
};

constexpr Subject housekeeping = {"5 fields", show_housekeeping, show_housekeeping_with_ncurses,
                                  read_housekeeping};
constexpr Subject wide = {"130 fields", show_wide, show_wide_with_ncurses, read_wide};

/// The full screen does not fit a smaller window.
constexpr TerminalKind high_terminal = {.rows = 62};
constexpr Subject full_screen = {"full screen",    show_full_screen, nullptr,
                                 read_full_screen, high_terminal,    1.0};
/// What the system holds for the terminal is full when the measurement begins.
constexpr Subject slow_full_screen = {"full screen on 100 KB/s",
                                      show_full_screen,
                                      nullptr,
                                      read_full_screen,
                                      {.rows = high_terminal.rows, .bytes_per_second = 100'000},
                                      2.0,
                                      500};

const char* name_of(Answer answer)
{
    switch (answer) {
    case Answer::at_once:
        return "empty function";
    case Answer::after_300_us:
        return "300 us a call";
    case Answer::by_instrument:
        return "instrument, no delay";
    }
    return "";
}

std::string name_of(const char* what, const Subject& subject, Answer answer)
{
    return std::string{what} + ", " + subject.name + ", " + name_of(answer);
}

Usage run_display(Display display, const Window& window, TerminalKind kind = {})
{
    const Terminal terminal{kind};
    start_window(window, [&terminal] { terminal.type(escape_key); });
    display();
    return window_usage();
}

Usage run_bare_loop(BareLoop loop, const Window& window)
{
    start_window(window, [] {});
    loop(calls_of(window));
    return window_usage();
}

/// Cycles that take about so long, by a short run.
std::uint32_t cycles_in(double seconds, const Usage& trial)
{
    return static_cast<std::uint32_t>(std::max(trial.cycles_per_second() * seconds, 100.0));
}

std::uint32_t display_cycles(Display display, Answer answer, double seconds, TerminalKind kind = {})
{
    constexpr double trial_seconds = 0.03;
    Usage trial = run_display(display, {.answer = answer, .cycles = 50}, kind);
    trial =
        run_display(display, {.answer = answer, .cycles = cycles_in(trial_seconds, trial)}, kind);
    return cycles_in(seconds, trial);
}

/// The display's cycle rate against that of the library calls alone. The two take turns, so that
/// whatever else the computer does hits both.
void compare_rates(benchmark::State& state, const Subject& subject, Answer answer, Goal goal)
{
    const Window shown = {
        .answer = answer,
        .cycles = display_cycles(subject.display, answer, subject.seconds, subject.terminal),
        .warm_up = subject.warm_up};
    Window bare = shown;
    bare.warm_up = 1;
    bare.cycles = cycles_in(subject.seconds, run_bare_loop(subject.bare_loop, bare));
    std::vector<double> ratios, rates;
    for (auto _ : state) {
        const double loop = run_bare_loop(subject.bare_loop, bare).cycles_per_second();
        const Usage display = run_display(subject.display, shown, subject.terminal);
        ratios.push_back(display.cycles_per_second() / loop);
        state.SetIterationTime(display.seconds / display.cycles);
    }
    state.counters["ratio"] = median(ratios);
    note_result(name_of("rate / bare loop", subject, answer), median(ratios), goal);
}

/// What goes to the terminal once the first cycles are over.
void count_traffic(benchmark::State& state, const Subject& subject, Answer answer, Goal goal)
{
    constexpr double seconds = 1.5;
    const Window window = {.answer = answer,
                           .cycles =
                               display_cycles(subject.display, answer, seconds, subject.terminal),
                           .warm_up = subject.warm_up};
    Usage usage;
    for (auto _ : state) {
        usage = run_display(subject.display, window, subject.terminal);
        state.SetIterationTime(usage.seconds / usage.cycles);
    }
    const auto note = [&](const char* what, double measured, Goal its_goal = no_goal) {
        state.counters[what] = measured;
        note_result(name_of(what, subject, answer), measured, its_goal);
    };
    note("writes a second", usage.per_second(usage.writes), goal);
    note("bytes a write", static_cast<double>(usage.written_bytes) /
                              static_cast<double>(std::max<std::uint64_t>(usage.writes, 1)));
    note("bytes a cycle", usage.per_cycle(usage.written_bytes));
    note("system calls a cycle", usage.per_cycle(usage.writes + usage.polls + usage.reads));
}

/// The processor time that a display adds to the library calls, against the display in ncurses.
void compare_processor_time(benchmark::State& state, const Subject& subject, Answer answer,
                            Goal goal)
{
    constexpr double seconds = 0.25;
    const auto window_of = [&](Display display) {
        return Window{
            .answer = answer, .cycles = display_cycles(display, answer, seconds), .metered = true};
    };
    const Window ours = window_of(subject.display);
    const Window theirs = window_of(subject.ncurses_display);
    const auto microseconds = [](const Usage& usage) {
        return usage.outside_seconds / usage.cycles * 1e6;
    };
    std::vector<double> added_by_us, added_by_ncurses, ratios;
    for (auto _ : state) {
        // Outside the library the bare loop does nothing but measure, too.
        const double loop = microseconds(run_bare_loop(subject.bare_loop, ours));
        const double us = microseconds(run_display(subject.display, ours)) - loop;
        const double ncurses = microseconds(run_display(subject.ncurses_display, theirs)) - loop;
        added_by_us.push_back(us);
        added_by_ncurses.push_back(ncurses);
        ratios.push_back(us / ncurses);
        state.SetIterationTime(std::max(us, 0.0) * 1e-6);
    }
    state.counters["us"] = median(added_by_us);
    state.counters["ncurses_us"] = median(added_by_ncurses);
    state.counters["ratio"] = median(ratios);
    note_result(name_of("processor time / ncurses", subject, answer), median(ratios), goal);
}

using Measure = void (*)(benchmark::State&, const Subject&, Answer, Goal);

void add(const char* name, Measure measure, const Subject& subject, Answer answer, Goal goal,
         int repetitions)
{
    benchmark::RegisterBenchmark(
        name_of(name, subject, answer).c_str(),
        [=](benchmark::State& state) { measure(state, subject, answer, goal); })
        ->Iterations(repetitions)
        ->UseManualTime()
        ->Unit(benchmark::kMicrosecond);
}

} // namespace

void register_live_displays()
{
    constexpr int pairs = 9;
    const auto add_rate = [](const Subject& subject, Answer answer, Goal goal) {
        add("rate", compare_rates, subject, answer, goal, pairs);
    };
    add_rate(housekeeping, Answer::after_300_us, at_least(0.99));
    add_rate(wide, Answer::after_300_us, at_least(0.99));
    add_rate(housekeeping, Answer::by_instrument, no_goal);
    add_rate(wide, Answer::by_instrument, no_goal);
    add_rate(housekeeping, Answer::at_once, no_goal);
    add_rate(wide, Answer::at_once, no_goal);

    constexpr int long_pairs = 5;
    add("rate", compare_rates, full_screen, Answer::after_300_us, at_least(0.985), long_pairs);
    add("rate", compare_rates, slow_full_screen, Answer::after_300_us, at_least(0.95), long_pairs);
    add("traffic", count_traffic, full_screen, Answer::after_300_us, at_most(110.0), 1);
    add("traffic", count_traffic, slow_full_screen, Answer::after_300_us, no_goal, 1);

    for (const Subject& subject : {housekeeping, wide})
        for (const Answer answer : {Answer::after_300_us, Answer::by_instrument})
            add("traffic", count_traffic, subject, answer, at_most(110.0), 1);

    for (const Subject& subject : {housekeeping, wide})
        for (const Answer answer : {Answer::at_once, Answer::by_instrument, Answer::after_300_us})
            add("processor time", compare_processor_time, subject, answer, at_most(1.0 / 50.0),
                pairs);
}

} // namespace bench
