#include "diagnostics/communication_tests.h"

#include "frame/device_call.h"
#include "frame/live_display.h"
#include "frame/platform/platform.h"
#include "frame/program.h"
#include "frame/terminal/console.h"
#include "frame/terminal/keys.h"
#include "frame/text/format.h"
#include "instrument/addresses.h"
#include "instrument/presence.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <optional>
#include <random>
#include <span>
#include <string>
#include <vector>

namespace
{

/// What one test does its own way.
struct Test {
    std::uint32_t longest = 0; ///< characters in a data set
    // The partner in the header: grey, bright white, grey.
    const char* before_partner = "";
    std::string partner;
    const char* behind_partner = "";
    std::vector<unsigned> targets = {0}; ///< one is chosen at random for each transfer
    bool shows_target = false;
    /// The counter is shown, and the keyboard looked at, once in so many cycles.
    std::uint32_t display_interval = 1;
    /// Kept: each display counts as a cycle, too, so that more cycles are told than transfers were
    /// made, and every rate comes out higher.
    bool counts_displays = false;
    /// One transfer.
    Failure (*transfer)(const char* text, unsigned target) = nullptr;
};

/// Characters that go along with each data set.
constexpr std::uint32_t frame_bytes = 2;

/// What came together; both numbers wrap at 32 bits.
struct Totals {
    std::uint32_t cycles = 0;
    std::uint32_t bytes = 0;
    std::int64_t start_ms = 0;

    [[nodiscard]] double kilobytes_per_second(std::int64_t now_ms) const
    {
        const auto elapsed = static_cast<double>(now_ms - start_ms);
        return elapsed > 0 ? static_cast<double>(bytes) * 1000.0 / elapsed / 1024.0 : 0.0;
    }
    [[nodiscard]] CycleRates rates() const { return {.cycles = cycles, .start_ms = start_ms}; }
};

/// The display cycle that the counter shows.
struct Shown {
    std::uint32_t cycle = 0;
    std::uint32_t set_bytes = 0;
    unsigned target = 0;
    std::optional<double> data_rate; ///< KB/s; none before the first transfer
    int key = 0;                     ///< the last one since the last drawing
};

/// The places of a running test.
struct Fields {
    Place key; ///< code of the last key
    Place end_of_start;
    Place counter;
};

Fields print_header(const Test& test)
{
    Fields fields;
    console.print("Testing communication with %s", test.before_partner);
    console.print(Color::value, "%s", test.partner.c_str());
    console.print("%sdata sets of up to ", test.behind_partner);
    console.print(Color::value, "%u", test.longest);
    console.print(" bytes (");
    console.print(Color::value, "%u", test.longest + frame_bytes);
    console.print(" bytes total)");
    print_how_to_quit();
    console.print(": ");
    fields.key = console.place();
    console.print("\r\n  Test started on  ");
    console.print(Color::value, "%s", timestamp().c_str());
    fields.end_of_start = console.place();
    console.print(", run ");
    fields.counter = console.place();
    return fields;
}

void draw(const Test& test, const Fields& fields, const Shown& shown)
{
    if (shown.cycle == 0)
        return; // nothing came so far
    console.print_at(fields.counter, Color::value, "#%u", shown.cycle);
    console.print(" (");
    if (test.shows_target) {
        console.print("mod.");
        console.print(Color::value, "%02u", shown.target);
        console.print(", ");
    }
    console.print(Color::value, "%3u", shown.set_bytes);
    console.print(" bytes");
    if (shown.data_rate) {
        console.print(", ");
        console.print(Color::value, "%.3lf", *shown.data_rate);
        console.print(" KB/s)");
    }
    console.clear_to_end_of_line();
    console.print_at(fields.key, Color::label, "%s", key_text(shown.key).c_str());
    console.flush_without_waiting();
}

using Random = std::minstd_rand;

std::uint32_t random_below(Random& random, std::size_t limit)
{
    return static_cast<std::uint32_t>(random() % limit);
}

/// Fills a text with characters from the blank to DEL.
void fill(Random& random, std::span<char> text)
{
    constexpr char first = ' ';
    constexpr unsigned characters = 96;
    for (char& c : text)
        c = static_cast<char>(first + random_below(random, characters));
}

/// Sends data sets until Esc, a request to end the program, or a failure.
Failure run_cycles(const Test& test, const Fields& fields, Totals& totals)
{
    std::array<char, largest_test_count + 1> text = {};
    Random random{static_cast<Random::result_type>(platform::tick_ms())};
    Shown shown;
    DrawPacer pacer;
    Failure failed;
    bool is_drawn = false;
    for (bool going_on = true; going_on;) {
        const unsigned target = test.targets[random_below(random, test.targets.size())];
        const std::uint32_t length = random_below(random, std::size_t{test.longest} + 1);
        const bool displays = ++totals.cycles % test.display_interval == 0;
        if (displays) {
            totals.cycles += static_cast<std::uint32_t>(test.counts_displays);
            shown.cycle = totals.cycles;
            shown.set_bytes = length + frame_bytes;
            shown.target = target;
        }
        fill(random, {text.data(), length});
        text[length] = '\0';
        totals.bytes += length + frame_bytes;
        failed = test.transfer(text.data(), target);
        if (failed || platform::stop_signal() != 0)
            break;
        // In every cycle: an Esc alone is known as such only some time after it came.
        const bool has_key = key_waiting();
        if (!displays)
            continue;
        const std::int64_t now = platform::tick_ms();
        shown.data_rate = totals.kilobytes_per_second(now);
        if (has_key) {
            shown.key = folded(read_key());
            going_on = shown.key != key::escape;
        } else if (is_drawn) {
            shown.key = 0;
        }
        is_drawn = pacer.is_due(now);
        if (is_drawn)
            draw(test, fields, shown);
    }
    draw(test, fields, shown);
    return failed;
}

void print_summary(const Totals& totals, bool failed)
{
    const std::int64_t now = platform::tick_ms();
    if (!failed)
        console.print(", stopped by user\r\n");
    console.print("  Test finished on ");
    console.print(Color::value, "%s", timestamp().c_str());
    console.print(" after ");
    console.print(Color::value, "%u", totals.cycles);
    console.print(" cycles, ");
    console.print(Color::value, "%u", totals.bytes);
    console.print(" (");
    console.print(Color::value, "%.2lE", static_cast<double>(totals.bytes));
    console.print(") bytes\r\n    data rate: ");
    console.print(Color::value, "%.3lf", totals.kilobytes_per_second(now));
    console.print(" KB/s, ");
    console.print(Color::value, "%.2lf", totals.rates().per_second(now));
    console.print(" cycles/s, mean response time: ");
    console.print(Color::value, "%.2lf", totals.rates().mean_ms(now));
    console.print(" ms\r\n");
}

void run_test(const Test& test)
{
    DisplayScope scope;
    const Fields fields = print_header(test);
    Totals totals{.start_ms = platform::tick_ms()};
    const Failure failed = run_cycles(test, fields, totals);
    if (failed) {
        // The line of the counter stays, for what it tells about the failure.
        console.print_at(fields.counter, Color::label, "\r\n");
        scope.end();
        report_error(failed);
    } else {
        console.move_to(fields.end_of_start);
        console.clear_to_end_of_line();
        scope.end();
    }
    if (totals.cycles > 1)
        print_summary(totals, static_cast<bool>(failed));
    else
        console.print("\r\n");
}

bool fail_with(const char* message)
{
    print_failure("%s", message);
    return false;
}

/// Sets the partner and the targets of a test of modules; false, with a message, when there are
/// none.
bool choose_targets(Test& test, unsigned address)
{
    progress("Getting module-presence flags:\r\n");
    ModulePresence presence;
    if (!succeeded(attempt_presence(presence)))
        return false;
    if (presence.valid == 0)
        return fail_with(presence_flags_invalid.text);
    test.behind_partner = " with ";
    test.targets = {address};
    if (address <= highest_slot) {
        const std::string slot = std::to_string(address);
        if (!presence.has_slot(address))
            return fail_with(("Module #" + slot + " not found!").c_str());
        test.before_partner = "the module ";
        test.partner = slot;
    } else if (address == all_modules) {
        test.targets = presence.present_slots();
        if (test.targets.empty())
            return fail_with("No modules found!");
        if (!program.quiet) {
            console.print(Color::value, "%zu", test.targets.size());
            console.print(" NOL module(s) ");
        }
        console.print("present\r\n");
        test.partner = "all";
        test.behind_partner = " modules with ";
        test.shows_target = true;
    }
    return true;
}

} // namespace

void test_controller(const Given& given)
{
    constexpr std::uint32_t display_interval = 123;
    run_test({.longest = std::min(given.number, largest_test_count),
              .display_interval = display_interval,
              .counts_displays = true,
              .transfer = [](const char* text, unsigned) { return attempt(LIB(Test), text); }});
}

void test_modules(const Given& given)
{
    Test test{.longest = std::min(given.number, largest_test_count),
              .transfer = [](const char* text, unsigned target) {
                  return attempt(LIB(TestModule), text, target);
              }};
    if (choose_targets(test, given.address))
        run_test(test);
}
