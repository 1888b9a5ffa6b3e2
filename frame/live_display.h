/// The live display that all continuous commands share: header, prompt, rates, Esc, clean-up. A
/// command gives it three routines: draw the labels once, read, draw the values.
///
///     struct Values { std::uint8_t state = 0; };
///     Field field;
///     run_live_display<Values>(
///         {.title = "Fan state", .continuous = given.capital},
///         [&](LiveFields& live) { field = place_field("state: ", 4);
///         live.place_rates(rates_in_line); },
///         [&](Values& values) { return attempt(LIB(GetFanState), &values.state); },
///         [&](const Values& values) { field.show(ok_or_fail(values.state != 0)); });
///
/// The device is read in every cycle, but drawing is done only when it is due: the rate that is
/// shown is then the device's, not the terminal's. So a draw routine shows everything, and what
/// must happen once per reading (a counter, a row in a file) belongs to the reading.
#pragma once

#include "frame/failure.h"
#include "frame/terminal/console.h"
#include "frame/text/field.h"

#include <cstdint>
#include <functional>
#include <string>

/// Decides when drawing is due: in the first cycles, then at most every 10 ms.
class DrawPacer
{
public:
    /// To be asked once a cycle. True = draw now.
    [[nodiscard]] bool is_due(std::int64_t now_ms)
    {
        constexpr unsigned first_cycles = 32;
        constexpr std::int64_t interval_ms = 10;
        if (cycles_ >= first_cycles && now_ms - drawn_ms_ < interval_ms)
            return false;
        cycles_ += cycles_ < first_cycles ? 1 : 0;
        drawn_ms_ = now_ms;
        return true;
    }

private:
    unsigned cycles_ = 0;
    std::int64_t drawn_ms_ = 0;
};

/// How fast a display has been running, on average since its start.
struct CycleRates {
    std::uint64_t cycles = 0;
    std::int64_t start_ms = 0;

    /// Cycles per second, 0 while no time has passed.
    [[nodiscard]] double per_second(std::int64_t now_ms) const;
    /// Milliseconds per cycle, 0 before the first.
    [[nodiscard]] double mean_ms(std::int64_t now_ms) const;
};

/// The texts around the two rates. Eight columns are left free for the rate ("%7.2lf").
struct RateLayout {
    const char* before_rate;
    const char* after_rate;
    const char* before_mean;
    NumberFormat mean; ///< of the mean time of a cycle, in ms
    int mean_columns;
    const char* after_mean = "";
};

/// "%6.1lfms", "%6.1lf" and "%7.2lf".
inline constexpr NumberFormat mean_in_tenths_ms = {.width = 6, .decimals = 1, .unit = "ms"};
inline constexpr NumberFormat mean_in_tenths = {.width = 6, .decimals = 1};
inline constexpr NumberFormat mean_in_hundredths = {.width = 7, .decimals = 2};

/// Behind the values, on their line.
inline constexpr RateLayout rates_in_line = {"   Polling rate:", "cycles/s   ",
                                             "Mean response time:", mean_in_tenths_ms, 10};
/// On the header line of a display whose values stand on lines of their own.
inline constexpr RateLayout rates_in_header = {"Polling rate:", "cycles/s, ",
                                               "Mean response time:", mean_in_tenths_ms, 10};
/// The same with hundredths of a millisecond.
inline constexpr RateLayout fine_rates_in_header = {
    "Polling rate:", "cycles/s, ", "Mean response time:", mean_in_hundredths, 8, "ms"};
/// Where new measurements are counted, not cycles.
inline constexpr RateLayout data_rates_in_header = {
    "Data rate:", "cycles/s, ", "Mean measurement duration:", mean_in_hundredths, 8, "ms"};

/// Where the two rates are shown; nowhere when they were not placed.
struct RateFields {
    const RateLayout* layout = nullptr;
    Field rate, mean;

    void show(const CycleRates& rates, std::int64_t now_ms) const;
};

/// Prints the labels of the rates at the cursor and notes where the values go.
[[nodiscard]] RateFields place_rates(const RateLayout& layout);

struct LiveDisplay {
    std::string title;            ///< empty = the labels routine prints its own
    const char* title_end = ": "; ///< stands behind the title, or behind the prompt
    bool continuous = false;      ///< until Esc; else one reading
    bool key_first = false;       ///< look at the keyboard before the reading, not after it
    int period_ms = 0;            ///< a reading at these intervals only; 0 = as fast as it goes
    /// False: a failed reading is reported where the cursor stands, and the cursor stays hidden.
    bool tidy_after_failure = true;
    /// What a key does, as typed; Esc comes here, too, before it ends the display.
    std::function<Failure(int key)> on_key;
};

/// What the labels routine may place for the display to keep up.
struct LiveFields {
    bool continuous = false;
    RateFields rates;
    Place key_echo; ///< where the code of the last key is shown; row 0 = nowhere

    /// Prints and notes the rates; a display that is not continuous has none.
    void place_rates(const RateLayout& layout);
};

/// What a read routine tells: success, a call that failed, or that
/// there is nothing new to count or to show.
class Reading
{
public:
    Reading(Failure failed) : failed_(failed), is_new_(!failed) {}
    /// Part of the reading has arrived, and counts and is shown before the failure is told.
    static Reading partly(Failure failed)
    {
        Reading reading{failed};
        reading.is_new_ = true;
        return reading;
    }
    /// The display is over for another reason than a library call, which the command knows.
    static Reading over()
    {
        Reading reading = nothing_new();
        reading.is_over_ = true;
        return reading;
    }
    static Reading nothing_new()
    {
        Reading reading{Failure{}};
        reading.is_new_ = false;
        return reading;
    }

    [[nodiscard]] Failure failed() const { return failed_; }
    [[nodiscard]] bool is_new() const { return is_new_; }
    [[nodiscard]] bool is_over() const { return is_over_; }

private:
    Failure failed_;
    bool is_new_;
    bool is_over_ = false;
};

/// "<title>, press Esc to quit<end>", or "<title><end>" when there is nothing to quit or the
/// prompts are switched off. In a pipe, too, it is told at once, as is how to quit by the next two.
void print_live_title(const std::string& title, const char* end, bool continuous);

/// ", press Esc to quit": the middle of such a title.
void print_how_to_quit();

/// "Press Esc to quit<end>", or nothing.
void print_quit_prompt(const char* end, bool continuous);

/// The loop behind run_live_display.
void run_live_loop(const LiveDisplay& display, LiveFields& fields,
                   const std::function<void()>& labels, const std::function<Reading()>& read,
                   const std::function<void()>& draw);

/// Runs a display whose readings are `Values`. `labels` gets the LiveFields; the row in which it
/// leaves the cursor is the display's last one. `read` fills a zeroed Values and returns a Reading;
/// `draw` shows the latest good one.
template <class Values, class Labels, class Read, class Draw>
void run_live_display(const LiveDisplay& display, Labels labels, Read read, Draw draw)
{
    Values fresh{};
    Values latest{};
    LiveFields fields{.continuous = display.continuous, .rates = {}, .key_echo = {}};
    run_live_loop(
        display, fields, [&] { labels(fields); },
        [&] {
            fresh = Values{};
            const Reading reading = read(fresh);
            if (reading.is_new())
                latest = fresh;
            return reading;
        },
        [&] { draw(static_cast<const Values&>(latest)); });
}
