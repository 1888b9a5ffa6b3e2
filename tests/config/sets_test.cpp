#include "tests/config/config_trial.h"

#include <algorithm>
#include <csignal>

namespace
{

/// Set 1 is active, set 2 deleted, set 3 active but not valid.
void make_sets(Trial& trial)
{
    make_set(trial, 1, "one\x05", true);
    make_set(trial, 2, "two", false);
    make_set(trial, 3, "three", true, false);
}

bool changes_something(const std::string& call)
{
    return call.starts_with("Set") || call.starts_with("Save") || call.starts_with("Load");
}

TEST(ConfigSets, WhatTheCommandsSay)
{
    const struct {
        const char* command;
        const char* said; ///< when all questions are answered "y"
        const char* debug_line;
    } cases[] = {
        {"-XC1",
         "Configuration #1 'one\\x05' is valid, overwrite anyway [y/n]?\ny\n"
         "Current configuration saved to NVM set #1 'one\\x05'\n",
         "Saving current configuration to NVM set #1:\n"},
        {"-XC2",
         "Configuration #2 'two' is valid but deleted, overwrite anyway [y/n]?\ny\n"
         "Current configuration saved to NVM set #2 'two'\n",
         "Saving current configuration to NVM set #2:\n"},
        {"-XC1023", "Current configuration saved to NVM set #1023\n",
         "Saving current configuration to NVM set #1023:\n"},
        {"-xc1", "Current configuration loaded from NVM set #1 'one\\x05'\n",
         "Loading current configuration from NVM set #1:\n"},
        {"-xc2", "{M}Configuration #2 'two' is deleted!{.}\n", ""},
        {"-xc3", "{M}Configuration #3 is invalid!{.}\n", ""},
        {"-xn2", "Name of configuration #2: 'two'\n", "Getting name of configuration #2:\n"},
        {"-xn3", "{M}Cannot get the name of the configuration #3 since it is invalid!{.}\n", ""},
        {"-XN1 'a\tb'", "Name of configuration #1 set to 'a\\tb'\n",
         "Setting name of configuration #1:\n"},
        {"-XN3 a", "{M}Cannot get the name of the configuration #3 since it is invalid!{.}\n", ""},
        {"-XD1",
         "Delete configuration #1 'one\\x05' [y/n]? y\nConfiguration #1 'one\\x05' deleted\n",
         "Deleting configuration #1:\n"},
        {"-xd2", "Configuration #2 'two' is already deleted!\n", ""},
        {"-XD3",
         "{M}Cannot delete the configuration #3 since it is invalid! Wipe it out instead.{.}\n",
         ""},
        {"-xu2", "Undelete configuration #2 'two' [y/n]? y\nConfiguration #2 'two' undeleted\n",
         "Undeleting configuration #2:\n"},
        {"-XU1", "Configuration #1 'one\\x05' is already active!\n", ""},
        {"-XU3",
         "{M}Cannot undelete the configuration #3 since it is invalid! Wipe it out instead.{.}\n",
         ""},
        {"-XW2", "Wipe out the configuration #2 'two' [y/n]? y\nConfiguration #2 'two' wiped out\n",
         "Wiping out configuration #2:\n"},
        {"-xw3", "Configuration #3 'three' wiped out\n", ""},
        {"-XD",
         "Delete all configurations [y/n]? y\nDeleting configuration(s):\n   1: 'one\\x05'\n",
         "Getting list of active configurations:\n"},
        {"-XU", "Undelete all configurations [y/n]? y\nUndeleting configuration(s):\n   2: 'two'\n",
         "Getting list of active configurations:\n"},
        {"-xi", "Active configurations:\n   1: 'one\\x05'\n   3: 'three'\n",
         "Getting list of active configurations:\n"},
        {"-XI", "Deleted configurations:\n   2: 'two'\n",
         "Getting list of deleted configurations:\n"},
        {"-XD1 -XD -xd",
         "Delete configuration #1 'one\\x05' [y/n]? y\nConfiguration #1 'one\\x05' deleted\n"
         "Delete all configurations [y/n]? y\nNo active configurations found\n"
         "Delete all configurations [y/n]? y\nNo active configurations found\n",
         ""},
        {"-XW2 -xW3 -xw1 -XU -XI -xI",
         "Wipe out the configuration #2 'two' [y/n]? y\nConfiguration #2 'two' wiped out\n"
         "Configuration #3 'three' wiped out\n"
         "Wipe out the configuration #1 'one\\x05' [y/n]? y\n"
         "Configuration #1 'one\\x05' wiped out\n"
         "Undelete all configurations [y/n]? y\nNo deleted configurations found\n"
         "No deleted configurations found\nNo active configurations found\n",
         ""},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.command);
        const auto display = [&c](const char* first_switches) {
            Trial trial;
            make_sets(trial);
            trial.pipe_in("yyyyy");
            trial.run(std::string{first_switches} + c.command + " -T");
            return trial.display();
        };
        EXPECT_EQ(display("3 -q "), c.said);
        EXPECT_THAT(display("3 -pn -g "), HasSubstr(std::string{"{.}\n"} + c.debug_line));
    }
}

TEST(ConfigSets, OnlyYIsAYes)
{
    const std::string commands[] = {"-XC1", "-XD1", "-XU2", "-XW1", "-XD", "-XU", "-XW"};
    for (const std::string& command : commands) {
        const bool twice = command == "-XW";
        for (const char* answer : {"y", "Y", "n", "x", "\r", "\033", ""}) {
            SCOPED_TRACE(command + ' ' + answer);
            const bool yes = std::string{answer} == "y" || std::string{answer} == "Y";
            Trial piped;
            make_sets(piped);
            piped.pipe_in((twice ? "y" : "") + std::string{answer});
            piped.run("3 " + command + " -T");
            Trial typed; // and not what was typed ahead
            make_sets(typed);
            typed.type(0, "yyyy");
            if (twice)
                typed.type(50, "yyyy");
            typed.type(100, *answer == '\0' ? "q" : answer);
            typed.type(300, "y");
            typed.run("3 " + command + " -T");
            for (const Trial* trial : {&piped, &typed}) {
                EXPECT_EQ(std::any_of(trial->calls.begin(), trial->calls.end(), changes_something),
                          yes);
                EXPECT_THAT(trial->screen(), Not(HasSubstr("interrupted")));
            }
        }
    }
}

TEST(ConfigSets, MarkingPassesTheValidFlagAsItIs)
{
    Trial trial{"reply GetConfigFlags.valid 7"};
    make_sets(trial);
    trial.pipe_in("yyy");
    trial.run("3 -XD1 -XU2 -XD -T");
    EXPECT_THAT(trial.calls,
                testing::IsSupersetOf({"SetConfigFlags(0, 0, 7)", "SetConfigFlags(1, 1, 7)",
                                       "SetConfigFlags(1, 0, 1)"}));
}

TEST(ConfigSets, AnInterruptStopsBetweenTwoSets)
{
    const struct {
        const char* command;
        int at_ms;
        const char* screen;
    } cases[] = {
        {"-XW", 60, "continue [y/n]? y\n{Y}interrupted{.} before configuration #3\n"},
        {"-XD", 35, "   1: 'one\\x05'\n{Y}interrupted{.} before configuration #4\n"},
    };
    for (const auto& c : cases) {
        Trial trial;
        make_sets(trial);
        make_set(trial, 4, "four", true);
        trial.instrument("latency 10");
        trial.pipe_in("yy");
        virtual_platform.signals = {{.at_ms = c.at_ms, .number = SIGINT}};
        trial.run(std::string{"3 "} + c.command);
        EXPECT_THAT(trial.screen(), HasSubstr(c.screen));
        EXPECT_EQ(trial.exit_status, 130);
    }
}

} // namespace
