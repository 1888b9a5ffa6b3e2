#include "protocol/sampling.h"

#include "frame/device_call.h"
#include "frame/platform/platform.h"
#include "frame/terminal/keys.h"
#include "frame/text/format.h"
#include "instrument/module_readings.h"

#include <algorithm>
#include <utility>

void report_stop(Report& report)
{
    report.indent(false);
    report.end_section();
    report.text("Stopped by user!", Color::warning);
}

bool may_go_on(Report& report)
{
    if (!report.is_good())
        return false;
    if (platform::stop_signal() == 0)
        return true;
    report_stop(report);
    return false;
}

bool wait(Report& report, std::int64_t milliseconds, SpaceKey space)
{
    constexpr std::int64_t second_ms = 1'000;
    report.flush();
    const std::int64_t end_ms = platform::tick_ms() + milliseconds;
    if (space == SpaceKey::stops)
        flush_keys();
    RunningLine line{report, "Waiting"};
    bool over = true;
    for (std::int64_t left_ms = milliseconds; over && left_ms > 0;
         left_ms = end_ms - platform::tick_ms()) {
        const std::int64_t seconds = (left_ms + second_ms - 1) / second_ms;
        line.show(formatted("%ds", static_cast<int>(seconds)), space);
        over = wait_until(end_ms - (seconds - 1) * second_ms, space == SpaceKey::stops);
    }
    line.clear();
    if (!over)
        report_stop(report);
    return over;
}

RunningLine::RunningLine(const Report& report, const char* label) : report_(report)
{
    console.print("%s: ", label);
    place_ = console.place();
}

void RunningLine::show(const std::string& text, SpaceKey space)
{
    console.move_to(place_);
    console.print(Color::value, "%s", text.c_str());
    if (space == SpaceKey::stops) {
        console.print(", press ");
        console.print(Color::value, "SPACE");
        console.print(" to abort...");
    }
    console.clear_to_end_of_line();
    show_outlook(report_.outlook());
    console.flush_when_due();
}

void RunningLine::show_outlook(const std::string& text)
{
    if (!platform::output_is_terminal())
        return;
    console.print("\n%s", text.c_str());
    console.clear_to_end_of_line();
    console.move_to(place_);
}

void RunningLine::clear()
{
    show_outlook({});
    console.move_to(place_);
    console.clear_line();
    scope_.end(false);
}

void RunningLine::leave()
{
    show_outlook({});
    console.print("\r\n");
    scope_.end(false);
}

std::string counter_text(std::size_t number, std::size_t count)
{
    return formatted("#%02zu/%02zu", number, count);
}

double SampleSource::period_ms() const
{
    return samples() > 2
               ? static_cast<double>(last_ms - second_ms) / static_cast<double>(samples() - 2)
               : 0.0;
}

namespace
{

/// The counters side by side, each with its latest values.
std::string progress_text(std::span<const SampleSource> sources)
{
    std::string text;
    for (const SampleSource& source : sources) {
        text += text.empty() ? "" : "  ";
        text += counter_text(source.samples(), source.count);
        const char* separator = ": ";
        for (const SampleChannel& channel : source.channels) {
            if (channel.statistics.count() == 0)
                break;
            text += separator;
            text += *channel.label != '\0' ? std::string{channel.label} + ": " : "";
            text += value_text(*channel.quantity, channel.statistics.last());
            separator = ", ";
        }
    }
    return text;
}

Failure attempt_ready_flags(ReadyAddress address, std::uint8_t& flags)
{
    return address ? attempt(LIB(GetModuleDataReadyFlags), *address, &flags)
                   : attempt(LIB(GetDataReadyFlags), &flags);
}

/// Fetches one sample and adds it when it is valid.
Failure add_sample(SampleSource& source, std::int64_t now_ms)
{
    std::vector<double> values(source.channels.size());
    const Sample sample = source.fetch(values);
    if (sample.failed || !sample.is_valid)
        return sample.failed;
    for (std::size_t i = 0; i < values.size(); ++i)
        source.channels[i].statistics.add(values[i]);
    if (source.samples() == 2)
        source.second_ms = now_ms;
    source.last_ms = now_ms;
    return {};
}

/// One look at the sources: fetches what is ready.
Failure fetch_ready(ReadyAddress address, std::span<SampleSource> sources)
{
    std::uint8_t flags = 0;
    const bool announced = std::any_of(sources.begin(), sources.end(),
                                       [](const SampleSource& source) { return source.ready_bit; });
    if (announced) {
        if (const Failure failed = attempt_ready_flags(address, flags))
            return failed;
    }
    const std::int64_t now_ms = platform::tick_ms();
    for (SampleSource& source : sources) {
        const bool ready = !source.ready_bit || is_ready(flags, *source.ready_bit);
        if (!ready || source.is_complete())
            continue;
        if (const Failure failed = add_sample(source, now_ms))
            return failed;
    }
    return {};
}

std::size_t total_samples(std::span<const SampleSource> sources)
{
    std::size_t total = 0;
    for (const SampleSource& source : sources)
        total += source.samples();
    return total;
}

} // namespace

bool collect(Report& report, const char* title, ReadyAddress address,
             std::span<SampleSource> sources)
{
    constexpr std::int64_t patience_ms = 10'000;
    constexpr std::int64_t sample_interval_ms = 1'000;
    const bool paced = !sources.front().ready_bit;
    std::int64_t news_ms = platform::tick_ms();
    RunningLine line{report, title};
    for (;;) {
        const std::size_t samples_before = total_samples(sources);
        const Failure failed = fetch_ready(address, sources);
        const std::int64_t now_ms = platform::tick_ms();
        line.show(progress_text(sources));
        if (failed) {
            line.leave(); // it tells how far it came
            report_error(failed);
            return false;
        }
        const auto missing = std::find_if(sources.begin(), sources.end(),
                                          [](const SampleSource& s) { return !s.is_complete(); });
        if (missing == sources.end())
            break;
        const bool is_new = total_samples(sources) > samples_before;
        if (is_new)
            news_ms = now_ms;
        if (now_ms - news_ms >= patience_ms) {
            line.leave();
            report.text(formatted("No new %s within 10s!", missing->what), Color::bad);
            return false;
        }
        // A request to end the program cuts these short.
        if (paced)
            (void)wait_until(now_ms + sample_interval_ms, false);
        else if (!is_new)
            platform::sleep_ms(1);
        if (platform::stop_signal() != 0) {
            line.leave();
            return may_go_on(report);
        }
    }
    line.clear();
    return may_go_on(report);
}

void report_series(Report& report, const char* title, const SampleSource& source,
                   std::vector<ReportItem> leading)
{
    std::vector<ReportItem> items = std::move(leading);
    for (const SampleChannel& channel : source.channels) {
        const QuantityFormat& quantity = *channel.quantity;
        const Statistics& statistics = channel.statistics;
        items.push_back({.label = channel.label,
                         .value = value_text(quantity, statistics.mean()),
                         .file_value = channel.as_range ? range_text(quantity, statistics)
                                                        : statistics_text(quantity, statistics)});
    }
    if (source.ready_bit)
        items.push_back(
            {.label = report_text::period, .value = formatted("%.0lfms", source.period_ms())});
    report.group(title, items);
    report.flush();
}

bool take_series(Report& report, const char* title, ReadyAddress address, SampleSource source)
{
    if (!collect(report, title, address, {&source, 1}))
        return false;
    report_series(report, title, source);
    return may_go_on(report);
}
