#include "interactive/screen_reports.h"

#include "frame/device_call.h"
#include "frame/error_report.h"
#include "frame/platform/platform.h"
#include "frame/terminal/console.h"
#include "frame/text/format.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <string>

namespace
{

/// A report in the message area.
struct ScreenReport {
    std::string function;
    LibraryMessages messages;
    std::string time;       ///< of the last one
    std::uint32_t made = 1; ///< how many equal ones, with this one
    bool counts = false;    ///< stands for all that followed the first ones

    [[nodiscard]] bool equals(const ScreenReport& other) const
    {
        return function == other.function && messages == other.messages;
    }
};

std::deque<ScreenReport> reports; ///< the latest, enough to fill a high window
platform::WindowSize shown_size{};
std::int64_t purge_hold_ms = 0;

constexpr std::int64_t purge_hold_duration_ms = 1000;

/// Adds a report, or counts it. Several calls may keep failing in turn: what comes in between does
/// not make a report a new one as long as the last equal one is among the latest.
void add_report(ScreenReport report)
{
    constexpr std::size_t latest = 8;
    constexpr std::uint32_t most_in_full = 10;
    constexpr std::size_t kept = 100;
    const auto end =
        reports.rbegin() + static_cast<std::ptrdiff_t>(std::min(latest, reports.size()));
    const auto last = std::find_if(reports.rbegin(), end,
                                   [&](const ScreenReport& other) { return other.equals(report); });
    if (last != end) {
        report.made = last->made + 1;
        report.counts = report.made > most_in_full;
        if (last->counts) {
            *last = report;
            return;
        }
    }
    reports.push_back(report);
    if (reports.size() > kept)
        reports.pop_front();
}

void print_report(const ScreenReport& report)
{
    const LibraryMessages& messages = report.messages;
    if (report.counts)
        console.print(Color::bad, "%s, Error at %s again, %u times in all", report.time.c_str(),
                      report.function.c_str(), report.made);
    else // Other commands word it otherwise: ": Error at" and "communication port error".
        console.print(Color::bad,
                      "%s, Error at %s: %s\r\nlast I/O error message: %s, "
                      "last communication stream error: %s",
                      report.time.c_str(), report.function.c_str(), messages.error.c_str(),
                      messages.io_state.c_str(), messages.comm_error.c_str());
    console.print("\r\n");
}

/// Fills the message area anew; it is as large as the window lets it be.
void print_reports()
{
    shown_size = console.size();
    const int rows = shown_size.rows - message_area_row + 1;
    if (rows <= 0)
        return;
    const Place before = console.place();
    console.set_window(message_area_row);
    const Place first = console.place();
    for (int row = 0; row < rows; ++row) {
        console.move_to({first.row + row, 1});
        console.clear_line();
    }
    console.move_to(first);
    const auto shown = std::min(reports.size(), static_cast<std::size_t>(rows));
    std::for_each(reports.end() - static_cast<std::ptrdiff_t>(shown), reports.end(), print_report);
    console.clear_window();
    console.move_to(before);
}

} // namespace

void start_screen_reports()
{
    reports.clear();
    shown_size = console.size();
}

void report_error_on_screen(Failure failed)
{
    add_report(
        {.function = failed.function(), .messages = library_messages(), .time = timestamp()});
    print_reports();
    console.flush();
}

void fit_screen_reports()
{
    if (!(console.size() == shown_size))
        print_reports();
}

void set_purge_hold()
{
    purge_hold_ms = platform::tick_ms() + purge_hold_duration_ms;
}

void report_on_screen_and_purge(Failure failed)
{
    const std::int64_t failed_at = platform::tick_ms();
    report_error_on_screen(failed);
    if (failed_at <= purge_hold_ms)
        return;
    if (const Failure purge = attempt(LIB(Purge)))
        report_error_on_screen(purge);
}
