// However the program ends, it closes the port and leaves the terminal as it found it.
#include <csignal>
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
    const char* keys;
    int signal; ///< 0 = none
    int exit_status;
    const char* ending; ///< stands on the screen
};

void PrintTo(const WayOut& way, std::ostream* stream)
{
    *stream << way.name;
}

constexpr const char* then_type = "3 -G -PK -PE -T";
constexpr const char* completed = "Program completed";

// clang-format off
const WayOut ways[] = {
    {"Esc", "3 -G -PK -T", "\033", 0, 0, completed},
    {"Ctrl-C", then_type, "\003", 0, 128 + SIGINT, completed},
    {"Ctrl-backslash", then_type, "\034", 0, 128 + SIGQUIT, completed},
    {"SIGINT while it waits", "3 -G -PC -PE -T", "", SIGINT, 128 + SIGINT, completed},
    {"SIGTERM", then_type, "", SIGTERM, 128 + SIGTERM, completed},
    {"SIGHUP", then_type, "", SIGHUP, 128 + SIGHUP, completed},
    {"bad command line", "3 -G -PK -PX -PE", "\033", 0, 255, "Error parsing argument #4: -PX"},
};
// clang-format on

class WaysOut : public testing::TestWithParam<WayOut>
{
};

TEST_P(WaysOut, LeaveTheTerminalAsItWas)
{
    const WayOut& way = GetParam();
    const ControllerRun run{way.arguments};
    PseudoTerminal terminal{run};
    ASSERT_TRUE(terminal.wait_until([&] {
        return terminal.screen.row_of("24.000V") != 0 || terminal.screen.row_of("12.5%") != 0;
    }));
    EXPECT_FALSE(terminal.screen.cursor_visible());
    terminal.type(way.keys);
    if (way.signal != 0)
        terminal.send_signal(way.signal);
    EXPECT_EQ(terminal.exit_status(), way.exit_status);
    EXPECT_THAT(terminal.screen.screen(), HasSubstr(way.ending));
    EXPECT_THAT(terminal.screen.screen(), Not(HasSubstr("Device type:")));
    // A bad command line ends without closing the port.
    EXPECT_EQ(was_called(run, "Close"), way.exit_status != 255);
    expect_terminal_restored(terminal);
}

INSTANTIATE_TEST_SUITE_P(, WaysOut, testing::ValuesIn(ways));

TEST(WayOut, SecondSignalEndsAtOnceWhateverTheLibraryDoes)
{
    const ControllerRun run{"3 -PK -T", "block GetHousekeeping for 600000\n"};
    PseudoTerminal terminal{run};
    ASSERT_TRUE(terminal.shows("Polling rate:")); // the first reading never ends
    // Two signals of one number may arrive as one: repeat until it has ended.
    ASSERT_TRUE(terminal.wait_until([&] {
        terminal.send_signal(SIGINT);
        return terminal.has_ended();
    }));
    EXPECT_EQ(terminal.exit_status(), 128 + SIGINT);
    EXPECT_THAT(terminal.screen.screen(), Not(HasSubstr(completed)));
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
    const ControllerRun run{"3 -PE -PK -T"};
    PseudoTerminal terminal{run};
    ASSERT_TRUE(terminal.shows("24.000V"));
    const std::string before = transcript(terminal.screen);

    terminal.type("\032");
    ASSERT_TRUE(terminal.is_stopped());
    ASSERT_TRUE(terminal.wait_until([&] { return terminal.screen.cursor_visible(); }));
    expect_terminal_restored(terminal);
    terminal.screen.feed("[1]+  Stopped\r\n$ fg\r\n");
    terminal.send_signal(SIGCONT);

    ASSERT_TRUE(terminal.wait_until([&] {
        const std::string row = terminal.screen.row(terminal.screen.row_of("$ fg") + 2);
        return row.find("24.000V") != std::string::npos;
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
