/// A run of the real program, with a simulated instrument of its own that answers the same way in
/// every run, in a folder of its own.
#pragma once

#include "tests/support/pseudo_terminal.h"
#include "tests/support/temporary_file.h"

#include <string>
#include <string_view>

/// What to run; to be changed before a PseudoTerminal gets it. Its folder is a temporary one.
struct ControllerRun : Launch {
    /// `scenario` holds further lines for the simulated instrument.
    explicit ControllerRun(std::string_view command_line, std::string_view scenario = {});
    ~ControllerRun();
    ControllerRun(const ControllerRun&) = delete;
    ControllerRun& operator=(const ControllerRun&) = delete;

    /// For another run in the same folder.
    void set_command_line(std::string_view command_line);

protected:
    std::string loaded_program; ///< which `program` runs; to stand before the command line
};

/// The same for the program as it is built for Windows, under Wine.
struct WindowsRun : ControllerRun {
    explicit WindowsRun(std::string_view command_line, std::string_view scenario = {});
};

/// The values of the display -pk.
inline constexpr const char* housekeeping_values =
    "  Voltages:  24V: 24.000V  5V0: 4.800V  3V3: 3.400V  Temperature CPU:  +65.5\xC2\xB0"
    "C  PSU:   -1.0\xC2\xB0"
    "C\n";

/// What the program says at its end, and where the acceptance test has restored the settings.
inline constexpr const char* completed = "Program completed";
inline constexpr const char* settings_restored = "Current configuration data has been restored";

/// The program's own trace (switch -G) tells of this call.
[[nodiscard]] bool was_called(const ControllerRun& run, std::string_view function);

/// All lines, those scrolled out at the top and those on the screen. The measured rates, which
/// differ from run to run, read "#######".
[[nodiscard]] std::string transcript(const TerminalEmulator& screen);

/// Expects the terminal as the program found it: modes, colours, cursor, main screen.
void expect_terminal_restored(const PseudoTerminal& terminal);
