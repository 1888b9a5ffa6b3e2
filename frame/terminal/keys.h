/// The keyboard. Single keys without echo when standard input is a terminal; otherwise the bytes
/// of standard input, whose end reads as Esc. A request to end the program reads as Esc too, so
/// whatever waits for a key ends the way Esc ends it.
#pragma once

#include "frame/terminal/key_decoder.h"

#include <cstdint>
#include <optional>

/// Forgets everything that was typed (at the start of the program).
void start_keys();

/// From here on the terminal does not echo what is typed: for a text that is rewritten in place. No
/// key is read.
void hide_typed_keys();

/// True when read_key() would not have to wait. Never waits itself, and looks at the keyboard no
/// more than once a millisecond unless it found something the last time.
[[nodiscard]] bool key_waiting();

/// True when Esc waits, perhaps behind other keys, or the program is asked to end; on a terminal
/// only: a pipe is a script. Waits for the rest of a key that is coming in.
[[nodiscard]] bool escape_waiting();

/// Waits for a key; sends what the console holds first.
void wait_for_key();

/// The next key's code, waiting for it if needed.
[[nodiscard]] int read_key();

/// Letters in upper case; extended keys are not folded.
[[nodiscard]] constexpr int folded(int key)
{
    return key >= 'a' && key <= 'z' ? key - 'a' + 'A' : key;
}

/// Drops every waiting key. Does nothing when standard input is no terminal: what is piped in was
/// written for the questions to come.
void flush_keys();

/// One character as the answer to a question, echoed. One line end directly behind it belongs to
/// it and never answers the next question. Nothing when none can be read (end of input, or the
/// program is asked to end).
[[nodiscard]] std::optional<char> read_answer();

/// Tells that the key just read was an answer: a line end directly behind it belongs to it.
void expect_line_end();

/// Waits until the tick `deadline_ms` and tells whether it passed. With `blank_aborts` the blank
/// key ends the wait early; every other key is dropped, Esc included. A request to end the program
/// always does.
[[nodiscard]] bool wait_until(std::int64_t deadline_ms, bool blank_aborts);

/// Waits for a key until the tick `deadline_ms`; true when there is one.
[[nodiscard]] bool wait_for_key_until(std::int64_t deadline_ms);
