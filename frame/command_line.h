/// The grammar of the command line: the COM port number, then switches with their values.
#pragma once

#include "frame/device_facts.h"
#include "frame/switches.h"

#include <span>

struct CommandLineResult {
    bool good = true;
    /// Where a bad command line went wrong; the program's own name is 0, the port number 1. May be
    /// one past the last argument.
    int position = 0;
};

/// Reads the arguments (the program's name first) and runs each switch's routine as it goes, until
/// the last argument, the first bad switch, or the end of the run. A switch is read whole before
/// the session is opened for it.
[[nodiscard]] CommandLineResult run_command_line(std::span<char* const> arguments,
                                                 std::span<const SwitchTable> tables,
                                                 const DeviceFacts& device);
