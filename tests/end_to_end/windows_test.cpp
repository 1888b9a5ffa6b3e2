// The program as it is built for Windows, under Wine: what it writes and how it ends, compared with
// the program of this system, and its displays in a console on a pseudo-terminal.
#include "tests/end_to_end/controller_run.h"

#include <algorithm>
#include <csignal>
#include <filesystem>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <string>

using testing::HasSubstr;
using testing::Not;

namespace
{

/// A text file of this system with the line ends of Windows.
std::string with_cr(const std::string& text)
{
    std::string result;
    for (const char c : text)
        result += c == '\n' ? std::string{"\r\n"} : std::string{c};
    return result;
}

/// What differs from run to run and from day to day, digits and the blanks before them, made equal.
std::string without_numbers(std::string text)
{
    std::replace_if(
        text.begin(), text.end(), [](char c) { return c == ' ' || (c >= '0' && c <= '9'); }, '#');
    return text;
}

/// Runs both programs with the same input; what the one for Windows wrote.
std::string expect_same_runs(ControllerRun& here, WindowsRun& there, const char* piped_in,
                             int exit_status)
{
    for (ControllerRun* run : {&here, static_cast<ControllerRun*>(&there)}) {
        run->input = run->output = Launch::Stream::pipe;
        run->piped_in = piped_in;
    }
    PseudoTerminal expected{here};
    PseudoTerminal run{there};
    EXPECT_EQ(expected.exit_status(), exit_status);
    EXPECT_EQ(run.exit_status(), exit_status); // of -1, too, the low eight bits remain
    EXPECT_EQ(without_numbers(run.piped_out()), without_numbers(expected.piped_out()));
    EXPECT_NE(run.piped_out(), "");
    return run.piped_out();
}

TEST(Windows, WritesTheSameAndEndsTheSameWay)
{
    struct {
        const char* arguments;
        const char* piped_in;
        int exit_status;
    } constexpr cases[] = {
        {"3 -p -pk -u -se -s -sv -st -si -T", "", 0},
        {"3 -g -z -PE -PK -T", "x\033", 0},
        {"3 -pi -px -pt", "", 255},
        {"3 -se 0Fh -SE", "", 255},
        {"3 -xs gr\xC3\xBCn.ini -XC7 -XN7 B\xC3\xA4ume -xi -XD7 -xl gr\xC3\xBCn.ini -T", "y\r\n",
         0},
        {"3 -xl missing.ini -y no/where.txt -T", "", 0},
        {"3 -HV -T", "", 255},
    };
    for (const auto& [arguments, piped_in, exit_status] : cases) {
        SCOPED_TRACE(arguments);
        ControllerRun here{arguments, "noise off\n"};
        WindowsRun there{arguments, "noise off\n"};
        (void)expect_same_runs(here, there, piped_in, exit_status);
    }
}

TEST(Windows, FilesAreTheSameButForTheirLineEnds)
{
    const std::string arguments = "3 -XC7 -XN7 one -XC9 -XS sets.ini -xs settings.ini -y image.txt "
                                  "-G -XL sets.ini -Y image.txt -T";
    ControllerRun here{arguments};
    WindowsRun there{arguments};
    EXPECT_THAT(expect_same_runs(here, there, "yy", 0),
                HasSubstr("Memory data loaded from file 'image.txt'"));
    for (const char* name : {"sets.ini", "settings.ini", "image.txt"}) {
        const std::string ours = contents(here.folder + '/' + name);
        EXPECT_GT(ours.size(), 100U);
        EXPECT_TRUE(contents(there.folder + '/' + name) == with_cr(ours)) << name;
    }
    EXPECT_THAT(contents(there.folder + "/Debug.txt"), HasSubstr("COM_KOV_CTRL_Close()  OK\r\n"));
}

TEST(Windows, DisplayStandsAndTakesKeys)
{
    const WindowsRun run{"3 -PE -PT -PK -T", "latency 100\n"};
    PseudoTerminal terminal{run};
    terminal.screen.expect_windows_console();
    ASSERT_TRUE(terminal.shows("24.000V")) << terminal.screen.screen();
    const std::string values =
        "  Voltages:  24V: {W}24.000V  {.}5V0: {C}4.800V  {.}3V3: {M}3.400V  {.}"
        "Temperature CPU:  {M}+65.5\xC2\xB0"
        "C  {.}PSU:   {C}-1.0\xC2\xB0"
        "C{.}";
    EXPECT_TRUE(terminal.wait_until([&] { return terminal.screen.marked_row(5) == values; }))
        << terminal.screen.marked_row(5);
    struct {
        const char* typed;
        const char* echo;
    } constexpr cases[] = {
        {"a", "'a'"},           {"\r", "00Dh"},        {"\033[A", "148h"},    {"\033[1;3B", "1A0h"},
        {"\033[1;5D", "173h"},  {"\033[5;5~", "184h"}, {"\033[5;3~", "199h"}, {"\033[15~", "13Fh"},
        {"\033[15;5~", "162h"}, {"\033[Z", "10Fh"},    {"\xC3\xA4", "084h"},
    };
    for (const auto& [typed, echo] : cases) {
        terminal.type(typed);
        const std::string echoed = "Device type: 8ED6h                      " + std::string{echo};
        EXPECT_TRUE(terminal.shows(echoed)) << echoed << '\n' << terminal.screen.screen();
        ASSERT_TRUE(terminal.wait_until([&] { return terminal.screen.row_of(echoed) == 0; }));
    }
    EXPECT_FALSE(terminal.screen.cursor_visible());
    terminal.type("\033");
    EXPECT_TRUE(terminal.shows("Program completed"));
    EXPECT_EQ(terminal.exit_status(), 0);
    EXPECT_TRUE(terminal.screen.pen_is_neutral());
    EXPECT_TRUE(terminal.screen.cursor_visible());
}

TEST(Windows, StatusScreenIsTheSame)
{
    ControllerRun here{"3", "noise off\n"};
    here.size = {.columns = 132, .rows = 60};
    const WindowsRun there{"3", "noise off\n"};
    PseudoTerminal expected{here};
    PseudoTerminal run{there};
    const auto text_of = [](const PseudoTerminal& terminal) {
        std::string text;
        for (int row = 4; row <= 60; ++row) // behind the rates and the wheel
            text += terminal.screen.row(row) + '\n';
        std::replace(text.begin(), text.end(), '-', '+');
        return without_numbers(text);
    };
    EXPECT_TRUE(run.wait_until([&] {
        int looks = 0;
        (void)expected.wait_until([&looks] { return ++looks > 3; });
        return run.screen.row_of("front enabled:") != 0 && text_of(run) == text_of(expected);
    })) << text_of(run)
        << text_of(expected);
    EXPECT_THAT(run.screen.row(1), HasSubstr("K O V   C O N T R O L L E R"));
    EXPECT_THAT(run.screen.row(3), HasSubstr("Port: COM3, data rate: "));
    for (PseudoTerminal* terminal : {&expected, &run}) {
        terminal->type("\033");
        EXPECT_TRUE(terminal->shows("Program completed"));
        EXPECT_EQ(terminal->exit_status(), 0);
    }
}

TEST(Windows, ControlCEndsInOrder)
{
    const WindowsRun run{"3 -G -PK -PE -T"};
    PseudoTerminal terminal{run};
    ASSERT_TRUE(terminal.shows("24.000V"));
    terminal.type("\003");
    EXPECT_TRUE(terminal.shows("Program completed"));
    EXPECT_EQ(terminal.exit_status(), 128 + SIGINT);
    EXPECT_THAT(terminal.screen.screen(), Not(HasSubstr("Device type:")));
    EXPECT_TRUE(was_called(run, "Close"));
    EXPECT_TRUE(terminal.screen.cursor_visible());
}

TEST(Windows, EndsWhenNobodyReadsIt)
{
    WindowsRun run{"3 -G -PE -PK -PI -T"};
    run.output = Launch::Stream::closed_pipe; // Wine tells of it when something is written
    PseudoTerminal terminal{run};
    EXPECT_EQ(terminal.exit_status(), 128 + SIGPIPE);
    EXPECT_TRUE(was_called(run, "Close"));
    EXPECT_FALSE(was_called(run, "GetProductID"));
}

#ifdef COMPANION_PROGRAM
TEST(Windows, JournalsAreReplayedOnTheOtherSystem)
{
    ControllerRun here{""};
    here.program = COMPANION_PROGRAM;
    WindowsRun there{""};
    std::string companion = there.arguments; // ends with the program and a blank
    const std::string name = "KOV-Controller.exe";
    const std::string controller =
        companion.substr(companion.find_last_of(' ', companion.size() - 2));
    companion.replace(companion.rfind(name), name.size(), "kov.exe");
    const auto run = [&](const std::string& command, const std::string& switches, int exit_status) {
        here.arguments = command + " -- " CONTROLLER_PROGRAM + switches;
        there.arguments = companion + command + " --" + controller + switches;
        return expect_same_runs(here, there, "", exit_status);
    };
    const std::string switches = " 3 -UY -HT80 -p -m -vg1 -T";
    const std::string tapped = run("tap -o journal", switches, 0);
    std::filesystem::rename(here.folder + "/journal", there.folder + "/theirs");
    std::filesystem::rename(there.folder + "/journal", here.folder + "/theirs");
    EXPECT_EQ(without_numbers(run("replay theirs", switches, 0)), without_numbers(tapped));
    EXPECT_THAT(run("replay theirs", " 3 -UN -T", 120), Not(HasSubstr("disabled")));
}
#endif

TEST(Windows, AnInstrumentIsKeptAndUsedByOneProgram)
{
    WindowsRun first{"3 -UY -PK -T"};
    const std::string state = "Z:" + first.folder + "/state/a.state";
    first.environment["KOV_SIMULATOR_STATE"] = state;
    PseudoTerminal terminal{first};
    ASSERT_TRUE(terminal.shows("24.000V"));
    WindowsRun second{"3 -u -T"};
    second.environment["KOV_SIMULATOR_STATE"] = state;
    second.output = Launch::Stream::pipe;
    {
        PseudoTerminal refused{second};
        EXPECT_EQ(refused.exit_status(), 0);
        EXPECT_THAT(refused.piped_out(), HasSubstr("COM3 is used by another program, process "));
    }
    terminal.type("\033");
    EXPECT_EQ(terminal.exit_status(), 0);
    PseudoTerminal accepted{second};
    EXPECT_EQ(accepted.exit_status(), 0);
    EXPECT_THAT(accepted.piped_out(), HasSubstr("Device is enabled\n"));
}

} // namespace
