#include "tests/support/trial.h"
#include "tests/support/virtual_time.h"

namespace
{

void set_flags(Trial& trial, const std::string& flags)
{
    for (std::size_t i = 0; i < flags.size(); ++i)
        trial.instrument("reply GetModulePresence.flags[" + std::to_string(i) + "] " + flags[i]);
}

TEST(ListModules, WhatStandsInTheSlots)
{
    Trial trial{"reply GetModuleDevType.type@128 1"};
    set_flags(trial, "10231");
    trial.run("3 -m -T");
    EXPECT_EQ(trial.display(), "Module presence:\n"
                               "  slot #00: P/N: {W}240211{.}, dev.type: {W}HTCTRL{.}\n"
                               "  slot #01: n/a\n"
                               "  slot #02: invalid\n"
                               "  slot #03: unknown\n"
                               " base unit: P/N: {W}240401{.}, dev.type: {M}unknown{.}\n");
    EXPECT_EQ(display_of("-m", {"reply GetModulePresence.valid 0"}),
              "Module presence: {M}flags invalid!{.}\n");
    // A failing slot ends its line only.
    EXPECT_THAT(display_of("-m", {"fail GetModuleProductNo@0 always"}),
                HasSubstr("time-out{.}\n  slot #01: P/N: {W}240321{.}, dev.type: {W}HVPS"));
    // More slots than the record has room for.
    EXPECT_THAT(display_of("-m", {"reply GetModulePresence.slotCount 4000000000"}),
                HasSubstr("  slot #07: n/a\n base unit: "));
}

TEST(CheckModules, TheBaseUnitFollowsTheSlots)
{
    Trial trial{"reply GetModulePresence.slotCount 2",
                "reply GetModulePresence.valid 0", // not looked at here
                "reply GetScannedModuleParams.savedProductNo@1 7",
                "reply GetScannedModuleParams.savedHwType@3 1Fh"};
    set_flags(trial, "10231");
    trial.run("3 -M -T");
    const std::string display = trial.display();
    EXPECT_THAT(display, StartsWith("Module state: {G}OK{.}\nScanned module data:\n"
                                    "  slot #00:  present, P/N scanned: {W}240211{.}, "
                                    "saved: {W}240211{.}, HW type scanned: {W}"));
    EXPECT_THAT(display, HasSubstr("  slot #01:      n/a, P/N scanned: {R}240321{.}, saved:      "
                                   "{R}7{.}, HW type scanned: {W}051C8BB8h{.}, saved: "
                                   "{W}051C8BB8h{.}\n  base unit: present, "));
    EXPECT_THAT(display, HasSubstr("  slot #03:  unknown, "));
    EXPECT_THAT(display, HasSubstr("saved: {R}0000001Fh{.}"));
    EXPECT_GT(trial.calls_of("GetScannedModuleParams(4)"), 0);
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
    for (const auto& [keys, end, saved] : cases) {
        Trial trial{"reply GetScannedModuleState.changed 1"};
        trial.type(0, keys); // typed ahead counts here
        trial.run("3 -q -M -T");
        EXPECT_THAT(trial.display(), StartsWith("Module state: {R}changed{.}\n"));
        EXPECT_THAT(trial.display(),
                    EndsWith(std::string{"{Y}Module state changed, it must be saved to enable the "
                                         "device!{.}\nWere all modules found and should the state "
                                         "be saved "} +
                             end));
        EXPECT_EQ(trial.calls_of("SetScannedModuleState()"), saved ? 1 : 0);
    }
    Trial unanswered{"reply GetScannedModuleState.changed 1"};
    unanswered.pipe_in("");
    unanswered.run("3 -M -T");
    EXPECT_EQ(unanswered.calls_of("SetScannedModuleState()"), 0);
}

TEST(Maintenance, OfOneModuleAndOfAll)
{
    const struct {
        const char* letters;
        const char* function;
        const char* single;
        const char* all;
        const char* progress;
        bool goes_on = true; ///< with the next slot after a failure
    } cases[] = {
        {"MG", "RescanModule", "Rescanned address pins of HV-supply 2:  {W}2{.}={W}02h{.}\n",
         "Rescanned address pins:\n  slot #00:   {W}0{.}={W}00h{.}\n  slot #03:   "
         "{W}3{.}={W}03h{.}\n"
         "  base unit: {W}128{.}={W}80h{.}\n",
         "Rescanning address pins of ", false},
        {"M#", "RestartModule", "HV-supply 2 restarted\n",
         "Restarting:\n  slot #00: {W}restarted{.}\n  slot #03: {W}restarted{.}\n", "Restarting "},
        {"mz", "GetModuleBufferState", "Buffer of HV-supply 2 is {W}empty{.}\n",
         "Buffer state:\n  slot #00: {W}empty{.}\n  slot #03: {W}empty{.}\n",
         "Getting Buffer state of "},
        {"MZ", "ModulePurge", "Buffers of HV-supply 2 {W}were purged{.}\n",
         "Buffer state:\n  slot #00: {W}purged{.}\n  slot #03: {W}purged{.}\n", "Purging "},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.letters);
        const std::string letters = std::string{"-"} + c.letters;
        EXPECT_EQ(display_of(letters + '2'), c.single);
        Trial all;
        set_flags(all, "10211");
        all.run("3 " + letters + "* -T");
        EXPECT_EQ(all.display(), c.all);
        EXPECT_EQ(display_of(letters + '*', {"reply GetModulePresence.valid 0"}),
                  "{M}Module-presence flags invalid!{.}\n");
        EXPECT_THAT(display_of("-pn -g " + letters + '_'),
                    HasSubstr("{.}\n" + std::string{c.progress} + "base module:\n"));
        Trial failing{std::string{"fail "} + c.function + " always"};
        failing.run("3 " + letters + "* -T");
        EXPECT_EQ(failing.calls_of(std::string{c.function} + "(3)") > 0, c.goes_on);
    }
    // Repeated silently.
    EXPECT_THAT(display_of("-g -MP -mr", {"fail UpdateModulePresence at 1"}),
                HasSubstr("Updating module-presence flags:\n"
                          "Module-presence flags were updated\n"
                          "Rescanning address pins of all modules:\n"
                          "Address pins of all modules were rescanned\n"));
}

TEST(Maintenance, NotEmptyAndNotPurged)
{
    Trial trial{"reply GetModuleBufferState.empty 0", "reply ModulePurge.purged 0"};
    set_flags(trial, "10001");
    trial.run("3 -mz1 -mz* -MZ1 -MZ* -bz -T");
    EXPECT_EQ(trial.display(), "Buffer of HV-supply 1 is {R}not empty{.}\n"
                               "Buffer state:\n  slot #00: {R}not empty{.}\n"
                               "Buffers of HV-supply 1 {R}could not be purged{.}\n"
                               "Buffer state:\n  slot #00: {R}not purged{.}\n"
                               "Buffer of base module is {R}not empty{.}\n");
    EXPECT_EQ(trial.calls_of("ModulePurge(1)"), 10) << "tried again, ten times in all";
    EXPECT_EQ(virtual_time::now_us(), 0) << "and at once";
}

TEST(Maintenance, PurgePausesOnlyAfterAFailure)
{
    Trial trial{"fail ModulePurge at 1", "fail ModulePurge at 2"};
    trial.run("3 -MZ1 -T");
    EXPECT_EQ(trial.calls_of("ModulePurge(1)"), 3);
    EXPECT_EQ(virtual_time::now_us(), 200'000);
    Trial hopeless{"fail ModulePurge always"};
    hopeless.run("3 -MZ1 -T");
    EXPECT_EQ(hopeless.calls_of("ModulePurge(1)"), 10);
    EXPECT_EQ(virtual_time::now_us(), 900'000);
    EXPECT_EQ(hopeless.calls_of("GetCommError()"), 1);
}

} // namespace
