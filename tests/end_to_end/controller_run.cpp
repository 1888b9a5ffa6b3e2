#include "tests/end_to_end/controller_run.h"

#include <cstdlib>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace
{

/// Puts the mask in the place of each number behind the label.
void mask_number(std::string& text, std::string_view label, std::string_view mask)
{
    for (std::size_t at = 0; (at = text.find(label, at)) != std::string::npos;) {
        at += label.size();
        const std::size_t digits = text.find_first_not_of(' ', at);
        text.replace(at, text.find_first_not_of("0123456789.", digits) - at, mask);
    }
}

/// Set by test.sh; a missing one fails the test.
std::string variable(const char* name)
{
    const char* value = std::getenv(name);
    return value == nullptr ? std::string{name} + " is not set" : value;
}

} // namespace

ControllerRun::ControllerRun(std::string_view command_line, std::string_view scenario)
{
    constexpr std::string_view steady_instrument = R"(latency 0.2
reply GetHousekeeping.voltage24 24.0
reply GetHousekeeping.voltage5 4.8
reply GetHousekeeping.voltage33 3.4
reply GetHousekeeping.temperatureCPU 65.5
reply GetHousekeeping.temperaturePSU -1.0
reply GetCPUdata.load 0.125
reply GetCPUdata.frequency 168e6
)";
    folder = temporary_name();
    std::filesystem::create_directory(folder);
    write_file(folder + "/scenario", std::string{steady_instrument} += scenario);
    program = CONTROLLER_PROGRAM;
    set_command_line(command_line);
    environment = {{"TERM", "xterm-256color"},
                   {"KOV_SIMULATOR_STATE", "none"},
                   {"KOV_SIMULATOR_SCENARIO", folder + "/scenario"}};
}

ControllerRun::~ControllerRun()
{
    std::filesystem::remove_all(folder);
}

void ControllerRun::set_command_line(std::string_view command_line)
{
    arguments = loaded_program;
    arguments += command_line;
}

WindowsRun::WindowsRun(std::string_view command_line, std::string_view scenario)
    : ControllerRun{{}, scenario}
{
    program = "/usr/bin/env";
    loaded_program = "--ignore-signal=XFSZ "; // Wine does not know of it
    for (const char* name : {"KOV_WINE", "KOV_WINDOWS_PROGRAM"})
        loaded_program += variable(name) + ' ';
    set_command_line(command_line);
    size = {.columns = 132, .rows = 60};
    environment["KOV_SIMULATOR_SCENARIO"] = "Z:" + folder + "/scenario";
    environment["WINEDEBUG"] = "-all";
    environment["LC_ALL"] = "C.UTF-8"; // of the arguments that Wine passes on
    for (const char* name : {"WINEPREFIX", "HOME"})
        environment[name] = variable(name);
}

bool was_called(const ControllerRun& run, std::string_view function)
{
    return contents(run.folder + "/Debug.txt")
               .find("  COM_KOV_CTRL_" + std::string{function} + '(') != std::string::npos;
}

std::string transcript(const TerminalEmulator& screen)
{
    std::string text;
    for (const std::string& line : screen.scrollback())
        text += line + '\n';
    text += screen.screen();
    mask_number(text, "rate:", "#######");
    mask_number(text, "response time:", "######");
    return text;
}

void expect_terminal_restored(const PseudoTerminal& terminal)
{
    EXPECT_TRUE(terminal.modes_are_original());
    EXPECT_TRUE(terminal.screen.pen_is_neutral());
    EXPECT_TRUE(terminal.screen.cursor_visible());
    EXPECT_FALSE(terminal.screen.used_alternate_screen());
    // It never limits what scrolls, nor how text wraps.
    EXPECT_THAT(terminal.terminal_bytes(),
                testing::Not(testing::ContainsRegex("\033\\[([0-9;]*r|[?]7l)")));
}
