/// The entry of the program.
#pragma once

#include "frame/switches.h"

#include <span>

/// The switch tables of all folders.
[[nodiscard]] std::span<const SwitchTable> all_switch_tables();

/// Runs one command line from a fresh program state, the program's name first, and returns the
/// exit status: 0, 1 when standard output could not be written, -1 for a bad command line, or 128 +
/// the signal's number when a signal asked the program to end.
int run_program(int argc, char** argv);
