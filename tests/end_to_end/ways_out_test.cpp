// However the program ends, it closes the port and leaves the terminal as it found it.
#include "tests/end_to_end/controller_run.h"

#include <array>
#include <csignal>
#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <set>
#include <sstream>
#include <string>
#include <sys/ioctl.h>
#include <sys/stat.h>
#include <unistd.h>
#include <vector>

using testing::AnyOf;
using testing::ContainsRegex;
using testing::EndsWith;
using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;

namespace
{

constexpr const char* completed = "Program completed";

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
        // A sanitizer's runtime would take these for faults of the program.
        run.environment["ASAN_OPTIONS"] = "handle_segv=0:handle_sigbus=0:handle_sigfpe=0:"
                                          "handle_sigill=0:handle_sigtrap=0:handle_abort=0";
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
    // A repeat within half a second is the same wish: go on until it has ended.
    ASSERT_TRUE(terminal.wait_until([&] {
        terminal.send_signal(SIGINT);
        return terminal.has_ended();
    }));
    EXPECT_EQ(terminal.exit_status(), 128 + SIGINT);
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

// ---- Output that is no terminal ----

TEST(RedirectedOutput, KeepsWhatIsThereWhateverEndsTheProgram)
{
    const struct {
        const char* switches;
        const char* shown; ///< by the calls that were made
        std::vector<int> signals;
    } cases[] = {
        {"-PE -pk", "", {0}},
        {"-PE -PK", "GetHousekeeping", {SIGINT, SIGTERM, SIGHUP, SIGQUIT, SIGUSR1}},
        {"-R report", "SetEnable", {SIGINT, SIGTERM}},
    };
    using Stream = Launch::Stream;
    for (const auto& [switches, shown, signals] : cases) {
        for (const int number : signals) {
            for (const Stream output : {Stream::file, Stream::new_file}) {
                SCOPED_TRACE(std::string{switches} + ' ' + std::to_string(number));
                ControllerRun run{std::string{"3 -G "} + switches + " -T", "uptime 200\n"};
                run.output = output;
                run.output_file = run.folder + "/out";
                write_file(run.output_file, "yesterday\n");
                PseudoTerminal terminal{run};
                if (number != 0) {
                    ASSERT_TRUE(terminal.wait_until(
                        [&, call = std::string{shown}] { return was_called(run, call); }));
                    terminal.send_signal(number);
                }
                EXPECT_EQ(terminal.exit_status(), number == 0 ? 0 : 128 + number);
                const std::string begin = output == Stream::file ? "yesterday\n" : "";
                const std::string text = contents(run.output_file);
                EXPECT_THAT(text, StartsWith(begin + "Checking DLL Version...\n"));
                EXPECT_THAT(text, EndsWith(std::string{completed} + "\n"));
                EXPECT_EQ(text.find('\0'), std::string::npos);
            }
        }
    }
}

TEST(RedirectedOutput, ToAFullDiskKeepsNoCommandFromItsTurn)
{
    ControllerRun run{"3 -G -MA0 n -HT-1 -UN -T"};
    run.output = Launch::Stream::file;
    run.output_file = "/dev/full";
    PseudoTerminal terminal{run};
    EXPECT_EQ(terminal.exit_status(), 1);
    EXPECT_EQ(terminal.screen.row(1), "Error writing standard output: No space left on device");
    for (const char* function :
         {"SetModuleActivationState", "SetHeatCtrlHeaterTemperature", "SetEnable", "Close"})
        EXPECT_TRUE(was_called(run, function)) << function;
}

TEST(RedirectedOutput, ThatNobodyTakesKeepsTheProgramFromNoEnd)
{
    const struct {
        const char* switches;
        const char* at_work; ///< when this has been called
        const char* cleaned_up;
    } cases[] = {
        {"-PK", "GetHousekeeping", "Close"},
        {"-HS data -PK", "GetHeatCtrlMonitoring", "Close"},
        {"-R report", "SetEnable", "SetCurrentConfig"},
    };
    for (const auto& [switches, at_work, cleaned_up] : cases) {
        SCOPED_TRACE(switches);
        ControllerRun run{std::string{"3 -G "} + switches + " -T", "uptime 200\n"};
        run.output = Launch::Stream::pipe;
        PseudoTerminal terminal{run};
        ASSERT_TRUE(terminal.wait_until(
            [&, call = std::string{at_work}] { return was_called(run, call); }));
        terminal.fill_output_pipe();
        terminal.send_signal(SIGTERM);
        ASSERT_TRUE(terminal.wait_until([&] { return terminal.has_ended(); }));
        EXPECT_EQ(terminal.exit_status(), 128 + SIGTERM);
        EXPECT_TRUE(was_called(run, cleaned_up));
        EXPECT_TRUE(was_called(run, "Close"));
    }
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

// ---- While settings are changed ----

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

constexpr const char* restored = "Current configuration data has been restored";

TEST(SettingsChanged, AreNotLeftSoByCtrlZ)
{
    const SettingsChanged run;
    PseudoTerminal terminal{run};
    ASSERT_TRUE(run.are_changed(terminal));
    terminal.type("\032");
    ASSERT_TRUE(terminal.shows("Not stopped: outputs would stay on. Ctrl-C ends the run"));
    terminal.type("\003");
    EXPECT_EQ(terminal.exit_status(), 128 + SIGINT);
    EXPECT_THAT(terminal.screen.screen(), HasSubstr(restored));
    expect_terminal_restored(terminal);
}

/// Asks for the end until it comes.
void leave_blocked_test(PseudoTerminal& terminal)
{
    ASSERT_TRUE(terminal.shows("abling the device..."));
    terminal.send_signal(SIGTERM);
    ASSERT_TRUE(terminal.shows("; outputs may still be on, Ctrl-C again leaves them so"));
    ASSERT_TRUE(terminal.wait_until([&] {
        terminal.send_signal(SIGINT);
        return terminal.has_ended();
    }));
    EXPECT_EQ(terminal.exit_status(), 128 + SIGINT);
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
    const std::string report = run.folder + "/report";
    ASSERT_EQ(mkfifo(report.c_str(), 0600), 0);
    const int pipe = open(report.c_str(), O_RDWR | O_NONBLOCK | O_CLOEXEC); // nobody reads
    while (write(pipe, "12345678", 8) == 8) {
    }
    PseudoTerminal terminal{run};
    leave_blocked_test(terminal);
    close(pipe);
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
            EXPECT_THAT(terminal.piped_out(), HasSubstr(restored));
        }
        expect_terminal_restored(terminal);
    }
}

TEST(SlowPipe, IsWrittenToItsEndWhateverSignalComes)
{
    for (const int signal : {SIGWINCH, SIGCONT, SIGINT}) {
        SCOPED_TRACE(signal);
        const bool stops = signal == SIGINT;
        const ControllerRun run{"3 -y pipe -T", "latency 0\n"};
        const std::string pipe_name = run.folder + "/pipe";
        ASSERT_EQ(mkfifo(pipe_name.c_str(), 0600), 0);
        const int pipe = open(pipe_name.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC);
        PseudoTerminal terminal{run};
        const int full = fcntl(pipe, F_GETPIPE_SZ);
        int waiting = 0;
        int looks = 0; // the program is waiting for the reader when the pipe stays full
        ASSERT_TRUE(terminal.wait_until([&] {
            looks = ioctl(pipe, FIONREAD, &waiting) == 0 && waiting == full ? looks + 1 : 0;
            return looks == 5;
        }));
        terminal.send_signal(signal);
        std::array<char, 4096> bytes;
        EXPECT_TRUE(terminal.wait_until([&] {
            while (--looks < 0 && read(pipe, bytes.data(), bytes.size()) > 0) {
            }
            return terminal.has_ended();
        }));
        close(pipe);
        EXPECT_EQ(terminal.exit_status(), stops ? 128 + SIGINT : 0);
        EXPECT_THAT(terminal.screen.screen(), HasSubstr(stops ? "stopped at address" : "saved to"));
        EXPECT_THAT(terminal.screen.screen(), Not(HasSubstr("Error")));
    }
}

/// The write of a pipe that is full already, to a disk or to a reader that hangs.
TEST(SlowPipe, IsToldWhenItKeepsTheProgramFromItsEnd)
{
    ControllerRun run{"3 -y pipe -T", "latency 0\n"};
    run.size = {.columns = 140, .rows = 25};
    const std::string pipe_name = run.folder + "/pipe";
    ASSERT_EQ(mkfifo(pipe_name.c_str(), 0600), 0);
    const int pipe = open(pipe_name.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC);
    PseudoTerminal terminal{run};
    const int full = fcntl(pipe, F_GETPIPE_SZ);
    int waiting = 0;
    ASSERT_TRUE(terminal.wait_until(
        [&] { return ioctl(pipe, FIONREAD, &waiting) == 0 && waiting == full; }));
    terminal.send_signal(SIGINT);
    ASSERT_TRUE(terminal.shows("Waiting for a file to take what is written since "));
    EXPECT_THAT(terminal.screen.screen(), HasSubstr(" s; Ctrl-C again ends the program at once\n"));
    ASSERT_TRUE(terminal.wait_until([&] {
        terminal.send_signal(SIGINT);
        return terminal.has_ended();
    }));
    close(pipe);
    EXPECT_EQ(terminal.exit_status(), 128 + SIGINT);
    EXPECT_THAT(terminal.screen.screen(), Not(HasSubstr(completed)));
    expect_terminal_restored(terminal);
}

TEST(SlowPipe, IsWaitedForUntilSomebodyReadsIt)
{
    for (const char* letters : {"-xs", "-y", "-R"}) {
        for (const bool stopped : {false, true}) {
            SCOPED_TRACE(std::string{letters} + (stopped ? " stopped" : ""));
            const ControllerRun run{"3 " + std::string{letters} + " pipe -T",
                                    "latency 0\nstate.overall 11h\n"};
            const std::string pipe_name = run.folder + "/pipe";
            ASSERT_EQ(mkfifo(pipe_name.c_str(), 0600), 0);
            PseudoTerminal terminal{run};
            ASSERT_TRUE(terminal.shows("Waiting for somebody to read the pipe 'pipe'; Ctrl-C "));
            if (stopped) {
                terminal.send_signal(SIGINT);
                EXPECT_EQ(terminal.exit_status(), 128 + SIGINT);
                EXPECT_THAT(terminal.screen.screen(), HasSubstr("interrupted\n"));
                EXPECT_THAT(terminal.screen.screen(), Not(HasSubstr("annot open")));
                continue;
            }
            const int pipe = open(pipe_name.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC);
            std::array<char, 4096> bytes;
            ssize_t count = 0, all = 0;
            EXPECT_TRUE(terminal.wait_until([&] {
                while ((count = read(pipe, bytes.data(), bytes.size())) > 0)
                    all += count;
                return terminal.has_ended();
            }));
            close(pipe);
            EXPECT_EQ(terminal.exit_status(), 0);
            EXPECT_GT(all, 500);
        }
    }
}

TEST(SlowPipe, IsReadToItsEndUnlessTheProgramIsAskedToEnd)
{
    std::signal(SIGPIPE, SIG_IGN); // a reader that ends early fails the write
    for (const bool stopped : {false, true}) {
        SCOPED_TRACE(stopped);
        const ControllerRun run{"3 -G -Y pipe -T", "latency 0\n"};
        const std::string pipe_name = run.folder + "/pipe";
        ASSERT_EQ(mkfifo(pipe_name.c_str(), 0600), 0);
        PseudoTerminal terminal{run};
        ASSERT_TRUE(terminal.shows("Restore memory data?"));
        terminal.type("y");
        ASSERT_TRUE(terminal.shows("proceed?"));
        terminal.type("y");
        const int pipe = open(pipe_name.c_str(), O_WRONLY | O_CLOEXEC); // waits for the reader
        std::string image; // up to the end of the last block
        for (int i = 0; i < 0x400A0; ++i)
            image += "12\n";
        const std::size_t first = 1000;
        EXPECT_EQ(write(pipe, image.data(), first), 1000);
        ASSERT_TRUE(terminal.shows("address: 00000h"));
        int looks = 0; // the program waits for more by then
        EXPECT_TRUE(terminal.wait_until([&] { return ++looks == 5; }));
        terminal.resize({100, 30});
        EXPECT_TRUE(terminal.wait_until([&] { return ++looks == 10; }));
        if (stopped)
            terminal.send_signal(SIGTERM);
        else
            EXPECT_GT(write(pipe, image.data() + first, image.size() - first), 0);
        close(pipe);
        EXPECT_EQ(terminal.exit_status(), stopped ? 128 + SIGTERM : 0);
        EXPECT_THAT(terminal.screen.screen(), HasSubstr(stopped ? "interrupted" : "loaded from"));
        EXPECT_THAT(terminal.screen.screen(), Not(HasSubstr("Error")));
        EXPECT_TRUE(was_called(run, "Close"));
    }
}

} // namespace
