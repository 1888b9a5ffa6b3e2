#include "companion/journal/commands.h"
#include "companion/journal/load.h"
#include "companion/report/commands.h"
#include "companion/text.h"
#include "frame/text/format.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <cstdio>
#include <map>

namespace companion
{

namespace
{

/// Microseconds since 1970 of a time of the journal; nothing where it is none.
std::optional<std::int64_t> moment_of(const std::string& time)
{
    namespace c = std::chrono;
    int year = 0, offset_hours = 0, offset_minutes = 0;
    unsigned month = 0, day = 0;
    long hour = 0, minute = 0, second = 0, us = 0;
    char sign = '+';
    if (std::sscanf(time.c_str(), "%4d-%2u-%2uT%2ld:%2ld:%2ld.%6ld%c%2d:%2d", &year, &month, &day,
                    &hour, &minute, &second, &us, &sign, &offset_hours, &offset_minutes) != 10)
        return std::nullopt;
    const c::year_month_day date{c::year{year}, c::month{month}, c::day{day}};
    if (!date.ok())
        return std::nullopt;
    const int offset = (offset_hours * 60 + offset_minutes) * (sign == '-' ? -1 : 1);
    const c::microseconds time_of_day =
        c::hours{hour} + c::minutes{minute - offset} + c::seconds{second} + c::microseconds{us};
    return (c::sys_days{date}.time_since_epoch() + time_of_day).count();
}

/// Of a function: calls, failures, durations.
struct Count {
    std::uint64_t calls = 0, failures = 0;
    std::int64_t longest_us = 0, total_us = 0;
    std::map<std::int64_t, std::uint64_t> durations; ///< us, how many; of several polls the mean
    std::map<std::string, std::uint64_t> errors;     ///< text, how many

    void add(const journal::RecordedCall& call)
    {
        calls += call.count;
        total_us += call.us;
        longest_us = std::max(longest_us, call.longest_us);
        durations[call.us / static_cast<std::int64_t>(call.count)] += call.count;
        if (!call.failed())
            return;
        failures += call.count;
        errors["status " + std::to_string(call.status) +
               (call.error.empty() ? "" : ": " + device_text(call.error))] += call.count;
    }

    /// The duration in ms that so many per cent of the calls keep.
    [[nodiscard]] double percentile_ms(double percent) const
    {
        const double wanted = static_cast<double>(calls) * percent / 100;
        double found = 0;
        for (const auto& [us, count] : durations) {
            found += static_cast<double>(count);
            if (found >= wanted)
                return static_cast<double>(us) / 1000;
        }
        return 0;
    }
};

struct Counts {
    std::array<Count, devlib::function_count> functions;
    Count all;
    std::int64_t begin_us = 0, end_us = 0;

    void add(const journal::RecordedCall& call)
    {
        functions[call.row].add(call);
        all.add(call);
        const std::int64_t begin = moment_of(call.time).value_or(end_us);
        if (all.calls == call.count)
            begin_us = begin;
        const std::int64_t last_us = call.us / static_cast<std::int64_t>(call.count);
        end_us = std::max(end_us, moment_of(call.last).value_or(begin) + last_us);
    }
    [[nodiscard]] double seconds() const { return static_cast<double>(end_us - begin_us) / 1e6; }
};

struct Table {
    Printer& printer;
    int name_width;
    double seconds;
};

void print_count(const Table& table, std::string_view name, const Count& count)
{
    const auto& [printer, name_width, seconds] = table;
    const double rate = seconds > 0 ? static_cast<double>(count.calls) / seconds : 0;
    printer.print(Color::value, formatted("%-*s", name_width, std::string{name}.c_str()));
    printer.print(formatted(" %7llu %8.1f %8.3f %8.3f %8.3f %8.3f ",
                            static_cast<unsigned long long>(count.calls), rate,
                            count.percentile_ms(50), count.percentile_ms(90),
                            count.percentile_ms(99), static_cast<double>(count.longest_us) / 1000));
    const std::string failures =
        formatted("%8llu", static_cast<unsigned long long>(count.failures));
    if (count.failures > 0)
        printer.print(Color::bad, failures);
    else
        printer.print(failures);
    printer.print("\n");
}

void print_counts(Printer& printer, const Counts& counts)
{
    constexpr std::string_view title = "function";
    std::size_t name_width = title.size();
    for (std::size_t row = 0; row < counts.functions.size(); ++row) {
        if (counts.functions[row].calls > 0)
            name_width = std::max(name_width, devlib::functions[row].name().size());
    }
    const double seconds = counts.seconds();
    const Table table = {printer, static_cast<int>(name_width), seconds};
    printer.print(formatted("%-*s %7s %8s %8s %8s %8s %8s %8s\n", table.name_width, title.data(),
                            "calls", "per s", "50 % ms", "90 % ms", "99 % ms", "max ms",
                            "failures"));
    for (std::size_t row = 0; row < counts.functions.size(); ++row) {
        if (counts.functions[row].calls > 0)
            print_count(table, devlib::functions[row].name(), counts.functions[row]);
    }
    print_count(table, "all", counts.all);
    printer.print(formatted("\n%.3f s from the first call to the last, %.3f s of them in the "
                            "device library\n",
                            seconds, static_cast<double>(counts.all.total_us) / 1e6));
    for (std::size_t row = 0; row < counts.functions.size(); ++row) {
        for (const auto& [text, times] : counts.functions[row].errors) {
            printer.print(Color::bad, std::string{devlib::functions[row].name()});
            printer.print(
                formatted(" failed %llu times: ", static_cast<unsigned long long>(times)) + text +
                '\n');
        }
    }
}

} // namespace

int count_journal(const std::string& file, const Surroundings& outside)
{
    Counts counts;
    bool is_complete = false;
    const bool is_sound = read_journal(
        file, outside, [](const auto&) {},
        [&](const journal::RecordedCall& call) { counts.add(call); },
        [&](const journal::Reader& reader) { is_complete = reader.ending().has_value(); });
    if (!is_sound && counts.all.calls == 0)
        return wrong_usage;
    Printer printer{outside};
    print_counts(printer, counts);
    if (is_sound && !is_complete)
        printer.print(Color::warning, "The journal has no end: it does not tell all calls.\n");
    return printer.flush() && is_sound ? 0 : wrong_usage;
}

} // namespace companion
