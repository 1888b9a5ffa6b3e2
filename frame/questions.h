/// Questions to the user, and the short answers to what the user typed.
#pragma once

enum class YesNo {
    interrupted = -1,
    no = 0,
    yes = 1,
};

/// Waits for Y, N or Esc and shows which it was; every other key is ignored. The question itself
/// has been printed. Keys typed ahead and behind are dropped.
[[nodiscard]] YesNo ask_yes_no();

/// "interrupted", in yellow.
void print_interrupted();

/// "Wrong %s specified", in yellow, as in "Wrong module address specified".
void print_wrong_value(const char* name_of_value);
