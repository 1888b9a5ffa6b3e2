/// A run of the real program, with a simulated instrument of its own that answers the same way in
/// every run, in a folder of its own.
#pragma once

#include <string>
#include <string_view>

#include "tests/support/pseudo_terminal.h"

/// A temporary folder for as long as it exists.
class ScratchFolder
{
public:
    ScratchFolder();
    ~ScratchFolder();
    ScratchFolder(const ScratchFolder&) = delete;
    ScratchFolder& operator=(const ScratchFolder&) = delete;

    [[nodiscard]] const std::string& path() const { return path_; }
    void write(std::string_view name, std::string_view text) const;
    /// Empty when there is no such file.
    [[nodiscard]] std::string read(std::string_view name) const;

private:
    std::string path_;
};

/// What to run; to be changed before a PseudoTerminal gets it.
struct ControllerRun : Launch {
    /// `scenario` holds further lines for the simulated instrument.
    explicit ControllerRun(std::string_view command_line, std::string_view scenario = {});

    /// Fills the screen: the program then starts on its last row.
    void start_on_last_row();

    ScratchFolder scratch;
};

/// The program's own trace (switch -G) tells of this call.
[[nodiscard]] bool was_called(const ControllerRun& run, std::string_view function);

/// All lines, those scrolled out at the top and those on the screen, with colour marks on the
/// latter. The measured rates, which differ from run to run, read "#######".
[[nodiscard]] std::string transcript(const TerminalEmulator& screen);

/// Marked lines as a terminal of that many columns shows them.
[[nodiscard]] std::string clipped(std::string_view marked_lines, int columns);

/// Expects the terminal as the program found it: modes, colours, cursor, main screen.
void expect_terminal_restored(const PseudoTerminal& terminal);
