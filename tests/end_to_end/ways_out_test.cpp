// However the program ends, it closes the port and leaves the terminal as it found it.
#include "tests/end_to_end/controller_run.h"

#include <csignal>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <set>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

using testing::AllOf;
using testing::AnyOf;
using testing::ContainsRegex;
using testing::EndsWith;
using testing::HasSubstr;
using testing::Not;

namespace
{

/// A sanitizer's runtime would take signals for faults of the program, and deal with those itself.
constexpr const char* no_signals_for_sanitizers =
    "handle_segv=0:handle_sigbus=0:handle_sigfpe=0:handle_sigill=0:handle_sigtrap=0:handle_abort=0";

TEST(WayOut, OfADisplayLeavesTheTerminalAsItWas)
{
    const struct {
        const char* arguments;
        const char* keys;
        int exit_status;
        const char* ending; ///< stands on the screen
    } ways[] = {
        {"3 -G -PK -T", "\033", 0, completed},
        {"3 -G -PK -PE -T", "\003", 128 + SIGINT, completed},
        {"3 -G -PK -PE -T", "\034", 128 + SIGQUIT, completed},
        {"3 -G -PK -PX -PE", "\033", 255, "Error parsing argument #4: -PX"},
    };
    for (const auto& way : ways) {
        SCOPED_TRACE(way.exit_status);
        const ControllerRun run{way.arguments};
        PseudoTerminal terminal{run};
        ASSERT_TRUE(terminal.shows("24.000V"));
        EXPECT_FALSE(terminal.screen.cursor_visible());
        terminal.type(way.keys);
        EXPECT_EQ(terminal.exit_status(), way.exit_status);
        EXPECT_THAT(terminal.screen.screen(), HasSubstr(way.ending));
        EXPECT_THAT(terminal.screen.screen(), Not(HasSubstr("Device type:")));
        // A bad command line ends without closing the port.
        EXPECT_EQ(was_called(run, "Close"), way.exit_status != 255);
        expect_terminal_restored(terminal);
    }
}

/// All signals whose default ends a process, but for the one that nobody can catch.
std::vector<int> ending_signals()
{
    std::vector<int> numbers;
    for (int number = 1; number <= SIGRTMAX; ++number) {
        const std::set<int> others = {SIGKILL, SIGSTOP, SIGTSTP, SIGTTIN, SIGTTOU,
                                      SIGCONT, SIGCHLD, SIGURG,  SIGWINCH};
        const bool of_the_runtime = number >= __SIGRTMIN && number < SIGRTMIN;
        if (!others.contains(number) && !of_the_runtime)
            numbers.push_back(number);
    }
    return numbers;
}

TEST(WayOut, ByEverySignalIsInOrder)
{
    EXPECT_GT(ending_signals().size(), 50U);
    for (const int number : ending_signals()) {
        SCOPED_TRACE(number);
        ControllerRun run{"3 -G -PK -Z -T"};
        run.environment["ASAN_OPTIONS"] = no_signals_for_sanitizers;
        PseudoTerminal terminal{run};
        ASSERT_TRUE(terminal.shows("24.000V"));
        terminal.send_signal(number);
        EXPECT_EQ(terminal.exit_status(), 128 + number);
        EXPECT_THAT(terminal.screen.screen(), HasSubstr(completed));
        EXPECT_TRUE(was_called(run, "Close"));
        EXPECT_FALSE(was_called(run, "DevicePurge")) << "no later switch runs";
        expect_terminal_restored(terminal);
    }
}

TEST(Crash, LeavesTheTerminalAsItWasAndTellsWhatMayBeOn)
{
    using Way = std::pair<const char*, int>;
    const auto crash = [](const char* switches, const Way& way, bool is_test) {
        SCOPED_TRACE(std::string{switches} + ' ' + way.first);
        ControllerRun run{std::string{"3 -G "} + switches + " -T", "uptime 200\n"};
        run.size = {.columns = 140, .rows = 60};
        run.environment["LD_PRELOAD"] = FAILING_PROGRAM_LIBRARY;
        run.environment["CRASH"] = run.folder + "/crash";
        run.environment["ASAN_OPTIONS"] =
            no_signals_for_sanitizers + std::string{":verify_asan_link_order=0"};
        write_file(run.folder + "/report", "an older report\n");
        PseudoTerminal terminal{run};
        ASSERT_TRUE(terminal.wait_until(
            [&] { return was_called(run, is_test ? "SetEnable" : "GetHousekeeping"); }));
        write_file(run.folder + "/crash", way.first);
        EXPECT_EQ(terminal.exit_status(), -way.second);
        expect_terminal_restored(terminal);
        const auto told = HasSubstr(
            "The program has failed: settings are not restored, outputs may still be on!\n\n"
            "The file before is kept as 'report~'\n");
        EXPECT_EQ(testing::Value(terminal.screen.screen(), told), is_test);
        const auto last_words =
            AllOf(HasSubstr("First error:\tthe program has failed\n\n"),
                  EndsWith("OUTPUTS MAY STILL BE ON! The settings could not be restored\n"));
        EXPECT_EQ(testing::Value(contents(run.folder + "/report"), last_words), is_test);
    };
    for (const Way& way :
         {Way{"no address", SIGSEGV}, {"full stack", SIGSEGV}, {"abort", SIGABRT}}) {
        crash("-PK", way, false);
        crash("-R report", way, true);
    }
}

constexpr const char* waiting_notice = "Waiting for COM_KOV_CTRL_GetHousekeeping since ";

TEST(WayOut, IsToldAndTakenWhenACallBlocks)
{
    ControllerRun run{"3 -PK -T", "block GetHousekeeping for 600000\n"};
    run.size = {.columns = 140, .rows = 25};
    PseudoTerminal terminal{run};
    ASSERT_TRUE(terminal.shows("Polling rate:")); // the first reading never ends
    terminal.send_signal(SIGINT);
    ASSERT_TRUE(terminal.shows(waiting_notice));
    EXPECT_THAT(terminal.screen.screen(),
                ContainsRegex("\\.[0-9] s; Ctrl-C again leaves the instrument as it is\n"));
    EXPECT_EQ(terminal.status_after_repeated(SIGINT), 128 + SIGINT);
    EXPECT_THAT(terminal.screen.screen(), Not(HasSubstr(completed)));
    expect_terminal_restored(terminal);
}

TEST(WayOut, IsInOrderWhenSignalsComeTogether)
{
    const ControllerRun run{"3 -G -PK -T", "block GetHousekeeping for 200\n"};
    PseudoTerminal terminal{run};
    ASSERT_TRUE(terminal.shows("24.000V"));
    for (const int number : {SIGTERM, SIGCONT, SIGHUP, SIGTERM, SIGINT})
        terminal.send_signal(number);
    EXPECT_GT(terminal.exit_status(), 128); // any of them may be taken first
    EXPECT_TRUE(was_called(run, "Close"));
    expect_terminal_restored(terminal);
}

// ---- Whatever holds the screen or waits, and whatever comes in between ----

struct Held {
    const char* switches;
    const char* shown;         ///< when it is there
    const char* scenario = ""; ///< a further line
};

void PrintTo(const Held& held, std::ostream* stream)
{
    *stream << held.switches;
}

constexpr const char* quit = "press Esc to quit";

const Held held[] = {
    {"-PK", quit},
    {"-PB", quit},
    {"-PC", quit},
    {"-PL", "Press Esc to quit"},
    {"-S", quit},
    {"-SI", quit},
    {"-SN", quit},
    {"-BS", quit},
    {"-VK1", quit},
    {"-VO1", quit},
    {"-VD1", quit},
    {"-VT1", quit},
    {"-HK", quit},
    {"-HM", quit},
    {"-HI", quit},
    {"-HS data", quit},
    {"-@", quit},
    {"-&1 5", quit},
    {"-N", "polling rate"},
    {"-y data", "Saving memory data", "block GetMemoryData for 5"},
    {"-Y data", "Restore memory data? [y/n]:"},
    {"-M", "be saved now?", "reply GetScannedModuleState.changed 1"},
    {"-XD", "Delete all configurations [y/n]?"},
    {"-XW", "Wiping out configuration #3", "block SetConfigData for 5"},
    {"-R data", "press SPACE to abort", "uptime 5"},
    {"-PI", "proceed anyway (Y/N)?", "reply GetDevType.type 1234h"},
};

class Interrupted : public testing::TestWithParam<Held>
{
protected:
    struct Run : ControllerRun {
        Run()
            : ControllerRun{std::string{"3 -G "} + GetParam().switches + " -Z -T",
                            std::string{GetParam().scenario} + '\n'}
        {
            size = {.columns = 140, .rows = 62};
        }
    };

    /// Waits until the command is at work; says yes to what is asked before.
    static bool is_at_work(PseudoTerminal& terminal)
    {
        return terminal.wait_until([&] {
            if (terminal.screen.row_of(GetParam().shown) != 0)
                return true;
            if (terminal.screen.row_of("[y/n]?") != 0)
                terminal.type("y");
            return false;
        });
    }

    static void expect_ended_by(int signal, PseudoTerminal& terminal, const ControllerRun& run)
    {
        EXPECT_EQ(terminal.exit_status(), 128 + signal);
        EXPECT_TRUE(was_called(run, "Close"));
        EXPECT_FALSE(was_called(run, "DevicePurge")) << "no later switch runs";
        expect_terminal_restored(terminal);
    }
};

TEST_P(Interrupted, BySignals)
{
    for (const int signal : {SIGINT, SIGTERM, SIGHUP, SIGQUIT}) {
        SCOPED_TRACE(signal);
        const Run run;
        PseudoTerminal terminal{run};
        ASSERT_TRUE(is_at_work(terminal)) << terminal.screen.screen();
        terminal.send_signal(signal);
        expect_ended_by(signal, terminal, run);
    }
}

TEST_P(Interrupted, ByTheClosedTerminal)
{
    const Run run;
    PseudoTerminal terminal{run};
    ASSERT_TRUE(is_at_work(terminal)) << terminal.screen.screen();
    terminal.close_terminal();
    EXPECT_EQ(terminal.exit_status(), 128 + SIGHUP);
    EXPECT_TRUE(was_called(run, "Close"));
}

TEST_P(Interrupted, ByTheShellForAWhile)
{
    const Run run;
    PseudoTerminal terminal{run};
    ASSERT_TRUE(is_at_work(terminal)) << terminal.screen.screen();
    const bool was_hidden = !terminal.screen.cursor_visible();
    const bool was_raw = terminal.modes_are_raw();
    terminal.type("\032");
    ASSERT_TRUE(terminal.is_stopped());
    ASSERT_TRUE(terminal.wait_until([&] { return terminal.screen.cursor_visible(); }));
    expect_terminal_restored(terminal);
    terminal.resize({.columns = 150, .rows = 65});
    terminal.send_signal(SIGCONT);
    EXPECT_TRUE(terminal.wait_until([&] {
        return (!was_hidden || !terminal.screen.cursor_visible()) &&
               (!was_raw || terminal.modes_are_raw());
    }));
    terminal.send_signal(SIGTERM);
    expect_ended_by(SIGTERM, terminal, run);
}

INSTANTIATE_TEST_SUITE_P(At, Interrupted, testing::ValuesIn(held));

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
        const std::string row = terminal.screen.row(terminal.screen.row_of("$ fg") + 3);
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

TEST(Suspended, LosesNoLineAndSendsNoneLate)
{
    constexpr int count = 1000;
    std::string switches;
    for (int i = 0; i < count; ++i)
        switches += "-pe ";
    const ControllerRun run{"3 " + switches + "-T", "latency 0\n"};
    PseudoTerminal terminal{run};
    // Nobody takes the text: the program waits for the terminal in the middle of it.
    ASSERT_TRUE(terminal.is_waiting_for_terminal());
    terminal.send_signal(SIGTSTP); // the key would drop what the terminal holds
    ASSERT_TRUE(terminal.is_stopped());
    terminal.take_all();
    terminal.screen.feed("\r\n$ fg\r\n");
    terminal.send_signal(SIGCONT);
    EXPECT_EQ(terminal.exit_status(), 0);
    std::istringstream lines{transcript(terminal.screen)};
    int shown = 0;
    bool again = false;
    for (std::string line; std::getline(lines, line);) {
        shown += line == "Device type: 8ED6h" ? 1 : 0;
        if (again) {
            EXPECT_THAT(line, AnyOf("Device type: 8ED6h", completed));
        }
        again = again || line == "$ fg";
    }
    EXPECT_GE(shown, count);
    EXPECT_LE(shown, count + 2); // the last line is shown again
}

TEST(Background, TakesNoKeyAndIsNotStopped)
{
    for (const char* switches : {"-R report", "-PK"}) {
        SCOPED_TRACE(switches);
        ControllerRun run{std::string{"3 -G "} + switches + " -T", "uptime 200\n"};
        run.in_background = true;
        run.output = Launch::Stream::pipe;
        PseudoTerminal terminal{run};
        ASSERT_TRUE(terminal.wait_until([&] { return was_called(run, "GetHousekeeping"); }));
        terminal.type(" \n\033");
        const auto size = contents(run.folder + "/Debug.txt").size();
        EXPECT_TRUE(terminal.wait_until(
            [&] { return contents(run.folder + "/Debug.txt").size() > size + 10'000; }));
        EXPECT_TRUE(terminal.modes_are_original());
        if (std::string{switches} == "-PK") {
            terminal.bring_to_foreground();
            EXPECT_EQ(terminal.exit_status(), 0); // the keys are there for it now
        } else {
            terminal.send_signal(SIGTERM);
            EXPECT_EQ(terminal.exit_status(), 128 + SIGTERM);
            EXPECT_THAT(terminal.piped_out(), HasSubstr(settings_restored));
        }
        expect_terminal_restored(terminal);
    }
}

} // namespace
