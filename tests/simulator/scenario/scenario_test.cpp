/// The scenario language: wrong lines, files, the shipped scenarios and the guide's examples.
#include "tests/simulator/instrument_test.h"

#include <cmath>
#include <filesystem>
#include <fstream>
#include <functional>
#include <map>

namespace
{

class ScenarioTest : public InstrumentTest
{
protected:
    /// A process that starts with this scenario file.
    static void start_with(const std::string& path)
    {
        COM_KOV_CTRL_Close();
        virtual_host::computer().environment["KOV_SIMULATOR_SCENARIO"] = path;
        simulator::reset_for_test();
    }

    static void start_with_lines(const std::string& lines)
    {
        virtual_host::computer().files["/lines.txt"] = lines;
        start_with("/lines.txt");
    }
};

TEST_F(ScenarioTest, WrongLinesAreRefusedByTheirWord)
{
    struct {
        const char* line;
        const char* said; ///< part of the problem
    } const cases[] = {
        {"interlock.front ajar", "not 'ajar'"},
        {"slot0.load 5", "no setting 'slot0.load'"},
        {"psu.temperature 5 6", "too much after 'psu.temperature'"},
        {"psu.temperature", "a value is missing after 'psu.temperature'"},
        {"slot1.load 0", "a number above 0, not '0'"},
        {"product_id plain", "a text in quotes, not 'plain'"},
        {"slot1.load \"5\"", "a word without quotes, not '5'"},
        {"product_id \"open", "no closing quote"},
        {"firmware_date \"1234567890123\"", "a shorter text"},
        {"fail GetStat always", "no function 'GetStat'"},
        {"fail GetState sometimes", "'sometimes' is no kind of fault"},
        {"fail GetState at 1 text oops", "a text in quotes is missing"},
        {"fail GetErrorMessage always", "has no status"},
        {"reply GetState.state[0] 5", "has no result 'state[0]'"},
        {"reply GetState.state 10000h", "'10000h' is out of range"},
        {"reply GetModulePresence.flags[8] 1", "has no result 'flags[8]'"},
        {"reply GetFwDate.date \"1234567890123\"", "longer than the buffer"},
        {"after 100 interlock.front ajar", "not 'ajar'"},
        {"after 100", "a line is missing"},
    };
    for (const auto& row : cases) {
        std::string problem;
        EXPECT_FALSE(simulator::apply(row.line, problem)) << row.line;
        EXPECT_NE(problem.find(row.said), std::string::npos) << row.line << ": " << problem;
    }
    // and nothing was changed
    wait_seconds(10);
    EXPECT_EQ(got(COM_KOV_CTRL_GetState), 1);
    EXPECT_EQ(got(COM_KOV_CTRL_GetInterlockState), 0xFF0F);
}

TEST_F(ScenarioTest, WrongLineOfAFileIsToldWhenThePortIsOpened)
{
    start_with_lines("# a comment\n\n  psu.temperature 55 # hot\npsu.color red\n");
    EXPECT_GE(COM_KOV_CTRL_GetSWVersion(), 0x0100);
    EXPECT_NE(COM_KOV_CTRL_Open(port), 0);
    EXPECT_STREQ(COM_KOV_CTRL_GetErrorMessage(),
                 "scenario '/lines.txt', line 4: there is no setting 'psu.color'");
    start_with("/not/there.txt");
    EXPECT_NE(COM_KOV_CTRL_Open(port), 0);
    EXPECT_STREQ(COM_KOV_CTRL_GetErrorMessage(), "there is no scenario file '/not/there.txt'");
}

TEST_F(ScenarioTest, ShippedScenariosShowWhatTheySay)
{
    const auto failures = [] {
        std::uint16_t state = 0;
        int failed = 0;
        for (int call = 0; call < 100; ++call)
            failed += COM_KOV_CTRL_GetState(&state) != 0 ? 1 : 0;
        return failed;
    };
    const auto state_after_11_seconds = [] {
        wait_seconds(11);
        return int{got(COM_KOV_CTRL_GetState)};
    };
    const auto present_modules = [] {
        std::uint8_t valid = 0, flags[8] = {};
        std::uint32_t slots = 0;
        EXPECT_EQ(COM_KOV_CTRL_GetModulePresence(&valid, &slots, flags), 0);
        return flags[0] + flags[1] + flags[2];
    };
    const auto main_decivolts = [] {
        double v24 = 0, v5 = 0, v33 = 0, cpu = 0, psu = 0;
        EXPECT_EQ(COM_KOV_CTRL_GetHousekeeping(&v24, &v5, &v33, &cpu, &psu), 0);
        return static_cast<int>(std::lround(v24 * 10));
    };
    const std::map<std::string, std::pair<std::function<int()>, int>> shown = {
        {"hot-psu.txt", {[] { return got(COM_KOV_CTRL_GetTemperatureState); }, 0x02}},
        {"open-front-interlock.txt", {state_after_11_seconds, 0x15}},
        {"empty-slots.txt", {present_modules, 1}},
        {"changed-modules.txt", {[] { return got(COM_KOV_CTRL_GetScannedModuleState); }, 1}},
        {"unknown-device.txt", {[] { return got(COM_KOV_CTRL_GetDevType); }, 0x1234}},
        {"old-library.txt", {[] { return COM_KOV_CTRL_GetSWVersion() < 0x0100; }, 1}},
        {"failing-link.txt", {failures, 10}},
        {"wrong-modules.txt", {[] { return got(COM_KOV_CTRL_GetModuleDevType, 0); }, 2573}},
        {"supplies-out-of-tolerance.txt", {main_decivolts, 246}},
    };
    for (const auto& entry : std::filesystem::directory_iterator(SCENARIO_FOLDER)) {
        SCOPED_TRACE(entry.path());
        start_with(entry.path().string());
        ASSERT_EQ(COM_KOV_CTRL_Open(port), 0) << COM_KOV_CTRL_GetErrorMessage();
        const auto& [ask, answer] = shown.at(entry.path().filename().string());
        EXPECT_EQ(ask(), answer);
    }
}

TEST_F(ScenarioTest, ExamplesOfTheGuideAreRight)
{
    std::ifstream guide(GUIDE_FILE);
    std::string example;
    unsigned examples = 0;
    bool inside = false;
    for (std::string line; std::getline(guide, line);) {
        if (line == "```scenario") {
            inside = true;
            example.clear();
        } else if (inside && line == "```") {
            inside = false;
            ++examples;
            start_with_lines(example);
            EXPECT_EQ(COM_KOV_CTRL_Open(port), 0) << COM_KOV_CTRL_GetErrorMessage() << '\n'
                                                  << example;
        } else if (inside) {
            example += line + '\n';
        }
    }
    EXPECT_EQ(examples, 4U);
}

} // namespace
