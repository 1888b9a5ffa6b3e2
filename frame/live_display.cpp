#include "frame/live_display.h"

#include "frame/error_report.h"
#include "frame/platform/platform.h"
#include "frame/program.h"
#include "frame/terminal/keys.h"
#include "frame/text/format.h"

double CycleRates::per_second(std::int64_t now_ms) const
{
    const std::int64_t elapsed = now_ms - start_ms;
    return elapsed > 0 ? static_cast<double>(cycles) * 1000.0 / static_cast<double>(elapsed) : 0.0;
}

double CycleRates::mean_ms(std::int64_t now_ms) const
{
    return cycles > 0 ? static_cast<double>(now_ms - start_ms) / static_cast<double>(cycles) : 0.0;
}

void RateFields::show(const CycleRates& rates, std::int64_t now_ms) const
{
    if (layout == nullptr)
        return;
    rate.show(Color::value, rates.per_second(now_ms), {.width = 7, .decimals = 2});
    mean.show(Color::value, rates.mean_ms(now_ms), layout->mean);
}

RateFields place_rates(const RateLayout& layout)
{
    constexpr int rate_columns = 8;
    RateFields fields = {.layout = &layout, .rate = {}, .mean = {}};
    fields.rate = place_field(layout.before_rate, rate_columns);
    console.print("%s", layout.after_rate);
    fields.mean = place_field(layout.before_mean, layout.mean_columns);
    console.print("%s", layout.after_mean);
    return fields;
}

void LiveFields::place_rates(const RateLayout& layout)
{
    if (continuous)
        rates = ::place_rates(layout);
}

void print_live_title(const std::string& title, const char* end, bool continuous)
{
    console.print("%s", title.c_str());
    if (continuous && !program.quiet)
        print_how_to_quit();
    console.print("%s", end);
    if (continuous)
        console.release_title();
}

void print_how_to_quit()
{
    console.print(", press ");
    console.print(Color::value, "Esc");
    console.print(" to quit");
    console.release_title();
}

void print_quit_prompt(const char* end, bool continuous)
{
    if (!continuous || program.quiet)
        return;
    console.print("Press ");
    console.print(Color::value, "Esc");
    console.print(" to quit");
    console.release_title();
    console.print("%s", end);
}

namespace
{

/// One run of a live display.
class LiveLoop
{
public:
    LiveLoop(const LiveDisplay& display, const LiveFields& fields,
             const std::function<Reading()>& read, const std::function<void()>& draw)
        : display_(display), fields_(fields), read_(read), draw_(draw)
    {
        rates_.start_ms = platform::tick_ms();
        due_ms_ = rates_.start_ms;
    }

    /// Runs to the end.
    Failure run()
    {
        while (cycle())
            show_when_due();
        draw(platform::tick_ms());
        console.flush();
        return failed_;
    }

private:
    /// False when it was the last one.
    bool cycle()
    {
        bool going_on = !is_paced() || wait_for_period();
        if (display_.key_first && !take_key())
            return false;
        going_on = take_reading() && going_on;
        if (going_on && !display_.key_first && !is_paced())
            going_on = take_key();
        return going_on;
    }

    /// False when it was the last one.
    bool take_reading()
    {
        const Reading reading = read_();
        if (reading.failed())
            failed_ = reading.failed();
        if (reading.is_new()) {
            ++rates_.cycles;
            undrawn_ = true;
        }
        if (failed_ || reading.is_over())
            return false;
        if (!reading.is_new())
            wait_for_news();
        return !reading.is_new() || display_.continuous;
    }

    void show_when_due()
    {
        const std::int64_t now = platform::tick_ms();
        if (is_paced()) { // it waits now: what it has must be seen before
            draw(now);
            console.flush();
        } else if (pacer_.is_due(now)) {
            draw(now);
            console.flush_without_waiting();
        }
    }

    [[nodiscard]] bool is_paced() const { return display_.period_ms > 0; }

    void draw(std::int64_t now_ms)
    {
        if (!undrawn_ && key_ == 0)
            return;
        undrawn_ = false;
        if (rates_.cycles > 0) {
            fields_.rates.show(rates_, now_ms);
            draw_();
        }
        if (fields_.key_echo.row > 0 && display_.continuous)
            console.print_at(fields_.key_echo, Color::label, "%s", key_text(key_).c_str());
        key_ = 0;
    }

    /// Takes a waiting key; false when it ends the display.
    bool take_key()
    {
        if (!display_.continuous && !waits_for_news_)
            return true; // what was typed ahead is for a question to come
        if (!takes_keys())
            return !has_waited_enough();
        if (!key_waiting())
            return true;
        key_ = read_key();
        if (display_.on_key)
            failed_ = display_.on_key(key_);
        return !failed_ && key_ != key::escape;
    }

    /// A single reading leaves a pipe to the questions behind it.
    [[nodiscard]] bool takes_keys() const
    {
        return display_.continuous || platform::input_is_terminal();
    }

    /// Where nobody can press Esc what never comes is not waited for without end.
    [[nodiscard]] bool has_waited_enough() const
    {
        constexpr std::int64_t patience_ms = 10'000;
        return platform::stop_signal() != 0 || platform::tick_ms() - rates_.start_ms >= patience_ms;
    }

    /// A single reading begins to wait for a measurement: from here on Esc is meant for it.
    void wait_for_news()
    {
        if (!display_.continuous && !waits_for_news_)
            flush_keys();
        waits_for_news_ = true;
    }

    /// Waits for the next reading's time, on a fixed grid; false when Esc cut the wait short.
    bool wait_for_period()
    {
        due_ms_ += display_.period_ms;
        // What was missed (the program was stopped, an answer took long) is not made up for.
        const std::int64_t late_ms = platform::tick_ms() - due_ms_;
        if (late_ms > 0)
            due_ms_ += late_ms / display_.period_ms * display_.period_ms;
        if (!takes_keys())
            return wait_until(due_ms_, false);
        while (wait_for_key_until(due_ms_)) {
            if (folded(read_key()) == key::escape)
                return false;
        }
        return true;
    }

    const LiveDisplay& display_;
    const LiveFields& fields_;
    const std::function<Reading()>& read_;
    const std::function<void()>& draw_;
    CycleRates rates_;
    DrawPacer pacer_;
    std::int64_t due_ms_ = 0;
    Failure failed_;
    int key_ = 0; ///< the last key since the last drawing
    bool undrawn_ = false;
    bool waits_for_news_ = false; ///< a reading has brought nothing new
};

} // namespace

void run_live_loop(const LiveDisplay& display, LiveFields& fields,
                   const std::function<void()>& labels, const std::function<Reading()>& read,
                   const std::function<void()>& draw)
{
    DisplayScope scope;
    if (!display.title.empty())
        print_live_title(display.title, display.title_end, display.continuous);
    labels();
    const int last_row = console.place().row;
    console.flush();
    LiveLoop loop{display, fields, read, draw};
    const Failure failed = loop.run();
    const bool tidy = !failed || display.tidy_after_failure;
    if (tidy) {
        console.move_to({last_row, 1});
        console.print("\r\n");
    }
    scope.end(tidy);
    if (failed)
        report_error(failed);
}
