/// What the sources of the POSIX platform share.
#pragma once

#include "frame/platform/platform.h"
#include "frame/platform/stop_requests.h"

#include <csignal>
#include <cstdint>
#include <poll.h>
#include <span>
#include <string_view>

namespace platform::posix
{

// ---- Signals ----

extern StopRequests requests;

/// Watches all signals that mean something to the program. The terminal's modes must be known.
void watch_signals();

/// Asks the program to end as that signal does, unless it has been asked before.
void request_stop(int signal_number);

[[nodiscard]] bool stop_is_due();
/// A signal came that has not been dealt with.
[[nodiscard]] bool signal_is_due();

/// What is on the screen is somebody else's, and nobody has taken that into account yet.
[[nodiscard]] bool screen_is_lost();
void note_lost_screen();

/// All signals wait for as long as it exists.
class HeldSignals
{
public:
    HeldSignals();
    ~HeldSignals();
    HeldSignals(const HeldSignals&) = delete;
    HeldSignals& operator=(const HeldSignals&) = delete;

    /// As poll(), with the signals let through meanwhile. Negative = as long as it takes.
    int poll(std::span<pollfd> entries, std::int64_t timeout_ms) const;

private:
    sigset_t before_;
};

// ---- Time ----

/// The clock of tick_ms(), without a note that it was looked at.
[[nodiscard]] std::int64_t now_ms();

// ---- The terminal ----

/// Notes how the terminal stands, when standard input is one.
void note_terminal_modes();

/// Notes that the screen is about to show something.
void note_screen_use();

/// Somebody else has the terminal. One that is not our session's knows neither background nor
/// foreground: it is for all that have it open. May be called by a signal handler.
[[nodiscard]] bool is_in_background(int descriptor);

/// True when keys are there for the program; they come singly then, where that is wanted. Nobody
/// tells when that changes.
[[nodiscard]] bool keys_are_ours();

/// Drops what was typed before a key that is a signal, as the system does with other modes; the
/// shell must not get it. Only calls what a signal handler may call.
void drop_typed_before_signal();

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

/// Tells something in a line of its own: below what is on the screen, which is to be painted again
/// when this returns true, or at standard error. Only calls what a signal handler may call, and
/// never waits.
bool tell_below_screen(std::string_view text);

/// So many rows down the cursor stands below everything on the screen.
[[nodiscard]] int rows_to_leave();
/// It stands there now. Noted when it is done: a signal in between does it once more.
void note_cursor_below_screen();

} // namespace platform::posix
