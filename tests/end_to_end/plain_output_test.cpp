// Output and input that are no terminal, and terminals that want plain text.
#include "tests/end_to_end/controller_run.h"

#include <csignal>
#include <cstdlib>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <map>
#include <string>
#include <vector>

using Stream = Launch::Stream;
using testing::EndsWith;
using testing::HasSubstr;
using testing::StartsWith;

namespace
{

TEST(PlainOutput, HasEachLineOnceInItsFinalForm)
{
    for (const Stream input : {Stream::null_device, Stream::pipe, Stream::terminal}) {
        ControllerRun run{"3 -pk -T"};
        run.input = input;
        run.output = Stream::pipe;
        PseudoTerminal terminal{run};
        EXPECT_EQ(terminal.exit_status(), 0);
        EXPECT_EQ(terminal.piped_out(),
                  std::string{"COM3 opened for the communication stream\nDevice housekeeping:\n"} +
                      housekeeping_values + completed + '\n');
        EXPECT_EQ(terminal.terminal_bytes(), "");
        expect_terminal_restored(terminal);
    }
}

TEST(PlainOutput, ContinuousDisplayEndsWithItsInput)
{
    struct {
        Stream input;
        const char* piped_in;
        Stream output;
    } const cases[] = {
        {Stream::pipe, "x\033", Stream::pipe},
        {Stream::pipe, "", Stream::pipe},
        {Stream::null_device, "", Stream::pipe},
        {Stream::pipe, "\033", Stream::terminal},
    };
    for (const auto& [input, piped_in, output] : cases) {
        ControllerRun run{"3 -PK -PC -PE -T"};
        run.input = input;
        run.piped_in = piped_in;
        run.output = output;
        PseudoTerminal terminal{run};
        EXPECT_EQ(terminal.exit_status(), 0);
        const std::string text = terminal.piped_out() + terminal.screen.screen();
        EXPECT_THAT(text, HasSubstr("24V: 24.000V  5V0: 4.800V"));
        EXPECT_THAT(text, EndsWith("Device type: 8ED6h\nProgram completed\n"));
        EXPECT_EQ(terminal.piped_out().find_first_of("\033\r"), std::string::npos);
        expect_terminal_restored(terminal);
    }
}

TEST(PlainOutput, ColorsAndMovementFollowTheEnvironment)
{
    struct {
        std::map<std::string, std::string> environment;
        Stream output;
        bool moves;
        bool colors;
    } const cases[] = {
        {{}, Stream::pipe, false, false},
        {{{"CLICOLOR_FORCE", "1"}}, Stream::pipe, false, true},
        {{{"CLICOLOR_FORCE", "0"}}, Stream::pipe, false, false},
        {{{"CLICOLOR_FORCE", "1"}, {"NO_COLOR", "1"}}, Stream::pipe, false, false},
        {{{"NO_COLOR", "1"}}, Stream::terminal, true, false},
        {{{"NO_COLOR", ""}}, Stream::terminal, true, true},
        {{{"TERM", "dumb"}}, Stream::terminal, false, false},
    };
    for (const auto& [environment, output, moves, colors] : cases) {
        SCOPED_TRACE(testing::PrintToString(environment));
        ControllerRun run{"3 -PE -pl -T"};
        for (const auto& [name, value] : environment)
            run.environment[name] = value;
        run.output = output;
        PseudoTerminal terminal{run};
        EXPECT_EQ(terminal.exit_status(), 0);
        const std::string bytes = terminal.piped_out() + terminal.terminal_bytes();
        EXPECT_EQ(bytes.find("\033[?25l") != std::string::npos, moves);
        EXPECT_EQ(bytes.find('\033') != std::string::npos, moves || colors);
        if (output == Stream::pipe)
            terminal.screen.feed("\033[20h" + bytes); // LF ends the line, as in a shell's "cat"
        EXPECT_EQ(terminal.screen.marked_row(2),
                  colors ? "Device type: {W}8ED6h{.}" : "Device type: 8ED6h");
        EXPECT_TRUE(terminal.screen.row(3).starts_with("LED data of the base device: Red: "));
        EXPECT_TRUE(terminal.screen.pen_is_neutral());
    }
}

TEST(PlainOutput, EndsWhenNobodyReadsIt)
{
    for (const Stream output : {Stream::closed_pipe, Stream::pipe}) {
        ControllerRun run{"3 -G -PE -PK -PI -T"};
        run.output = output;
        PseudoTerminal terminal{run};
        if (output == Stream::pipe) {
            ASSERT_TRUE(terminal.wait_until([&] { return was_called(run, "GetHousekeeping"); }));
            terminal.close_output_pipe(); // as "head -1" does
        }
        EXPECT_EQ(terminal.exit_status(), 128 + SIGPIPE);
        EXPECT_TRUE(was_called(run, "Close"));
        EXPECT_EQ(was_called(run, "GetHousekeeping"), output == Stream::pipe);
        EXPECT_FALSE(was_called(run, "GetProductID"));
        expect_terminal_restored(terminal);
    }
}

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
    run.output = Stream::file;
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
        run.output = Stream::pipe;
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

TEST(Locale, ChangesNoByte)
{
    ControllerRun run{"3 -pk -HT12.5 -ht -xs numbers -xl numbers -hm -T", "noise off\n"};
    run.output = Stream::pipe;
    const std::string make = "localedef -i de_DE -f UTF-8 " + run.folder + "/comma >/dev/null 2>&1";
    if (std::system(make.c_str()) != 0)
        GTEST_SKIP() << "no locale with a decimal comma can be made";
    std::string outputs[2];
    for (std::string& output : outputs) {
        PseudoTerminal terminal{run};
        EXPECT_EQ(terminal.exit_status(), 0);
        output = terminal.piped_out() + contents(run.folder + "/numbers");
        run.environment["LOCPATH"] = run.folder;
        run.environment["LC_ALL"] = "comma";
    }
    EXPECT_THAT(outputs[0], HasSubstr("24V: 24.000V"));
    EXPECT_THAT(outputs[0], HasSubstr("12.5"));
    EXPECT_EQ(outputs[0], outputs[1]);
}

} // namespace
