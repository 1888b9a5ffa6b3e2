/// Every switch of the tables as a command line, with any of its library calls failing.
#pragma once

#include "frame/switches.h"
#include "tests/support/virtual_platform.h"

#include <cstddef>
#include <string>
#include <vector>

struct Call {
    std::string name, inputs;
    bool failed;
    bool cursor_visible;
};

/// What came of a command line.
struct Outcome {
    std::vector<Call> calls; ///< those that can fail
    std::string screen, output;
    int exit_status = 0;
    bool cursor_came_back = false;

    [[nodiscard]] bool shows(const std::string& text) const
    {
        return screen.find(text) != std::string::npos || output.find(text) != std::string::npos;
    }
};

/// A switch as typed, with its values.
struct Command {
    std::string letters;
    std::string switches;
    bool needs_session;
};

/// A table's switches, in all forms and with values of each kind.
[[nodiscard]] std::vector<Command> commands_of(SwitchTable table);

/// The files that some of them read, in the working directory.
void make_files_to_read();

/// Runs switches on a quick instrument. The calls of these numbers fail. `library`: the functions
/// in the place of those that the test is linked to.
[[nodiscard]] Outcome outcome_of(const std::string& switches,
                                 const std::vector<std::size_t>& failing = {},
                                 const OfferedLibrary* library = nullptr);

/// The numbers of the calls to fail: all of a short run; of a longer one of each kind the first two
/// and the last, or the first only.
[[nodiscard]] std::vector<std::size_t> calls_to_fail(const Outcome& good);
