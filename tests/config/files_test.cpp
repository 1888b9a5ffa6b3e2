#include "config/file_format.h"
#include "tests/config/config_trial.h"
#include "tests/support/temporary_file.h"

#include <csignal>

namespace
{

const std::string zero_entries =
    "DeviceEnable=N\nHvPsInterlockEnable=N,N,N,N\nHeatControlInterlockEnable=N,N,N,N\n"
    "FanSwitchOverride=No\nHeaterLimitVolt=0.000\nHeaterLimitAmp=0.000\nHeaterLimitWatt=0.000\n"
    "HeaterTemperature=-273.150\nHeaterEnable=N\n"
    "HVPS1Voltage=0.000\nHVPS1MaxVoltStep=0.000\nHVPS1NegOut=N\nHVPS1HighCurrRange=N\n"
    "HVPS1Enable=N\n"
    "HVPS2Voltage=0.000\nHVPS2MaxVoltStep=0.000\nHVPS2NegOut=N\nHVPS2HighCurrRange=N\n"
    "HVPS2Enable=N\n"
    "HVPS3Voltage=0.000\nHVPS3MaxVoltStep=0.000\nHVPS3NegOut=N\nHVPS3HighCurrRange=N\n"
    "HVPS3Enable=N\n";

std::string set_section(unsigned number, const std::string& name)
{
    return "[Configuration" + std::to_string(number) + "]\nName=" + name + '\n' + zero_entries;
}

std::string with_broken_enable(std::string section)
{
    return section.replace(section.find("=N"), 2, "=n");
}

class ConfigFiles : public testing::Test
{
    const TemporaryFolder folder_;
};

TEST_F(ConfigFiles, CurrentConfiguration)
{
    EXPECT_THAT(display_of("-g -XR -xs a.ini -xl a.ini -q -xr -xs b.ini -xl b.ini"),
                HasSubstr("Resetting current configuration\n"
                          "Current configuration reset\n"
                          "Saving current configuration into file 'a.ini':\n"
                          "Current configuration saved to data file 'a.ini'\n"
                          "Loading current configuration from file 'a.ini':\n"
                          "Current configuration loaded from data file 'a.ini'\n"
                          "Resetting current configuration\n"
                          "Saving current configuration into file 'b.ini':\n"
                          "Loading current configuration from file 'b.ini':\n"
                          "Closing"));
    EXPECT_EQ(contents("a.ini"), "[CurrentConfiguration]\n" + zero_entries);
    EXPECT_EQ(contents("b.ini"), contents("a.ini"));
}

TEST_F(ConfigFiles, OneSet)
{
    write_file("a.ini", set_section(7, "Bake\\tout") + set_section(8, std::string(300, 'x')));
    Trial trial;
    make_set(trial, 2, "two\n", false);
    make_set(trial, 4, "four", true, false);
    trial.run("3 -XL7 a.ini -xn7 -XS7 b.ini -XL8 a.ini -xn8 -XL9 a.ini -XS1 c.ini -XS2 c.ini "
              "-XS4 c.ini -g -q -XL7 a.ini -XS7 b.ini -T");
    EXPECT_THAT(
        trial.display(),
        StartsWith(
            "Configuration #7 loaded from data file 'a.ini'\n"
            "Name of configuration #7: 'Bake\\tout'\n"
            "Configuration #7 saved to data file 'b.ini'\n"
            "Configuration #8 loaded from data file 'a.ini'\n"
            "Name of configuration #8: '" +
            std::string(133, 'x') + '\n' + std::string(69, 'x') +
            "'\n"
            "{M}Error reading the data file 'a.ini', Section 'Configuration9', Entry 'Name'{.}\n"
            "{M}Cannot save the configuration #1 since it is invalid!{.}\n"
            "{M}Cannot save the configuration #2 'two\\n' since it was deleted!{.}\n"
            "{M}Cannot save the configuration #4 since it is invalid!{.}\n"
            "Loading configuration #7 from file 'a.ini':\n"
            "Saving configuration #7 into file 'b.ini':\n"
            "Closing"));
    EXPECT_EQ(contents("b.ini"), set_section(7, "Bake\\tout"));
    EXPECT_FALSE(std::filesystem::exists("c.ini"));
}

TEST_F(ConfigFiles, AllSetsSavedWipedAndLoadedAgain)
{
    std::string all;
    for (unsigned number = 1; number <= 1023; ++number)
        all += (all.empty() ? "" : "\n") + set_section(number, "no. " + std::to_string(number));
    write_file("all.ini", all);
    Trial trial;
    trial.pipe_in("yy");
    trial.run("3 -q -XL all.ini -XS 1.ini -XW -XS none.ini -XL 1.ini -XS 2.ini -xn1023 -T");
    EXPECT_EQ(contents("1.ini"), all);
    EXPECT_EQ(contents("2.ini"), all);
    EXPECT_FALSE(std::filesystem::exists("none.ini"));
    EXPECT_EQ(trial.display(),
              "Wipe out all configurations [y/n]? y\n"
              "All configuration data will be deleted and cannot be restored, continue [y/n]? y\n"
              "All configurations were wiped out\n"
              "No valid configurations found\n"
              "Name of configuration #1023: 'no. 1023'\n");
    EXPECT_EQ(trial.calls.size(), 2u * 3 * 1023 + 2 * 3 * 1023 + 3 * 1023 + 1023 + 7);
}

TEST_F(ConfigFiles, AllSetsAreTheActiveOnesAndThoseWithAName)
{
    Trial trial;
    make_set(trial, 2, "two", false);
    make_set(trial, 4, "four", true, false); // active is enough
    write_file("a.ini", "[Configuration3]\n" + zero_entries + set_section(5, "five") +
                            with_broken_enable(set_section(6, "six")));
    trial.run("3 -XS b.ini -XL a.ini -xi -T");
    EXPECT_EQ(trial.display(), "Configuration #4 saved to data file 'b.ini'\n"
                               "Configuration #5 loaded from data file 'a.ini'\n"
                               "{M}Error reading the data file 'a.ini', Section 'Configuration6', "
                               "Entry 'DeviceEnable'{.}\n"
                               "Active configurations:\n   4: 'four'\n   5: 'five'\n");
    EXPECT_EQ(contents("b.ini"), set_section(4, "four"));
}

TEST_F(ConfigFiles, WhatCannotBeReadIsNotSent)
{
    write_file("a.ini", with_broken_enable(set_section(5, "five")));
    const std::string broken = "{M}Error reading the data file 'a.ini', Section 'Configuration5', "
                               "Entry 'DeviceEnable'{.}\n";
    Trial trial;
    trial.run("3 -XL5 'no\tfile' -xs . -XL /dev/null -xl /dev/null -XL5 a.ini -XL a.ini -T");
    EXPECT_EQ(trial.display(), "{M}Error opening the data file 'no\\tfile'{.}\n"
                               "{M}Error opening the data file '.'{.}\n"
                               "No configurations found\n"
                               "{M}Error reading the data file '/dev/null', Section "
                               "'CurrentConfiguration', Entry 'DeviceEnable'{.}\n" +
                                   broken + broken);
    EXPECT_EQ(trial.calls_of("Set"), 0);
}

TEST_F(ConfigFiles, AnInterruptStopsBetweenTwoSets)
{
    write_file("a.ini", set_section(1, "new") + set_section(9, "new"));
    const struct {
        const char* command;
        const char* kept;
        int at_ms;
    } cases[] = {
        {"-XS b.ini", "Configuration #1 saved to data file 'b.ini'\n", 75},
        {"-XL a.ini", "Configuration #1 loaded from data file 'a.ini'\n", 35},
    };
    for (const auto& c : cases) {
        Trial trial;
        make_set(trial, 1, "one", true);
        trial.instrument("latency 10");
        virtual_platform.signals = {{.at_ms = c.at_ms, .number = SIGINT}};
        trial.run(std::string{"3 "} + c.command + " -XR");
        EXPECT_THAT(trial.screen(), HasSubstr(std::string{c.kept} + "{Y}interrupted{.} before"));
        EXPECT_EQ(trial.exit_status, 130);
        EXPECT_EQ(trial.calls_of("SetCurrentConfig"), 0);
    }
    EXPECT_EQ(contents("b.ini").substr(0, 26), "[Configuration1]\nName=one\n");
}

} // namespace
