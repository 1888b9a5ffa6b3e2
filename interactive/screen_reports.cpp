#include "interactive/screen_reports.h"

#include "frame/device_call.h"
#include "frame/error_report.h"
#include "frame/format.h"
#include "frame/platform/platform.h"
#include "frame/terminal/console.h"

#include <cstdint>

namespace
{

/// Where the next report on the screen goes on, counted from the message area's first row.
struct MessageArea {
    int rows_down = 0;
    int column = 1;
};

MessageArea message_area;
std::int64_t purge_hold_ms = 0;

constexpr std::int64_t purge_hold_duration_ms = 1000;

} // namespace

void start_screen_reports()
{
    message_area = {};
}

void report_error_on_screen(const char* function)
{
    // Other commands word it otherwise: ": Error at" and "communication port error".
    const LibraryMessages messages = library_messages();
    const Place before = console.place();
    console.set_window(message_area_row);
    const Place first = console.place();
    console.move_to({first.row + message_area.rows_down, message_area.column});
    console.print(Color::bad,
                  "%s, Error at %s: %s\r\nlast I/O error message: %s, "
                  "last communication stream error: %s",
                  timestamp().c_str(), function, messages.error.c_str(), messages.io_state.c_str(),
                  messages.comm_error.c_str());
    console.print("\r\n");
    message_area = {.rows_down = console.place().row - first.row, .column = console.place().column};
    console.clear_window();
    console.move_to(before);
    console.flush();
}

void set_purge_hold()
{
    purge_hold_ms = platform::tick_ms() + purge_hold_duration_ms;
}

void report_on_screen_and_purge(const char* function)
{
    const std::int64_t failed_at = platform::tick_ms();
    report_error_on_screen(function);
    if (failed_at <= purge_hold_ms)
        return;
    if (const char* failed = attempt(LIB(Purge)))
        report_error_on_screen(failed);
}
