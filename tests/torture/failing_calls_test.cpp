// Every switch of the tables with each of its library calls failing in turn: once, and twice in a
// row. However bad the device is, the user reads which function failed, the cursor comes back, the
// rest of the command line is carried out, and the port is closed once.
#include "frame/entry.h"
#include "tests/support/temporary_file.h"
#include "tests/torture/torture_run.h"

#include <algorithm>
#include <cctype>
#include <string>
#include <vector>

namespace
{

// ---- What is expected ----

std::string in_capitals(std::string text)
{
    for (char& c : text)
        c = static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
    return text;
}

/// Calls to a module are repeated once when they fail, others are not; but the first row that fits
/// decides. Switches are told by how they begin, functions by a part of their names.
bool is_repeated(const Command& command, const std::string& function)
{
    constexpr struct {
        const char* switches;
        const char* function;
        bool repeated;
    } exceptions[] = {
        {"R", "", false},
        {"N", "ModulePresence", true},
        {"N", "InterlockEnable", true},
        {"N", "", false},
        {"SI", "GetInterlockState", true},
        {"&", "", false},
        {"BS", "GetModuleState", false},
        {"MS_", "GetModuleState", false},
        {"B", "GetModuleState", false},
        {"", "InterlockEnable", false}, // these are the controller's
        {"", "RescanModules", true},
        {"", "RescanModule", false},
        {"", "MeasRanges", false},
        {"", "GetHVsupplyOutput", false},
        {"VT", "GetHVsupplyParamsPWM", true},
        {"VD", "GetHVsupply", false},
        {"VO", "ModuleDataReadyFlags", false},
        {"VT", "GetHVsupplyTargetOutputVoltage", false},
        {"", "HeatCtrlMonitoring", false}, // live displays
        {"VK", "GetHVsupplyHousekeeping", false},
        {"HK", "GetHeatCtrlHousekeeping", false},
    };
    const std::string switches = in_capitals(command.switches).substr(1);
    const auto has = [&function](const char* part) {
        return function.find(part) != std::string::npos;
    };
    for (const auto& row : exceptions) {
        if (switches.starts_with(row.switches) && has(row.function))
            return row.repeated;
    }
    return has("Module") || has("HeatCtrl") || has("HVsupply") || has("Base");
}

/// The function that the report names; some commands name another one than the one that failed.
std::string reported_function(const Command& command, const std::string& function)
{
    constexpr struct {
        const char* function;
        const char* switches; ///< the beginning, in capitals
        const char* reported;
    } others[] = {
        {"GetModuleManufDate", "-R", "KOV_CTRL_GetModuleManufDate"},
        {"GetModuleManufDate", "-MM*", "KOV_CTRL_GetModuleManufDate"},
        {"GetModuleManufDate", "-", "KOV_CTRL_GetModuleProductNo"},
        {"GetHVsupplyHousekeeping", "-MK*", "KOV_CTRL_GetModuleHousekeeping"},
        {"GetConfigName", "-XW", "ZELOP7UK_GetConfigName"},
    };
    for (const auto& other : others) {
        if (function == other.function && in_capitals(command.switches).starts_with(other.switches))
            return other.reported;
    }
    return "KOV_CTRL_" + function;
}

/// What fails without a report: commands that do not need it, and those that try again later.
bool is_silent(const Command& command, const std::string& function)
{
    return function == "Close" || function == "CloseDebugFile" || function == "ModulePurge" ||
           command.letters == "HS" || command.letters == "hs";
}

/// What a command on configurations says when it has done its work; "" when a line tells less.
std::string success_line(const Command& command, const Outcome& good)
{
    const std::size_t end = good.screen.find("\nProduct number: ");
    const std::size_t begin = good.screen.rfind('\n', end - 1) + 1;
    const bool for_each_set = good.screen[begin] == ' ' || command.switches.starts_with("-XS ") ||
                              command.switches.starts_with("-XL ");
    const bool of_sets = std::toupper(command.letters[0]) == 'X' && !for_each_set;
    return of_sets ? good.screen.substr(begin, end - begin) : "";
}

void check(const Command& command, const std::string& success, std::size_t number, bool twice)
{
    std::vector<std::size_t> failing = {number};
    if (twice)
        failing.push_back(number + 1);
    const Outcome run = outcome_of(command.switches, failing);
    ASSERT_GE(run.calls.size(), number);
    const Call& failed = run.calls[number - 1];
    ASSERT_TRUE(failed.failed);
    SCOPED_TRACE(command.switches + ": " + failed.name + (twice ? " and the next" : ""));

    const auto called = [&run](const char* function, bool with_success) {
        return std::count_if(run.calls.begin(), run.calls.end(), [&](const Call& call) {
            return call.name == function && !(with_success && call.failed);
        });
    };
    const bool has_session = called("GetDevType", true) > 0;
    const bool wrong = !has_session && command.needs_session; // ends without closing the port
    EXPECT_EQ(run.exit_status, wrong ? -1 : 0);
    EXPECT_EQ(called("Close", false), called("Open", true) > 0 && !wrong ? 1 : 0);
    EXPECT_TRUE(run.cursor_came_back);

    // The switch behind it; reports make calls, too.
    const auto last = std::find_if(run.calls.rbegin(), run.calls.rend(), [](const Call& call) {
        return !call.name.starts_with("Close") && call.name != "GetCommError" &&
               call.name != "GetIOState";
    });
    EXPECT_EQ(last->name == "GetProductNo", has_session);
    // A failed state of the base unit leaves the cursor hidden until the program's end.
    const bool stays_hidden = failed.name == "GetModuleState" && failed.inputs == "128";
    EXPECT_TRUE(!has_session || last->cursor_visible || stays_hidden);

    if (is_silent(command, failed.name))
        return;
    EXPECT_TRUE(success.empty() || failed.name == "GetProductNo" || !run.shows(success));
    const bool repeated = is_repeated(command, failed.name);
    if (repeated) {
        EXPECT_EQ(run.calls[number].name, failed.name);
        EXPECT_EQ(run.calls[number].inputs, failed.inputs);
    }
    EXPECT_EQ(run.shows("rror at COM_" + reported_function(command, failed.name) + ": "),
              !repeated || twice);
}

class FailingCalls : public testing::TestWithParam<std::size_t>
{
};

TEST_P(FailingCalls, AreReportedAndTheProgramGoesOn)
{
    const TemporaryFolder folder;
    make_files_to_read();
    std::size_t commands = 0;
    for (const Command& command : commands_of(all_switch_tables()[GetParam()])) {
        const Outcome good = outcome_of(command.switches);
        EXPECT_FALSE(good.shows("rror at")) << command.switches;
        const std::string success = success_line(command, good);
        for (const std::size_t number : calls_to_fail(good)) {
            check(command, success, number, false);
            check(command, success, number, true);
        }
        ++commands;
    }
    EXPECT_GT(commands, 0U);
}

INSTANTIATE_TEST_SUITE_P(OfTable, FailingCalls,
                         testing::Range(std::size_t{0}, all_switch_tables().size()));

} // namespace
