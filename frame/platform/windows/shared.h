/// What the sources of the Windows platform share.
#pragma once

#include "frame/platform/stop_requests.h"

#include <cstdint>
#include <string_view>
#include <windows.h>

namespace platform::windows
{

/// Null when the program has none: nothing comes from there, what goes there is lost.
[[nodiscard]] HANDLE standard_handle(DWORD number);

// ---- Requests to end the program ----

// What ends the program has the numbers of the signals that do so elsewhere: scripts get the same
// exit status.
inline constexpr int hang_up = 1;   ///< the window is closed
inline constexpr int interrupt = 2; ///< Ctrl-C
inline constexpr int quit = 3;      ///< Ctrl-Break
inline constexpr int broken_pipe = 13;
inline constexpr int termination = 15; ///< the user logs off, the computer shuts down

extern StopRequests requests;
void request_stop(int number);

/// The clock of tick_ms(), without a note that it was looked at.
[[nodiscard]] std::int64_t now_ms();

// ---- The screen ----

void open_output();

/// A reader of our output that has gone away would only be noticed by the next write, which a
/// display in a pipe puts off to its end.
void notice_closed_output();

[[nodiscard]] bool window_has_changed();

/// Leaves the screen without colour and with a visible cursor below everything that is on it.
/// Allocates nothing: it is one of the last things that a crash does.
void leave_screen();

/// Tells something in a line of its own: below what is on the screen, which is painted again, or at
/// standard error. May run in any thread; allocates nothing.
void tell_below_screen(std::string_view text);

} // namespace platform::windows
