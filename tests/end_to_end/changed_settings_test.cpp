// While the acceptance test has changed the settings, nothing leaves them so without a word.
#include "tests/end_to_end/controller_run.h"
#include "tests/support/named_pipe.h"

#include <csignal>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <string>

using testing::ContainsRegex;
using testing::HasSubstr;

namespace
{

/// The acceptance test, with outputs on.
struct SettingsChanged : ControllerRun {
    explicit SettingsChanged(const char* scenario = "")
        : ControllerRun{"3 -G -R report -T", std::string{"uptime 200\n"} + scenario}
    {
        size = {.columns = 140, .rows = 60};
    }

    [[nodiscard]] bool are_changed(PseudoTerminal& terminal, const char* call = "SetEnable") const
    {
        return terminal.wait_until([&] { return was_called(*this, call); });
    }
};

TEST(SettingsChanged, AreNotLeftSoByCtrlZ)
{
    const SettingsChanged run;
    PseudoTerminal terminal{run};
    ASSERT_TRUE(run.are_changed(terminal));
    terminal.type("\032");
    ASSERT_TRUE(terminal.shows("Not stopped: outputs would stay on. Ctrl-C ends the run"));
    terminal.type("\003");
    EXPECT_EQ(terminal.exit_status(), 128 + SIGINT);
    EXPECT_THAT(terminal.screen.screen(), HasSubstr(settings_restored));
    expect_terminal_restored(terminal);
}

/// Asks for the end until it comes.
void leave_blocked_test(PseudoTerminal& terminal)
{
    ASSERT_TRUE(terminal.shows("abling the device..."));
    terminal.send_signal(SIGTERM);
    ASSERT_TRUE(terminal.shows("; outputs may still be on, Ctrl-C again leaves them so"));
    EXPECT_EQ(terminal.status_after_repeated(SIGINT), 128 + SIGINT);
    EXPECT_THAT(terminal.screen.screen(),
                HasSubstr("Settings are not restored, outputs may still be on!"));
    expect_terminal_restored(terminal);
}

TEST(SettingsChanged, AreLeftSoOnlyAfterAWarning)
{
    const SettingsChanged run{"block SetEnable at 1 for 600000\n"};
    const std::string report = run.folder + "/report";
    write_file(report, "an older report\n");
    PseudoTerminal terminal{run};
    leave_blocked_test(terminal);
    EXPECT_THAT(terminal.screen.screen(), HasSubstr("!\n\nThe file before is kept as 'report~'\n"));
    EXPECT_EQ(contents(report + '~'), "an older report\n");
    EXPECT_THAT(contents(report),
                ContainsRegex("abling the device...\n\n"
                              "First error:\tCOM_KOV_CTRL_SetEnable: no answer\n\n"
                              "\\*\\*\\* Test protocol aborted due to an error \\*\\*\\*\n"
                              "State of the instrument:\tUNKNOWN, OUTPUTS MAY STILL BE ON! The "
                              "settings could not be restored\n$"));
}

TEST(SettingsChanged, AreLeftSoAlsoWhenTheReportIsNotTaken)
{
    const SettingsChanged run{"block SetEnable at 1 for 600000\n"};
    NamedPipe report{run.folder + "/report"};
    report.open_end(O_RDWR);
    while (report.put("12345678") == 8) { // nobody reads
    }
    PseudoTerminal terminal{run};
    leave_blocked_test(terminal);
}

} // namespace
