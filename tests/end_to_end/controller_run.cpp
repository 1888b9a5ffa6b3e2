#include "tests/end_to_end/controller_run.h"

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <stdexcept>

#include <gtest/gtest.h>

namespace
{

/// Puts the mask in the place of each number in bright white behind the label.
void mask_number(std::string& text, std::string_view label, std::string_view mask)
{
    for (std::size_t at = 0; (at = text.find(label, at)) != std::string::npos;) {
        at += label.size();
        const std::size_t mark = text.find_first_not_of(' ', at);
        if (text.compare(std::min(mark, text.size()), 3, "{W}") != 0)
            continue;
        const std::size_t digits = text.find_first_not_of(' ', mark + 3);
        text.replace(at, text.find_first_not_of("0123456789.", digits) - at, mask);
    }
}

} // namespace

ScratchFolder::ScratchFolder() : path_{testing::TempDir() + "controller-XXXXXX"}
{
    if (mkdtemp(path_.data()) == nullptr)
        throw std::runtime_error{"no temporary folder"};
}

ScratchFolder::~ScratchFolder()
{
    std::error_code ignored;
    std::filesystem::remove_all(path_, ignored);
}

void ScratchFolder::write(std::string_view name, std::string_view text) const
{
    std::ofstream{path_ + '/' + std::string{name}, std::ios::binary} << text;
}

std::string ScratchFolder::read(std::string_view name) const
{
    std::ifstream file{path_ + '/' + std::string{name}, std::ios::binary};
    return {std::istreambuf_iterator<char>{file}, {}};
}

ControllerRun::ControllerRun(std::string_view command_line, std::string_view scenario)
{
    constexpr std::string_view steady_instrument = R"(latency 0.2
reply GetHousekeeping.voltage24 24.0
reply GetHousekeeping.voltage5 4.8
reply GetHousekeeping.voltage33 3.4
reply GetHousekeeping.temperatureCPU 65.5
reply GetHousekeeping.temperaturePSU -1.0
reply GetUptimeInt.seconds 3725
reply GetUptimeInt.milliseconds 250
reply GetUptimeInt.totalSeconds 90061
reply GetUptimeInt.totalMilliseconds 0
reply GetOptimeInt.seconds 59
reply GetOptimeInt.milliseconds 999
reply GetOptimeInt.totalSeconds 3600
reply GetOptimeInt.totalMilliseconds 0
reply GetCPUdata.load 0.125
reply GetCPUdata.frequency 168e6
reply GetFanData.failed 0
reply GetFanData.setSpeed 4100
reply GetFanData.measuredSpeed 4095
reply GetFanData.pwm 0.5
reply GetLEDData.red 0
reply GetLEDData.green 1
reply GetLEDData.blue 0
)";
    scratch.write("scenario", std::string{steady_instrument} + std::string{scenario});
    program = CONTROLLER_PROGRAM;
    arguments = command_line;
    environment = {{"TERM", "xterm-256color"},
                   {"KOV_SIMULATOR_STATE", "none"},
                   {"KOV_SIMULATOR_SCENARIO", scratch.path() + "/scenario"}};
    folder = scratch.path();
}

void ControllerRun::start_on_last_row()
{
    on_screen.clear();
    for (int row = 1; row < size.rows; ++row)
        on_screen += "older line " + std::to_string(row) + "\r\n";
}

bool was_called(const ControllerRun& run, std::string_view function)
{
    const std::string call = "  COM_KOV_CTRL_" + std::string{function} + '(';
    return run.scratch.read("Debug.txt").find(call) != std::string::npos;
}

std::string transcript(const TerminalEmulator& screen)
{
    std::string text;
    for (const std::string& line : screen.scrollback())
        text += line + '\n';
    text += screen.marked_screen();
    mask_number(text, "rate:", "{W}#######");
    mask_number(text, "response time:", "{W}######");
    return text;
}

std::string clipped(std::string_view marked_lines, int columns)
{
    std::string text, blanks, mark = "{.}", shown_mark = mark;
    int column = 0;
    for (std::size_t i = 0; i < marked_lines.size(); ++i) {
        const char c = marked_lines[i];
        if (c == '{') {
            mark = marked_lines.substr(i, 3);
            i += 2;
            continue;
        }
        if (c == '\n') {
            text += shown_mark == "{.}" ? "\n" : "{.}\n";
            shown_mark = "{.}";
            blanks.clear();
            column = 0;
            continue;
        }
        const bool continues = (c & 0xC0) == 0x80; // of a UTF-8 character
        column += continues ? 0 : 1;
        if (column > columns)
            continue;
        if (c == ' ') {
            blanks += c;
            continue;
        }
        text += blanks + (mark == shown_mark ? "" : mark) + c;
        blanks.clear();
        shown_mark = mark;
    }
    return text;
}

void expect_terminal_restored(const PseudoTerminal& terminal)
{
    EXPECT_TRUE(terminal.modes_are_original());
    EXPECT_TRUE(terminal.screen.pen_is_neutral());
    EXPECT_TRUE(terminal.screen.cursor_visible());
    EXPECT_FALSE(terminal.screen.used_alternate_screen());
}
