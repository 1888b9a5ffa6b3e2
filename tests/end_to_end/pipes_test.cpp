// Pipes in the places of files, whose other ends are slow, late or gone.
#include "tests/end_to_end/controller_run.h"
#include "tests/support/named_pipe.h"

#include <csignal>
#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <string>

using testing::EndsWith;
using testing::HasSubstr;
using testing::Not;

namespace
{

TEST(SlowPipe, IsWrittenToItsEndWhateverSignalComes)
{
    for (const int signal : {SIGWINCH, SIGCONT, SIGINT}) {
        SCOPED_TRACE(signal);
        const bool stops = signal == SIGINT;
        const ControllerRun run{"3 -y pipe -T", "latency 0\n"};
        NamedPipe pipe{run.folder + "/pipe"};
        pipe.open_end(O_RDONLY);
        PseudoTerminal terminal{run};
        int looks = 0; // the program is waiting for the reader when the pipe stays full
        ASSERT_TRUE(terminal.wait_until([&] {
            looks = pipe.is_full() ? looks + 1 : 0;
            return looks == 5;
        }));
        terminal.send_signal(signal);
        EXPECT_TRUE(terminal.wait_until([&] {
            if (--looks < 0)
                pipe.take();
            return terminal.has_ended();
        }));
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
    NamedPipe pipe{run.folder + "/pipe"};
    pipe.open_end(O_RDONLY);
    PseudoTerminal terminal{run};
    ASSERT_TRUE(terminal.wait_until([&] { return pipe.is_full(); }));
    terminal.send_signal(SIGINT);
    ASSERT_TRUE(terminal.shows("Waiting for a file to take what is written since "));
    EXPECT_THAT(terminal.screen.screen(), HasSubstr(" s; Ctrl-C again ends the program at once\n"));
    EXPECT_EQ(terminal.status_after_repeated(SIGINT), 128 + SIGINT);
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
            NamedPipe pipe{run.folder + "/pipe"};
            PseudoTerminal terminal{run};
            ASSERT_TRUE(terminal.shows("Waiting for somebody to read the pipe 'pipe'; Ctrl-C "));
            if (stopped) {
                terminal.send_signal(SIGINT);
                EXPECT_EQ(terminal.exit_status(), 128 + SIGINT);
                EXPECT_THAT(terminal.screen.screen(), HasSubstr("interrupted\n"));
                EXPECT_THAT(terminal.screen.screen(), Not(HasSubstr("annot open")));
                continue;
            }
            pipe.open_end(O_RDONLY);
            std::string text;
            EXPECT_TRUE(terminal.wait_until([&] {
                text += pipe.take();
                return terminal.has_ended();
            }));
            EXPECT_EQ(terminal.exit_status(), 0);
            EXPECT_GT(text.size(), 500U);
        }
    }
}

constexpr const char* waiting_for_writer =
    "Waiting for somebody to write into the pipe 'pipe'; Ctrl-C gives it up";

TEST(SlowPipe, ThatNobodyWritesIsWaitedForUntilTheEndIsAskedFor)
{
    for (const char* letters : {"-xl", "-XL"}) {
        SCOPED_TRACE(letters);
        const ControllerRun run{"3 -G " + std::string{letters} + " pipe -T"};
        NamedPipe pipe{run.folder + "/pipe"};
        pipe.open_end(O_RDONLY); // another reader
        PseudoTerminal terminal{run};
        ASSERT_TRUE(terminal.shows(waiting_for_writer));
        terminal.send_signal(SIGINT);
        EXPECT_EQ(terminal.exit_status(), 128 + SIGINT);
        EXPECT_THAT(terminal.screen.screen(), HasSubstr("interrupted\n"));
        EXPECT_THAT(terminal.screen.screen(), Not(HasSubstr("Error")));
        EXPECT_TRUE(was_called(run, "Close"));
    }
}

TEST(SlowPipe, IsReadToItsEndUnlessTheProgramIsAskedToEnd)
{
    std::signal(SIGPIPE, SIG_IGN); // a reader that ends early fails the write
    for (const bool stopped : {false, true}) {
        SCOPED_TRACE(stopped);
        const ControllerRun run{"3 -G -Y pipe -T", "latency 0\n"};
        NamedPipe pipe{run.folder + "/pipe"};
        PseudoTerminal terminal{run};
        ASSERT_TRUE(terminal.shows("Restore memory data?"));
        terminal.type("y");
        ASSERT_TRUE(terminal.shows("proceed?"));
        terminal.type("y");
        ASSERT_TRUE(terminal.shows(waiting_for_writer));
        pipe.open_end(O_WRONLY);
        std::string image; // up to the end of the last block
        for (int i = 0; i < 0x400A0; ++i)
            image += "12\n";
        const std::size_t first = 1000;
        EXPECT_EQ(pipe.put(image.substr(0, first)), 1000);
        ASSERT_TRUE(terminal.shows("address: 00000h"));
        int looks = 0; // the program waits for more by then
        EXPECT_TRUE(terminal.wait_until([&] { return ++looks == 5; }));
        terminal.resize({100, 30});
        EXPECT_TRUE(terminal.wait_until([&] { return ++looks == 10; }));
        if (stopped)
            terminal.send_signal(SIGTERM);
        else
            EXPECT_GT(pipe.put(image.substr(first)), 0);
        pipe.close_end();
        EXPECT_EQ(terminal.exit_status(), stopped ? 128 + SIGTERM : 0);
        EXPECT_THAT(terminal.screen.screen(), HasSubstr(stopped ? "interrupted" : "loaded from"));
        EXPECT_THAT(terminal.screen.screen(), Not(HasSubstr("Error")));
        EXPECT_TRUE(was_called(run, "Close"));
    }
}

TEST(StuckReport, KeepsNoSettingsFromBeingRestored)
{
    for (const bool is_read_at_last : {true, false}) {
        SCOPED_TRACE(is_read_at_last);
        ControllerRun run{"3 -UY -HT50 -xs before -T", "uptime 200\n"};
        run.environment["KOV_SIMULATOR_STATE"] = run.folder + "/state";
        run.size = {.columns = 140, .rows = 60};
        EXPECT_EQ(PseudoTerminal{run}.exit_status(), 0);
        NamedPipe pipe{run.folder + "/report"};
        pipe.open_end(O_RDWR);
        pipe.make_small();
        run.set_command_line("3 -G -R report -T");
        {
            PseudoTerminal terminal{run};
            ASSERT_TRUE(terminal.wait_until([&] { return was_called(run, "SetEnable"); }));
            terminal.send_signal(SIGTERM);
            ASSERT_TRUE(terminal.shows("State of the instrument: settings restored"));
            std::string report;
            if (is_read_at_last) {
                EXPECT_TRUE(terminal.wait_until([&] {
                    report += pipe.take();
                    return terminal.has_ended();
                }));
            }
            EXPECT_EQ(terminal.exit_status(), 128 + SIGTERM);
            const bool told = terminal.screen.screen().find("Cannot close the data file report") !=
                              std::string::npos;
            EXPECT_NE(told, is_read_at_last);
            report += pipe.take();
            EXPECT_EQ(testing::Value(report, EndsWith("\tsettings restored\n")), is_read_at_last);
        }
        run.set_command_line("3 -xs after -T");
        EXPECT_EQ(PseudoTerminal{run}.exit_status(), 0);
        EXPECT_EQ(contents(run.folder + "/before"), contents(run.folder + "/after"));
    }
}

} // namespace
