/// Error reports on the full screen: in the message area at its bottom, and with a purge where a
/// call took too long.
#pragma once

#include "frame/failure.h"

/// First row of the message area; it reaches to the screen's bottom row.
inline constexpr int message_area_row = 54;

/// Begins a new screen: there are no reports yet.
void start_screen_reports();

/// Reports into the message area, which scrolls by itself; the rest of the screen stays. After its
/// first ten, an equal report is only counted, in a line with the time of the last one.
void report_error_on_screen(Failure failed);

/// Shows the reports once more when the window has changed, also those made while it was too small
/// for the message area. To be called whenever the screen is drawn.
void fit_screen_reports();

/// Notes that a library call is about to be made: only a call that then lasts longer than a second
/// is answered with a purge.
void set_purge_hold();

/// Reports on the screen; when the hold is over, purges the communication port as well (and
/// reports if that fails).
void report_on_screen_and_purge(Failure failed);
