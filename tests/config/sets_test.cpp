#include <algorithm>
#include <csignal>

#include <gmock/gmock.h>

#include "tests/config/config_trial.h"

namespace
{

using testing::HasSubstr;
using testing::Not;

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
        {"-xc2", "Configuration #2 'two' is deleted!\n", ""},
        {"-xc3", "Configuration #3 is invalid!\n", ""},
        {"-xn2", "Name of configuration #2: 'two'\n", "Getting name of configuration #2:\n"},
        {"-xn3", "Cannot get the name of the configuration #3 since it is invalid!\n", ""},
        {"-XN1 'a\tb'", "Name of configuration #1 set to 'a\\tb'\n",
         "Setting name of configuration #1:\n"},
        {"-XN3 a", "Cannot get the name of the configuration #3 since it is invalid!\n", ""},
        {"-XD1",
         "Delete configuration #1 'one\\x05' [y/n]? y\nConfiguration #1 'one\\x05' deleted\n",
         "Deleting configuration #1:\n"},
        {"-xd2", "Configuration #2 'two' is already deleted!\n", ""},
        {"-XD3", "Cannot delete the configuration #3 since it is invalid! Wipe it out instead.\n",
         ""},
        {"-xu2", "Undelete configuration #2 'two' [y/n]? y\nConfiguration #2 'two' undeleted\n",
         "Undeleting configuration #2:\n"},
        {"-XU1", "Configuration #1 'one\\x05' is already active!\n", ""},
        {"-XU3", "Cannot undelete the configuration #3 since it is invalid! Wipe it out instead.\n",
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
        Trial trial;
        make_sets(trial);
        trial.pipe_in("yyyyy");
        trial.run(std::string{"3 -q "} + c.command + " -T");
        EXPECT_EQ(trial.display(), c.said);
        Trial debug;
        make_sets(debug);
        debug.pipe_in("yyyyy");
        debug.run(std::string{"3 -pn -g "} + c.command + " -T");
        EXPECT_THAT(debug.display(), HasSubstr(std::string{"{.}\n"} + c.debug_line));
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
    Trial trial;
    make_sets(trial);
    trial.instrument("reply GetConfigFlags.valid 7");
    trial.pipe_in("yyy");
    trial.run("3 -XD1 -XU2 -XD -T");
    EXPECT_THAT(trial.calls,
                testing::IsSupersetOf({"SetConfigFlags(0, 0, 7)", "SetConfigFlags(1, 1, 7)",
                                       "SetConfigFlags(1, 0, 1)"}));
}

TEST(ConfigSets, LongNames)
{
    Trial trial;
    make_sets(trial);
    const std::string name = std::string(201, 'a') + "b" + std::string(98, 'c');
    trial.run("3 -XN1 " + name + " -xn1 -T");
    std::string display = trial.display(); // wraps twice
    std::erase(display, '\n');
    EXPECT_EQ(display, "Name of configuration #1 set to '" + name + "'Name of configuration #1: '" +
                           name.substr(0, 202) + "'");
}

/// Every call of every command fails once. It is reported by its name, nothing follows, and no
/// success is claimed.
TEST(ConfigSets, EachFailingCallEndsTheCommand)
{
    const TemporaryFolder folder;
    {
        Trial trial;
        make_set(trial, 1, "one", true);
        trial.run("3 -XS in.ini -xs current.ini -T");
    }
    // A command, and what only stands on the screen when it succeeded.
    // clang-format off
    const std::pair<std::string, const char*> cases[] = {
        {"-xs out.ini", "saved"},  {"-xl current.ini", "loaded"}, {"-XR", "reset"},
        {"-XS1 out.ini", "saved"}, {"-XL1 in.ini", "loaded"},     {"-XS out.ini", "saved"},
        {"-XC1", " saved"},        {"-xc1", " loaded"},           {"-XL in.ini", "loaded from"},
        {"-xn1", "Name of"},       {"-XN1 new", "Name of"},       {"-XD1", "deleted"},
        {"-XU2", "undeleted"},     {"-XW1", "wiped out"},         {"-XW", "were wiped out"},
        {"-XD", "(none)"},         {"-XU", "(none)"},             {"-xi", "(none)"},
        {"-XI", "(none)"},
    };
    // clang-format on
    for (const auto& [command, success] : cases) {
        Trial good;
        make_sets(good);
        good.pipe_in("yy");
        good.run("3 " + command + " -T");
        const std::vector<std::string> calls = {good.calls.begin() + 3, good.calls.end() - 2};
        ASSERT_FALSE(calls.empty()) << command;
        for (std::size_t i = 0; i < std::min<std::size_t>(calls.size(), 7); ++i) {
            const std::string function = calls[i].substr(0, calls[i].find('('));
            SCOPED_TRACE(command + ": " + calls[i]);
            const auto nth =
                1 + std::count_if(
                        calls.begin(), calls.begin() + static_cast<std::ptrdiff_t>(i),
                        [&](const std::string& call) { return call.starts_with(function + '('); });
            Trial trial;
            make_sets(trial);
            trial.instrument("fail " + function + " at " + std::to_string(nth));
            trial.pipe_in("yy");
            trial.run("3 " + command + " -T");
            const bool renamed = command == "-XW1" && function == "GetConfigName";
            EXPECT_THAT(trial.screen(),
                        HasSubstr((renamed ? ": Error at COM_ZELOP7UK_GetConfigName"
                                           : ": Error at COM_KOV_CTRL_" + function) +
                                  ": "));
            // What had been begun stays, and the report stands below it.
            const std::string begun =
                command.starts_with("-XS ") || command.starts_with("-XL ")
                    ? "Processing configuration #"
                : command == "-XW" ? "Wiping out configuration #"
                : i == 0 && function == "GetConfigFlags" && command != "-XS1 out.ini"
                    ? "\n\n{M}2026"
                    : "";
            EXPECT_THAT(trial.screen(), HasSubstr(begun));
            const bool first_was_saved = command.starts_with("-XS ") && i >= 3;
            EXPECT_EQ(trial.screen().find(success) != std::string::npos, first_was_saved);
            ASSERT_EQ(trial.calls.size(), 3 + i + 1 + 5 + 2); // the report makes five calls
            EXPECT_TRUE(std::equal(calls.begin(),
                                   calls.begin() + static_cast<std::ptrdiff_t>(i) + 1,
                                   trial.calls.begin() + 3));
        }
    }
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
