#include <algorithm>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "modules/presence.h"
#include "tests/support/trial.h"
#include "tests/support/virtual_time.h"

namespace
{

using testing::Contains;
using testing::EndsWith;
using testing::HasSubstr;
using testing::Not;

std::ptrdiff_t count(const Trial& trial, const std::string& call)
{
    return std::count(trial.calls.begin(), trial.calls.end(), call);
}

void set_flags(Trial& trial, const std::string& flags)
{
    for (std::size_t i = 0; i < flags.size(); ++i)
        trial.instrument("reply GetModulePresence.flags[" + std::to_string(i) + "] " + flags[i]);
}

TEST(Modules, Names)
{
    EXPECT_EQ(module_name(0), "heat-controller");
    EXPECT_EQ(module_name(3), "HV-supply 3");
    EXPECT_EQ(module_name(128), "base module");
    EXPECT_EQ(module_name(255), "all modules");
    EXPECT_EQ(module_name(4), "");
}

TEST(ListModules, WhatStandsInTheSlots)
{
    Trial trial;
    set_flags(trial, "10231");
    trial.instrument("reply GetModuleDevType.type@128 1");
    trial.run("3 -m -T");
    EXPECT_EQ(trial.display(), "Module presence:\n"
                               "  slot #00: P/N: {W}240211{.}, dev.type: {W}HTCTRL{.}\n"
                               "  slot #01: n/a\n"
                               "  slot #02: invalid\n"
                               "  slot #03: unknown\n"
                               " base unit: P/N: {W}240401{.}, dev.type: {M}unknown{.}\n");
    Trial invalid;
    invalid.instrument("reply GetModulePresence.valid 0");
    invalid.run("3 -m -T");
    EXPECT_EQ(invalid.display(), "Module presence: {M}flags invalid!{.}\n");
    Trial failing; // a failing slot ends its line only
    failing.instrument("fail GetModuleProductNo at 1");
    failing.instrument("fail GetModuleProductNo at 2");
    failing.run("3 -m -T");
    EXPECT_THAT(failing.display(), HasSubstr("Error at COM_KOV_CTRL_GetModuleProductNo: "));
    EXPECT_THAT(failing.display(), HasSubstr("  slot #01: P/N: {W}240321{.}, dev.type: {W}HVPS"));
    Trial too_many; // more slots than the record has room for
    too_many.instrument("reply GetModulePresence.slotCount 4000000000");
    too_many.run("3 -m -T");
    EXPECT_THAT(too_many.display(), HasSubstr("  slot #07: n/a\n base unit: "));
}

TEST(CheckModules, TheBaseUnitFollowsTheSlots)
{
    Trial trial;
    trial.instrument("reply GetModulePresence.slotCount 2");
    trial.instrument("reply GetModulePresence.valid 0"); // not looked at here
    trial.instrument("reply GetScannedModuleParams.savedProductNo@1 7");
    trial.instrument("reply GetScannedModuleParams.savedHwType@3 1Fh");
    set_flags(trial, "10231");
    trial.run("3 -M -T");
    const std::string display = trial.display();
    EXPECT_THAT(display, testing::StartsWith("Module state: {G}OK{.}\nScanned module data:\n"
                                             "  slot #00:  present, P/N scanned: {W}240211{.}, "
                                             "saved: {W}240211{.}, HW type scanned: {W}"));
    EXPECT_THAT(display, HasSubstr("  slot #01:      n/a, P/N scanned: {R}240321{.}, saved:      "
                                   "{R}7{.}, HW type scanned: {W}051C8BB8h{.}, saved: "
                                   "{W}051C8BB8h{.}\n  base unit: present, "));
    EXPECT_THAT(display, HasSubstr("  slot #03:  unknown, "));
    EXPECT_THAT(display, HasSubstr("saved: {R}0000001Fh{.}"));
    EXPECT_THAT(trial.calls, Contains("GetScannedModuleParams(4)"));
    EXPECT_THAT(display, Not(HasSubstr("saved to enable")));
}

TEST(CheckModules, AsksWhetherToSave)
{
    const struct {
        const char* keys;
        const char* end;
        bool saved;
    } cases[] = {
        {"y", "now? [{W}Y{.}/{W}N{.}] {G}Y{.}\n", true},
        {"xxN", "now? [{W}Y{.}/{W}N{.}] {R}N{.}\n", false},
        {"\033", "now? [{W}Y{.}/{W}N{.}]\n", false},
    };
    for (const auto& c : cases) {
        Trial trial;
        trial.instrument("reply GetScannedModuleState.changed 1");
        trial.type(0, c.keys); // typed ahead counts here
        trial.run("3 -q -M -T");
        EXPECT_THAT(trial.display(), testing::StartsWith("Module state: {R}changed{.}\n"));
        EXPECT_THAT(trial.display(),
                    EndsWith(std::string{"{Y}Module state changed, it must be saved to enable the "
                                         "device!{.}\nWere all modules found and should the state "
                                         "be saved "} +
                             c.end));
        EXPECT_EQ(count(trial, "SetScannedModuleState()"), c.saved ? 1 : 0);
    }
    Trial unanswered;
    unanswered.instrument("reply GetScannedModuleState.changed 1");
    unanswered.pipe_in("");
    unanswered.run("3 -M -T");
    EXPECT_EQ(count(unanswered, "SetScannedModuleState()"), 0);
}

TEST(Maintenance, OfOneModuleAndOfAll)
{
    const std::string invalid = "{M}Module-presence flags invalid!{.}\n";
    const struct {
        const char* switch_letters;
        const char* function;
        const char* single;
        const char* all;
        const char* progress;
        bool repeats;
        bool goes_on;
    } cases[] = {
        {"MG", "RescanModule", "Rescanned address pins of HV-supply 2:  {W}2{.}={W}02h{.}\n",
         "Rescanned address pins:\n  slot #00:   {W}0{.}={W}00h{.}\n  slot #03:   "
         "{W}3{.}={W}03h{.}\n"
         "  base unit: {W}128{.}={W}80h{.}\n",
         "Rescanning address pins of ", false, false},
        {"M#", "RestartModule", "HV-supply 2 restarted\n",
         "Restarting:\n  slot #00: {W}restarted{.}\n  slot #03: {W}restarted{.}\n", "Restarting ",
         true, true},
        {"mz", "GetModuleBufferState", "Buffer of HV-supply 2 is {W}empty{.}\n",
         "Buffer state:\n  slot #00: {W}empty{.}\n  slot #03: {W}empty{.}\n",
         "Getting Buffer state of ", true, true},
        {"MZ", "ModulePurge", "Buffers of HV-supply 2 {W}were purged{.}\n",
         "Buffer state:\n  slot #00: {W}purged{.}\n  slot #03: {W}purged{.}\n", "Purging ", true,
         true},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.switch_letters);
        const std::string command = std::string{"3 -q -"} + c.switch_letters;
        Trial single;
        single.run(command + "2 -T");
        EXPECT_EQ(single.display(), c.single);
        Trial all;
        set_flags(all, "10211");
        all.run(command + "* -T");
        EXPECT_EQ(all.display(), c.all);
        Trial no_flags;
        no_flags.instrument("reply GetModulePresence.valid 0");
        no_flags.run(command + "* -T");
        EXPECT_EQ(no_flags.display(), invalid);
        Trial debug;
        debug.run(std::string{"3 -pn -g -"} + c.switch_letters + "_ -T");
        EXPECT_THAT(debug.display(),
                    HasSubstr("{.}\n" + std::string{c.progress} + "base module:\n"));
        Trial once;
        once.instrument(std::string{"fail "} + c.function + " at 1");
        once.run(command + "2 -T");
        EXPECT_EQ(once.display() == c.single, c.repeats);
        Trial failing;
        failing.instrument(std::string{"fail "} + c.function + " always");
        failing.run(command + "* -T");
        EXPECT_EQ(count(failing, std::string{c.function} + "(0)") > 0, true);
        EXPECT_EQ(count(failing, std::string{c.function} + "(3)") > 0, c.goes_on);
        EXPECT_THAT(failing.display(),
                    HasSubstr(std::string{"Error at COM_KOV_CTRL_"} + c.function + ": "));
    }
}

TEST(Maintenance, NotEmptyAndNotPurged)
{
    Trial trial;
    trial.instrument("reply GetModuleBufferState.empty 0");
    trial.instrument("reply ModulePurge.purged 0");
    set_flags(trial, "10001");
    trial.run("3 -mz1 -mz* -MZ1 -MZ* -bz -T");
    EXPECT_EQ(trial.display(), "Buffer of HV-supply 1 is {R}not empty{.}\n"
                               "Buffer state:\n  slot #00: {R}not empty{.}\n"
                               "Buffers of HV-supply 1 {R}could not be purged{.}\n"
                               "Buffer state:\n  slot #00: {R}not purged{.}\n"
                               "Buffer of base module is {R}not empty{.}\n");
    EXPECT_EQ(count(trial, "ModulePurge(1)"), 10)
        << "a clear flag is tried again, ten times in all";
    EXPECT_EQ(virtual_time::now_us(), 0) << "and at once";
}

TEST(Maintenance, PurgePausesOnlyAfterAFailure)
{
    Trial trial;
    trial.instrument("fail ModulePurge at 1");
    trial.instrument("fail ModulePurge at 2");
    trial.run("3 -MZ1 -T");
    EXPECT_EQ(count(trial, "ModulePurge(1)"), 3);
    EXPECT_EQ(virtual_time::now_us(), 200'000);
    Trial hopeless;
    hopeless.instrument("fail ModulePurge always");
    hopeless.run("3 -MZ1 -T");
    EXPECT_EQ(count(hopeless, "ModulePurge(1)"), 10);
    EXPECT_EQ(virtual_time::now_us(), 900'000);
    EXPECT_EQ(count(hopeless, "GetCommError()"), 1);
}

TEST(Maintenance, OfTheControllersList)
{
    Trial trial;
    trial.instrument("fail UpdateModulePresence at 1"); // repeated silently
    trial.run("3 -g -MP -mr -T");
    EXPECT_THAT(trial.display(), HasSubstr("Updating module-presence flags:\n"
                                           "Module-presence flags were updated\n"
                                           "Rescanning address pins of all modules:\n"
                                           "Address pins of all modules were rescanned\n"));
    EXPECT_EQ(count(trial, "UpdateModulePresence()"), 2);
}

} // namespace
