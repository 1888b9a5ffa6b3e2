// However the program ends, it closes the port and leaves the terminal as it found it.
#include <csignal>
#include <functional>
#include <string>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/end_to_end/controller_run.h"

using testing::HasSubstr;
using testing::Not;

namespace
{

struct WayOut {
    const char* name;
    const char* arguments;
    const char* scenario;
    std::function<void(PseudoTerminal&)> leave;
    int exit_status;
    const char* ending; ///< stands on the screen
    const char* absent; ///< does not
};

std::function<void(PseudoTerminal&)> type(const char* keys)
{
    return [=](PseudoTerminal& terminal) { terminal.type(keys); };
}

std::function<void(PseudoTerminal&)> raise_signal(int number)
{
    return [=](PseudoTerminal& terminal) { terminal.send_signal(number); };
}

void PrintTo(const WayOut& way, std::ostream* stream)
{
    *stream << way.name;
}

constexpr const char* then_type = "3 -G -PK -PE -T";
constexpr const char* completed = "Program completed";
constexpr const char* type_line = "Device type:";

// clang-format off
const WayOut ways[] = {
    {"Esc", "3 -G -PK -T", "", type("\033"), 0, completed, "Error"},
    {"Ctrl-C", then_type, "", type("\003"), 128 + SIGINT, completed, type_line},
    {"Ctrl-backslash", then_type, "", type("\034"), 128 + SIGQUIT, completed, type_line},
    {"SIGINT", then_type, "", raise_signal(SIGINT), 128 + SIGINT, completed, type_line},
    {"SIGTERM", then_type, "", raise_signal(SIGTERM), 128 + SIGTERM, completed, type_line},
    {"SIGHUP", then_type, "", raise_signal(SIGHUP), 128 + SIGHUP, completed, type_line},
    {"SIGQUIT", then_type, "", raise_signal(SIGQUIT), 128 + SIGQUIT, completed, type_line},
    {"SIGINT while it waits", "3 -G -PC -PE -T", "", raise_signal(SIGINT), 128 + SIGINT, completed, type_line},
    {"the library fails", then_type, "after 300 fail GetHousekeeping always text \"no answer\"\n",
     [](PseudoTerminal&) {}, 0, "Error at COM_KOV_CTRL_GetHousekeeping: no answer", "nothing"},
    {"bad command line", "3 -G -PK -PX -PE", "", type("\033"), 255, "Error parsing argument #4: -PX", type_line},
};
// clang-format on

class WaysOut : public testing::TestWithParam<WayOut>
{
};

TEST_P(WaysOut, LeaveTheTerminalAsItWas)
{
    const WayOut& way = GetParam();
    ControllerRun run{way.arguments, way.scenario};
    run.size = {.columns = 132, .rows = 60};
    PseudoTerminal terminal{run};
    ASSERT_TRUE(terminal.wait_until([&] {
        return terminal.screen.row_of("24.000V") != 0 || terminal.screen.row_of("12.5%") != 0;
    }));
    EXPECT_FALSE(terminal.screen.cursor_visible());
    way.leave(terminal);
    EXPECT_EQ(terminal.exit_status(), way.exit_status);
    EXPECT_THAT(terminal.screen.screen(), HasSubstr(way.ending));
    EXPECT_THAT(terminal.screen.screen(), Not(HasSubstr(way.absent)));
    // A bad command line ends without closing the port.
    EXPECT_EQ(was_called(run, "Close"), way.exit_status != 255);
    expect_terminal_restored(terminal);
}

INSTANTIATE_TEST_SUITE_P(, WaysOut, testing::ValuesIn(ways));

TEST(WayOut, BadCommandLineAlone)
{
    const ControllerRun run{"3 -PX"};
    PseudoTerminal terminal{run};
    EXPECT_EQ(terminal.exit_status(), 255);
    EXPECT_THAT(transcript(terminal.screen),
                HasSubstr("{M}Error parsing argument {W}#2{.}: {W}-PX{.}\n"));
    expect_terminal_restored(terminal);
}

TEST(WayOut, SecondSignalEndsAtOnceWhateverTheLibraryDoes)
{
    const ControllerRun run{"3 -G -PK -T", "block GetHousekeeping for 600000\n"};
    PseudoTerminal terminal{run};
    ASSERT_TRUE(terminal.shows("Polling rate:")); // the first reading never ends
    // Two signals of one number may arrive as one: repeat until it has ended.
    ASSERT_TRUE(terminal.wait_until([&] {
        terminal.send_signal(SIGINT);
        return terminal.has_ended();
    }));
    EXPECT_EQ(terminal.exit_status(), 128 + SIGINT);
    EXPECT_THAT(terminal.screen.screen(), Not(HasSubstr("Program completed")));
    expect_terminal_restored(terminal);
}

TEST(WayOut, ClosedTerminalClosesThePort)
{
    for (const char* arguments : {"3 -G -PK -T", "3 -G -PC -T"}) {
        const ControllerRun run{arguments};
        PseudoTerminal terminal{run};
        ASSERT_TRUE(terminal.wait_until([&] { return !terminal.screen.cursor_visible(); }));
        terminal.close_terminal();
        EXPECT_EQ(terminal.exit_status(), 128 + SIGHUP) << arguments;
        EXPECT_TRUE(was_called(run, "Close")) << arguments;
    }
}

TEST(Suspended, HandsTheTerminalBackAndTakesItAgain)
{
    ControllerRun run{"3 -PE -PK -T"};
    run.size = {.columns = 132, .rows = 25};
    PseudoTerminal terminal{run};
    ASSERT_TRUE(terminal.shows("24.000V"));
    const std::string before = transcript(terminal.screen);

    terminal.type("\032");
    ASSERT_TRUE(terminal.is_stopped());
    ASSERT_TRUE(terminal.wait_until([&] { return terminal.screen.cursor_visible(); }));
    expect_terminal_restored(terminal);
    terminal.screen.feed("[1]+  Stopped\r\n$ fg\r\n");
    terminal.send_signal(SIGCONT);

    const auto row_of_repaint = [&] { return terminal.screen.row_of("$ fg") + 2; };
    ASSERT_TRUE(terminal.wait_until([&] {
        return terminal.screen.row(row_of_repaint()).find("24.000V") != std::string::npos;
    })) << terminal.screen.screen();
    EXPECT_FALSE(terminal.screen.cursor_visible());
    EXPECT_TRUE(terminal.modes_are_raw());
    terminal.type("\033");
    EXPECT_EQ(terminal.exit_status(), 0);
    const std::string display = before.substr(before.find("Device housekeeping"));
    EXPECT_EQ(transcript(terminal.screen),
              before + "[1]+  Stopped\n$ fg\n" + display + "Program completed\n");
    expect_terminal_restored(terminal);
}

} // namespace
