/// What the user sees when a call of the device library fails. A report asks the library for the
/// texts of its last call, so no other library call may stand between a failure and its report.
#pragma once

/// Reports the failure of the function of that name below what is on the console.
void report_error(const char* function);

/// The same in a line of its own when something stands in the cursor's.
void report_error_below(const char* function);

/// Reports unless `failed` is null, and tells whether it was.
[[nodiscard]] inline bool succeeded(const char* failed)
{
    if (failed != nullptr)
        report_error(failed);
    return failed == nullptr;
}

// ---- The full-screen display: reports go to the message area at the bottom of the screen ----

/// First row of the message area; it reaches to the screen's bottom row.
inline constexpr int message_area_row = 54;

/// Begins a new screen: the next report starts in the message area's first row.
void start_screen_reports();

/// Reports into the message area, which scrolls by itself; the rest of the screen stays.
void report_error_on_screen(const char* function);

/// Notes that a library call is about to be made: only a call that then lasts longer than a second
/// is answered with a purge.
void set_purge_hold();

/// Reports on the screen; when the hold is over, purges the communication port as well (and
/// reports if that fails).
void report_on_screen_and_purge(const char* function);
