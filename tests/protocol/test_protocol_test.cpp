#include "simulator/simulator.h"
#include "tests/support/full_disk.h"
#include "tests/support/temporary_file.h"
#include "tests/support/trial.h"
#include "tests/support/virtual_time.h"

#include <algorithm>
#include <map>
#include <new>
#include <utility>

namespace
{

const std::string aborted_line = "*** Test protocol aborted due to an error ***\n";

/// The settings before the test, the test, the settings after it.
std::string with_settings_around(const TemporaryFile& report, const TemporaryFile& before,
                                 const TemporaryFile& after)
{
    return "3 -q -UY -HT50 -HV10 -VV1 7 -MA1 y -xs " + before.name() + " -R " + report.name() +
           " -xs " + after.name() + " -T";
}

TEST(TestProtocol, WholeRun)
{
    const TemporaryFile report, before, after;
    Trial trial{"latency 5", "noise on", "uptime 95", "reply GetModulePresence.flags[2] 0",
                "reply GetModuleDevType.type@3 56092"};
    trial.run(with_settings_around(report, before, after));
    EXPECT_EQ(report.text(), contents(std::string{KOV_TEST_DATA} + "/expected_report.txt"));
    EXPECT_EQ(before.text(), after.text());
    EXPECT_THAT(trial.screen(), HasSubstr("{G}Test protocol successfully completed within "));
    for (const char* line :
         {"\nDevice uptime:  {W}1:35.",
          "\nWaiting for uptime of 100s, press {W}SPACE{.} to abort...\nDevice uptime: {W}1:40.",
          "\nSlot #1:\n", "\nSlot #01:\n", "\n  Testing module 1 output voltage, range 3000V:\n"})
        EXPECT_THAT(trial.screen(), HasSubstr(line));
}

TEST(TestProtocol, ChangesNothingBeforeTheSettingsAreSaved)
{
    const struct {
        const char* line;
        const char* keys; ///< after 30 s
        const char* told;
    } cases[] = {
        {"reply GetModulePresence.valid 0", "",
         "{M}Module presence flags invalid, continuation not possible!{.}\n"},
        {"reply GetState.state 11h", "", "{M}Error detected, continuation not possible!{.}\n"},
        {"uptime 5", "q ", "{Y}Stopped by user!{.}\n"},
        {"fail GetCurrentConfig always", "", "Error at COM_KOV_CTRL_GetCurrentConfig: "},
        {"fail GetModuleFwDate@2 always", "", "Error at COM_KOV_CTRL_GetModuleFwDate: "},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.line);
        const TemporaryFile report;
        Trial trial{"latency 10", "uptime 100", c.line};
        trial.type(30'000, c.keys);
        trial.run("3 -q -R " + report.name() + " -T");
        EXPECT_THAT(trial.screen(), StartsWith("Test protocol created on 2026/03/14, 09:26:5"));
        EXPECT_THAT(trial.screen(),
                    HasSubstr("\nDLL version: {W}1-05{.}\nUsed communication port: {W}COM3{.}, "
                              "Data transfer rate: {W}9600 baud{.}\n"));
        EXPECT_THAT(trial.screen(), HasSubstr("\nDevice enabled: {M}no{.}\n"));
        EXPECT_THAT(trial.screen(), HasSubstr(c.told));
        EXPECT_THAT(report.text(), EndsWith("\n" + aborted_line));
        EXPECT_EQ(trial.calls_of("Set") + trial.calls_of("Purge"), 0);
        EXPECT_EQ(trial.exit_status, 0);
    }
    const TemporaryFile report; // a signal in the last call before
    Trial interrupted{"latency 10", "uptime 100"};
    simulator::observe_calls([&](const simulator::CallRecord& call) {
        interrupted.calls.emplace_back(call.function);
        if (interrupted.calls.back() == "COM_KOV_CTRL_GetConfigList")
            virtual_platform.signals.push_back({virtual_time::now_us() / 1000, 15});
    });
    interrupted.run("3 -q -R " + report.name() + " -T");
    EXPECT_EQ(interrupted.calls_of("COM_KOV_CTRL_Set"), 0);
    EXPECT_THAT(report.text(), EndsWith("\n\nStopped by user!\n\n" + aborted_line));
}

TEST(TestProtocol, AFullDiskFailsTheStepsButNotTheRestoring)
{
    const TemporaryFile report, before, after;
    const FullDisk disk{8'000}; // full in the middle of the steps
    QuickTrial trial;
    trial.run(with_settings_around(report, before, after));
    const std::string told = "{M}Error writing the data file '" + report.name() + "'{.}\n";
    EXPECT_THAT(trial.screen(), HasSubstr(told));
    EXPECT_EQ(trial.screen().find(told, trial.screen().find(told) + 1), std::string::npos);
    EXPECT_THAT(trial.screen(), HasSubstr("{M}*** Test protocol aborted"));
    EXPECT_EQ(before.text(), after.text());
}

TEST(TestProtocol, SwitchesOffWhatItCannotRestore)
{
    const TemporaryFile report;
    QuickTrial trial;
    trial.instrument("fail SetCurrentConfig always");
    trial.run("3 -q -R " + report.name() + " -T");
    EXPECT_EQ(trial.calls_of("Purge()"), 1);
    const auto last_set = std::find_if(trial.calls.rbegin(), trial.calls.rend(),
                                       [](const auto& call) { return call.starts_with("Set"); });
    EXPECT_EQ(*last_set, "SetEnable(0)");
    EXPECT_THAT(trial.screen(), HasSubstr("{M}The configuration could not be restored, outputs may "
                                          "still be on!{.}\n"));
}

/// What must be true of a test that came to no good end after the settings had been saved.
void expect_orderly_abort(const Trial& trial, const TemporaryFile& report,
                          const TemporaryFile& before, const TemporaryFile& after)
{
    EXPECT_THAT(report.text(), EndsWith("\n" + aborted_line));
    EXPECT_THAT(trial.screen(), HasSubstr("Trying to restore the communication...\n"));
    EXPECT_THAT(trial.screen(), HasSubstr("{M}" + aborted_line.substr(0, 12)));
    const auto last = [&trial](const char* call) {
        return std::find_if(trial.calls.rbegin(), trial.calls.rend(),
                            [call](const auto& made) { return made.starts_with(call); });
    };
    EXPECT_LT(last("SetCurrentConfig"), last("Purge")) << "purged first, then restored";
    EXPECT_LT(last("SetCurrentConfig"), last("SetHeatCtrl"));
    EXPECT_LT(last("SetCurrentConfig"), last("SetModuleActivationState"));
    EXPECT_EQ(before.text(), after.text());
}

/// Of each kind of call from the saving of the settings on: the first ones, and the last.
std::vector<std::size_t> calls_to_fail()
{
    const TemporaryFile report, before, after;
    QuickTrial trial;
    trial.run(with_settings_around(report, before, after));
    EXPECT_THAT(report.text(), HasSubstr("successfully completed"));
    std::erase(trial.calls, "GetSWVersion()"); // cannot fail and does not count
    std::map<std::string, std::vector<std::size_t>> by_kind;
    const auto position = [&trial](const char* call) {
        return static_cast<std::size_t>(std::find(trial.calls.begin(), trial.calls.end(), call) -
                                        trial.calls.begin());
    };
    const auto last = std::find(trial.calls.rbegin(), trial.calls.rend(), "GetUptimeInt()");
    const auto behind = static_cast<std::size_t>(trial.calls.rend() - last);
    for (std::size_t n = position("GetConfigList()") + 3; n < behind; ++n)
        by_kind[trial.calls[n]].push_back(n + 1);
    std::vector<std::size_t> chosen;
    for (const auto& [call, positions] : by_kind) {
        constexpr std::size_t most = 2;
        for (std::size_t i = 0; i < positions.size(); ++i) {
            if (i < most || i + 1 == positions.size())
                chosen.push_back(positions[i]);
        }
    }
    return chosen;
}

TEST(TestProtocol, RestoresTheSettingsWhateverFails)
{
    const std::vector<std::size_t> positions = calls_to_fail();
    EXPECT_GT(positions.size(), 80U);
    for (const std::size_t n : positions) {
        SCOPED_TRACE(n);
        const TemporaryFile report, before, after;
        QuickTrial trial;
        trial.instrument("fail * at " + std::to_string(n));
        trial.run(with_settings_around(report, before, after));
        EXPECT_THAT(trial.screen(), HasSubstr("Error at COM_KOV_CTRL_"));
        EXPECT_THAT(report.text(), EndsWith("\n" + aborted_line));
        EXPECT_EQ(before.text(), after.text());
    }
}

TEST(TestProtocol, RestoresTheSettingsWhenMemoryRunsOut)
{
    for (const char* last_call : {"SetHeatCtrlVoltageLimit", "GetHeatCtrlMonitoring", "Purge",
                                  "SetHVsupplyTargetOutputVoltage", "SetCurrentConfig"}) {
        SCOPED_TRACE(last_call);
        const TemporaryFile report, before, after;
        QuickTrial trial;
        if (last_call == std::string_view{"Purge"})
            trial.instrument("fail SetHeatCtrlVoltageLimit at 2");
        bool saved = false;
        bool ran_out = false;
        simulator::observe_calls([&](const simulator::CallRecord& call) {
            const std::string_view function = call.function + 13; // behind COM_KOV_CTRL_
            saved = saved || function == "GetConfigList";
            if (saved && !std::exchange(ran_out, ran_out || function == last_call) && ran_out)
                throw std::bad_alloc{};
        });
        trial.run(with_settings_around(report, before, after));
        EXPECT_TRUE(ran_out);
        EXPECT_THAT(report.text(), EndsWith("\n" + aborted_line));
        EXPECT_EQ(before.text(), after.text());
        EXPECT_EQ(trial.exit_status, 0);
    }
}

TEST(TestProtocol, SpaceAndSignalsEndItInOrder)
{
    // SPACE works in the waits of the heater and of the outputs, a signal everywhere.
    const struct {
        const char* before_stop; ///< the last call before
        bool with_space;
    } cases[] = {
        {"SetHeatCtrlVoltageLimit", true},
        {"SetHeatCtrlPowerLimit", true},
        {"SetHVsupplyTargetOutputVoltage", true},
        {"SetEnable", false},
        {"GetHousekeeping", false},
        {"SetHVsupplyMeasRanges", false},
        {"GetHVsupplyOutputCurrent", false},
        {"SetHeatCtrlCurrentLimit", false},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.before_stop);
        const TemporaryFile report, before, after;
        QuickTrial trial;
        bool stopped = false;
        simulator::observe_calls([&](const simulator::CallRecord& call) {
            trial.calls.push_back(std::string{call.function}.substr(13) + '(' + call.inputs + ')');
            if (trial.calls.back() == "Purge()") {
                EXPECT_TRUE(virtual_platform.run_is_protected) << "nothing may cut this short";
            }
            if (stopped || !trial.calls.back().starts_with(c.before_stop) ||
                trial.calls_of("GetConfigList()") == 0)
                return;
            stopped = true;
            const std::int64_t soon_ms = virtual_time::now_us() / 1000 + 500;
            if (c.with_space)
                trial.type(soon_ms, "x ");
            else
                virtual_platform.signals.push_back({soon_ms, 15});
        });
        trial.run(with_settings_around(report, before, after));
        EXPECT_THAT(trial.screen(), HasSubstr("{Y}Stopped by user!{.}\n"));
        EXPECT_THAT(report.text(), HasSubstr("\n\nStopped by user!\n"));
        EXPECT_EQ(trial.exit_status, c.with_space ? 0 : 128 + 15);
        if (c.with_space)
            expect_orderly_abort(trial, report, before, after);
        else
            EXPECT_THAT(report.text(), EndsWith("\n" + aborted_line));
    }
}

} // namespace
