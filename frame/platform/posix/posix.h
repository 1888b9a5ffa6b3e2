/// What the sources of the POSIX platform share.
#pragma once

#include "frame/platform/platform.h"

namespace platform::posix
{

// ---- Signals ----

/// Watches all signals that mean something to the program. The terminal's modes must be known.
void watch_signals();

/// Asks the program to end as that signal does, unless it has been asked before.
void request_stop(int signal_number);

[[nodiscard]] bool stop_is_due();
/// A signal came that has not been dealt with.
[[nodiscard]] bool signal_is_due();
[[nodiscard]] bool run_is_protected();

// ---- The terminal ----

/// Notes how the terminal stands, when standard input is one.
void note_terminal_modes();

/// Notes that the screen is about to show something.
void note_screen_use();

/// Leaves the terminal as a shell wants it. Only calls what a signal handler may call.
void hand_terminal_back();

/// After a stop: the terminal as the program wants it. True when the screen must be painted again.
/// Only calls what a signal handler may call.
[[nodiscard]] bool take_terminal_again();

// ---- Output ----

/// Standard output, by a descriptor that never makes a write wait where there is one. May be called
/// by a signal handler.
[[nodiscard]] int unblocked_output();
void close_reopened_output();

} // namespace platform::posix
