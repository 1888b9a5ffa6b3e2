/// Questions to the user, and the short answers to what the user typed.
#pragma once

enum class YesNo {
    interrupted = -1,
    no = 0,
    yes = 1,
};

// The question itself has been printed. There are two kinds: those that take Y, N and Esc and let
// every other key pass, and, where data may be lost, those that take any character, of which only
// "y" and "Y" mean yes. What the line then says is the command's own.

/// Waits for Y, N or Esc and ends the line with which it was. Keys typed ahead and behind are
/// dropped.
[[nodiscard]] YesNo ask_yes_no();

/// The same without a trace: nothing is shown, nothing dropped; the line end behind the answer is
/// the caller's to expect (expect_line_end()).
[[nodiscard]] YesNo read_yes_no();

/// Waits for one character, which is echoed; interrupted when none can be read. What was typed
/// before the question is no answer to it. The line is left open.
[[nodiscard]] YesNo read_confirmation();

/// "interrupted", in yellow.
void print_interrupted();
