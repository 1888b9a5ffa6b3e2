#include "protocol/sampling.h"

#include <algorithm>

#include "frame/device_call.h"
#include "frame/keys.h"
#include "frame/platform.h"

void report_stop(Report& report)
{
    report.indent(false);
    report.end_section();
    report.text(Color::warning, "Stopped by user!");
}

bool is_interrupted(Report& report)
{
    if (platform::stop_signal() == 0)
        return false;
    report_stop(report);
    return true;
}

bool wait(Report& report, std::int64_t milliseconds, Space space)
{
    report.flush();
    if (wait_until(platform::tick_ms() + milliseconds, space == Space::stops))
        return true;
    report_stop(report);
    return false;
}

RunningLine::RunningLine(const char* label)
{
    console.print("%s: ", label);
    place_ = console.place();
}

void RunningLine::show(const std::string& text)
{
    console.move_to(place_);
    console.print(Color::value, "%s", text.c_str());
    console.clear_to_end_of_line();
    console.flush_when_due();
}

void RunningLine::clear()
{
    console.move_to(place_);
    console.clear_line();
    scope_.end(false);
}

void RunningLine::leave()
{
    console.print("\r\n");
    scope_.end(false);
}

std::string counter_text(std::size_t number, std::size_t count)
{
    return formatted("#%02zu/%02zu", number, count);
}

double Source::period_ms() const
{
    return samples() > 1
               ? static_cast<double>(last_ms - first_ms) / static_cast<double>(samples() - 1)
               : 0.0;
}

namespace
{

/// The counters side by side, each with its latest values.
std::string progress_text(std::span<const Source> sources)
{
    std::string text;
    for (const Source& source : sources) {
        text += text.empty() ? "" : "  ";
        text += counter_text(source.samples(), source.count);
        const char* separator = ": ";
        for (const Channel& channel : source.channels) {
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

const char* attempt_ready_flags(ReadyAddress address, std::uint8_t& flags)
{
    return address ? attempt(LIB(GetModuleDataReadyFlags), *address, &flags)
                   : attempt(LIB(GetDataReadyFlags), &flags);
}

/// Fetches one sample and adds it when it is valid. Null, or what failed.
const char* add_sample(Source& source, std::int64_t now_ms)
{
    std::vector<double> values(source.channels.size());
    const Sample sample = source.fetch(values);
    if (sample.failed != nullptr || !sample.is_valid)
        return sample.failed;
    for (std::size_t i = 0; i < values.size(); ++i)
        source.channels[i].statistics.add(values[i]);
    if (source.samples() == 1)
        source.first_ms = now_ms;
    source.last_ms = now_ms;
    return nullptr;
}

/// One look at the sources: fetches what is ready. Null, or what failed.
const char* fetch_ready(ReadyAddress address, std::span<Source> sources)
{
    std::uint8_t flags = 0;
    const bool announced = std::any_of(sources.begin(), sources.end(),
                                       [](const Source& source) { return source.ready_bit; });
    if (announced) {
        if (const char* failed = attempt_ready_flags(address, flags))
            return failed;
    }
    const std::int64_t now_ms = platform::tick_ms();
    for (Source& source : sources) {
        const bool ready = !source.ready_bit || (flags >> *source.ready_bit & 1) != 0;
        if (!ready || source.is_complete())
            continue;
        if (const char* failed = add_sample(source, now_ms))
            return failed;
    }
    return nullptr;
}

std::size_t total_samples(std::span<const Source> sources)
{
    std::size_t total = 0;
    for (const Source& source : sources)
        total += source.samples();
    return total;
}

} // namespace

bool collect(Report& report, const char* title, ReadyAddress address, std::span<Source> sources)
{
    constexpr std::int64_t patience_ms = 10'000;
    constexpr std::int64_t sample_interval_ms = 1'000;
    RunningLine line{title};
    const bool paced = !sources.front().ready_bit;
    std::int64_t news_ms = platform::tick_ms();
    for (;;) {
        const std::size_t samples_before = total_samples(sources);
        if (const char* failed = fetch_ready(address, sources)) {
            line.leave(); // it tells how far it came
            report_error(failed);
            return false;
        }
        const std::int64_t now_ms = platform::tick_ms();
        const bool is_new = total_samples(sources) > samples_before;
        line.show(progress_text(sources));
        if (std::all_of(sources.begin(), sources.end(),
                        [](const Source& source) { return source.is_complete(); }))
            break;
        if (is_new)
            news_ms = now_ms;
        if (now_ms - news_ms >= patience_ms) {
            line.leave(); // it tells how far it came
            report.text(Color::bad, std::string{title} + ": no new data within 10s!");
            return false;
        }
        // A failed or interrupted wait is seen right below.
        if (paced)
            (void)wait_until(now_ms + sample_interval_ms, false);
        else if (!is_new)
            platform::sleep_ms(1);
        if (platform::stop_signal() != 0) {
            line.leave(); // it tells how far it came
            return !is_interrupted(report);
        }
    }
    line.clear();
    return true;
}

bool take_series(Report& report, const char* title, ReadyAddress address, Source source)
{
    if (!collect(report, title, address, {&source, 1}))
        return false;
    std::vector<ReportItem> items;
    for (const Channel& channel : source.channels) {
        const Quantity& quantity = *channel.quantity;
        const Statistics& statistics = channel.statistics;
        items.push_back({.label = channel.label,
                         .value = value_text(quantity, statistics.mean()),
                         .file_value = channel.as_range ? range_text(quantity, statistics)
                                                        : statistics_text(quantity, statistics)});
    }
    if (source.ready_bit) {
        items.push_back({.label = "period", .value = formatted("%.0lfms", source.period_ms())});
    }
    report.group(title, items);
    report.flush();
    return report.is_good();
}
