#include "devlib/COM-KOV-CTRL.h"
#include "devlib/functions.h"
#include "protocol/needed_functions.h"
#include "simulator/simulator.h"
#include "tests/support/full_disk.h"
#include "tests/support/temporary_file.h"
#include "tests/support/trial.h"
#include "tests/support/virtual_time.h"

#include <algorithm>
#include <filesystem>
#include <functional>
#include <iterator>
#include <map>
#include <new>
#include <optional>
#include <regex>
#include <set>
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
    for (const char* passing : {"Waiting: ", "About 15 min. left", "Less than a minute left"}) {
        EXPECT_THAT(trial.output(), HasSubstr(passing));
        EXPECT_THAT(trial.screen(), Not(HasSubstr(passing)));
    }
    for (const char* line :
         {"\nDevice uptime:  {W}1:35.",
          "\nWaiting for uptime of 100s, press {W}SPACE{.} to abort...\nDevice uptime: {W}1:40.",
          "\nSlot #1:\n", "\nSlot #01:\n", "\n  Testing module 1 output voltage, range 3000V:\n"})
        EXPECT_THAT(trial.screen(), HasSubstr(line));
}

TEST(TestProtocol, ReportsWhatIsNoFiniteNumber)
{
    const TemporaryFile report;
    QuickTrial trial;
    trial.instrument("reply GetHousekeeping.voltage24 24 24 nan 24");
    trial.instrument("reply GetHousekeeping.voltage5 -inf 5");
    trial.instrument("reply GetHVsupplyTargetOutputVoltage.voltage -0.0004");
    trial.run("3 -q -R " + report.name() + " -T");
    for (const char* line : {"\n\t5V0:\t-infV \xB1 nan (+nan, -nan)\n",
                             "\n\t24V:\tnanV \xB1 nan (+nan, -nan)\n", "\t1V\t0.000V\t1.000V"})
        EXPECT_THAT(report.text(), HasSubstr(line));
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

TEST(TestProtocol, BeginsOnlyWhereAllFunctionsThatItCallsAreThere)
{
    std::set<std::string> listed, called;
    for (const std::size_t row : functions_of_acceptance_test)
        listed.insert(devlib::function_names[row].text);
    const TemporaryFile report;
    QuickTrial trial;
    trial.instrument("fail SetCurrentConfig at 1"); // it purges and disables then, too
    trial.instrument("fail SetCurrentConfig at 2");
    trial.run("3 -q -R " + report.name() + " -T");
    for (const std::string& call : trial.calls)
        called.insert("COM_KOV_CTRL_" + call.substr(0, call.find('(')));
    for (const char* of_session :
         {"Open", "Close", "CloseDebugFile", "GetErrorMessage", "GetIOState", "GetIOStateMessage",
          "GetCommError", "GetCommErrorMessage"})
        called.erase(std::string{"COM_KOV_CTRL_"} + of_session);
    EXPECT_THAT(listed, testing::ContainerEq(called));

    for (const char* missing : {"GetModuleLEDData", "SetHVsupplyMeasRanges"}) {
        const TemporaryFile older;
        std::ofstream{older.name()} << "an older report";
        Trial refused;
        virtual_platform.missing_functions = {std::string{"COM_KOV_CTRL_"} + missing};
        refused.run("3 -q -R " + older.name() + " -u -T");
        EXPECT_THAT(refused.screen(), HasSubstr(": Error at COM_KOV_CTRL_" + std::string{missing} +
                                                ": the device library has no such function"));
        EXPECT_THAT(refused.screen(), EndsWith("Device is {Y}disabled{.}\n"));
        EXPECT_EQ(refused.calls_of("Set"), 0);
        EXPECT_EQ(older.text(), "an older report");
    }
}

// ---- What can happen while the settings are changed ----

/// An acceptance test on an instrument with settings of its own, which must have them behind it.
class Bench
{
public:
    Bench()
    {
        trial.run("3 -q -UY -HT50 -HV10 -VV1 7 -MA1 y -T");
        before = settings();
    }

    /// Runs the test; `strike` happens at the end of the call that begins like `place`.
    void run(const std::string& place, const std::function<void(Bench&)>& strike)
    {
        bool struck = false;
        bool saved = false;
        simulator::observe_calls([&](const simulator::CallRecord& call) {
            trial.calls.push_back(std::string{call.function + 13} + '(' + call.inputs + ')');
            saved = saved || trial.calls.back() == "GetCurrentConfig()";
            if (!saved || struck || !trial.calls.back().starts_with(place))
                return;
            EXPECT_TRUE(virtual_platform.run_is_protected) << "nothing may cut this short";
            struck = true;
            strike(*this);
        });
        trial.calls.clear();
        write_file(report.name(), "The report before.");
        trial.run("3 -q -R " + report.name() + " -T");
        EXPECT_TRUE(struck) << place;
        EXPECT_FALSE(virtual_platform.run_is_protected);
    }

    /// What the instrument is set to, read past all that has gone wrong.
    std::string settings()
    {
        disk.reset();
        simulator::observe_calls({});
        trial.instrument("fail * never");
        trial.instrument("fail SetCurrentConfig never");
        (void)COM_KOV_CTRL_Close(); // which may have failed
        ConfigRecord record = {};
        EXPECT_EQ(COM_KOV_CTRL_Open(3) + COM_KOV_CTRL_GetCurrentConfig(&record) +
                      COM_KOV_CTRL_Close(),
                  0);
        return {std::begin(record.bytes), std::end(record.bytes)};
    }

    QuickTrial trial;
    const TemporaryFile report;
    std::optional<FullDisk> disk;
    std::string before; ///< the settings
};

void raise(Bench&, int number)
{
    virtual_platform.signals.push_back({virtual_time::now_us() / 1000 + 100, number});
}

enum class Outcome { success, restored, disabled, unknown };

struct Mishap {
    const char* name;
    std::function<void(Bench&)> strike;
    Outcome outcome;
    const char* told; ///< on the console
    int exit_status = 0;
    bool report_is_whole = true;
    bool only_in_waits = false; ///< that SPACE may end
};

void fail(Bench& bench, const char* what)
{
    bench.trial.instrument(std::string{"fail "} + what);
}

const Mishap mishaps[] = {
    {"a signal", [](Bench& b) { raise(b, 15); }, Outcome::restored, "{Y}Stopped by user!",
     128 + 15},
    {"one signal after the other",
     [](Bench& b) {
         raise(b, 2);
         raise(b, 2);
     },
     Outcome::restored, "{Y}Stopped by user!", 128 + 2},
    {"nobody reads the output any more", [](Bench&) { virtual_platform.output_is_closed = true; },
     Outcome::restored, "{Y}Stopped by user!", 128 + 13},
    {"SPACE in the wait", [](Bench& b) { b.trial.type(virtual_time::now_us() / 1000 + 500, "x "); },
     Outcome::restored, "{Y}Stopped by user!", 0, true, true},
    {"SPACE before the wait", [](Bench& b) { b.trial.type(virtual_time::now_us() / 1000, " "); },
     Outcome::success, "{G}Test"},
    {"a call fails", [](Bench& b) { fail(b, "* at 1"); }, Outcome::restored, "Error at COM_KOV_"},
    {"the link fails for a while", [](Bench& b) { fail(b, "* after 0 for 3000"); },
     Outcome::restored, "{Y}Trying again for 10s...{.}\nCurrent configuration data has been"},
    {"the link fails for ever", [](Bench& b) { fail(b, "* always"); }, Outcome::unknown,
     "{M}Current configuration data could not be restored"},
    {"settings are refused for ever",
     [](Bench& b) {
         raise(b, 15);
         fail(b, "SetCurrentConfig always");
     },
     Outcome::disabled, "{M}Current configuration data could not be restored", 128 + 15},
    {"settings are refused for a while",
     [](Bench& b) {
         fail(b, "* at 1");
         fail(b, "SetCurrentConfig after 0 for 2000");
     },
     Outcome::restored, "Error at COM_KOV_"},
    {"memory runs out", [](Bench&) { throw std::bad_alloc{}; }, Outcome::restored, "{M}*** Test"},
};

/// The last line, on the console.
const std::map<Outcome, const char*> state_lines = {
    {Outcome::restored, "\nState of the instrument: {G}settings restored{.}\n"},
    {Outcome::disabled, "\nState of the instrument: {M}SETTINGS NOT RESTORED, but the device has "
                        "been disabled as a last resort{.}\n"},
    {Outcome::unknown, "\nState of the instrument: {M}UNKNOWN, OUTPUTS MAY STILL BE ON! The "
                       "settings could not be restored{.}\n"},
};

void expect_outcome(const Mishap& mishap, Bench& bench)
{
    const std::string report = bench.report.text();
    EXPECT_THAT(bench.trial.screen(), HasSubstr(mishap.told));
    EXPECT_EQ(bench.trial.exit_status, mishap.exit_status);
    if (mishap.outcome == Outcome::success) {
        EXPECT_THAT(report, HasSubstr("\n\nTest protocol successfully completed within "));
    } else {
        EXPECT_THAT(bench.trial.screen(), HasSubstr("{M}" + aborted_line.substr(0, 12)));
        std::string state = state_lines.at(mishap.outcome);
        EXPECT_THAT(bench.trial.screen(), HasSubstr(state));
        // Neither what the file has to tell nor a port that does not close stands below a bad one.
        EXPECT_EQ(bench.trial.screen().ends_with(state), mishap.outcome != Outcome::restored);
        state = std::regex_replace(state, std::regex{"\\{.\\}"}, "");
        state.replace(state.find(": "), 2, ":\t");
        if (mishap.report_is_whole) {
            EXPECT_THAT(report, EndsWith("\n\n" + aborted_line + state.substr(1)));
            EXPECT_THAT(report, HasSubstr("\n\nTrying to restore the communication...\n"));
        }
    }
    EXPECT_EQ(report.find("\n\n\n"), std::string::npos);
    const std::string settings = bench.settings();
    if (mishap.outcome == Outcome::disabled) {
        EXPECT_EQ(settings.front(), '\0') << "the device is enabled";
    } else if (mishap.outcome != Outcome::unknown) {
        EXPECT_EQ(settings, bench.before);
    }
}

const struct {
    const char* call; ///< the last one before
    bool is_wait;
} places[] = {
    {"SetEnable(1)", false},
    {"GetHVsupplyOutputCurrent(1)", false},
    {"SetHeatCtrlVoltageLimit(22)", true}, // the heater is hot
    {"GetHeatCtrlMonitoring()", false},
    {"SetHVsupplyTargetOutputVoltage(1, 3)", true}, // the output is on
};

void expect_safety(const Mishap& mishap)
{
    for (const auto& [call, is_wait] : places) {
        if (mishap.only_in_waits && !is_wait)
            continue;
        SCOPED_TRACE(std::string{mishap.name} + " at " + call);
        Bench bench;
        bench.run(call, mishap.strike);
        expect_outcome(mishap, bench);
    }
}

TEST(TestProtocol, LeavesTheInstrumentSafeWhateverHappens)
{
    for (const Mishap& mishap : mishaps)
        expect_safety(mishap);
}

TEST(TestProtocol, AFullDiskFailsTheStepsButNotTheRestoring)
{
    expect_safety({"the disk is full",
                   [](Bench& b) { b.disk.emplace(std::filesystem::file_size(b.report.name())); },
                   Outcome::restored, "{M}Error writing the data file", 0, false});
}

TEST(TestProtocol, RestoresTheSettingsWhicheverCallFails)
{
    Bench good;
    good.run("GetUptimeInt", [](Bench&) {});
    const auto& calls = good.trial.calls;
    const auto saved = std::find(calls.begin(), calls.end(), "GetCurrentConfig()");
    std::set<std::string> functions; // with their arguments, as far as they are no values
    std::transform(
        saved, calls.end(), std::inserter(functions, functions.end()),
        [](const std::string& call) { return call.substr(0, call.find_first_of(",)")); });
    for (const char* end : {"GetCurrentConfig(", "Close(", "CloseDebugFile("})
        functions.erase(end);
    EXPECT_GT(functions.size(), 30U);
    for (const std::string& function : functions) {
        SCOPED_TRACE(function);
        Bench bench;
        const std::string name = function.substr(0, function.find('('));
        bench.run("GetUptimeInt()", [&](Bench& b) { fail(b, (name + " at 1").c_str()); });
        EXPECT_THAT(bench.trial.screen(), HasSubstr("Error at COM_KOV_CTRL_" + name + ": "));
        EXPECT_THAT(bench.report.text(),
                    HasSubstr("\n\nFirst error:\tCOM_KOV_CTRL_" + name + ": "));
        EXPECT_EQ(bench.settings(), bench.before);
    }
}

} // namespace
