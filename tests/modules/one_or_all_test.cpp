#include <algorithm>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/support/trial.h"

namespace
{

using testing::HasSubstr;
using testing::StartsWith;

/// A slot that is not there between two that are.
void leave_out_slots_1_and_2(Trial& trial)
{
    trial.instrument("reply GetModulePresence.flags[1] 0");
    trial.instrument("reply GetModulePresence.flags[2] 2");
}

std::string all_of(const char* heading, const std::string& slot_0, const std::string& slot_3,
                   const std::string& base)
{
    return std::string{heading} + ":\n  slot #00:  " + slot_0 + "\n  slot #03:  " + slot_3 +
           "\n  base unit: " + base + '\n';
}

struct Command {
    const char* letter; ///< behind M
    const char* function;
    const char* progress; ///< of the progress line: "Getting product number"
    const char* label;
    std::string single; ///< of slot 3
    const char* heading;
    std::string slot_0, slot_3, base;
    bool failure_ends_all = false;
};

const std::string no = " {M}no{.}"; // marks stand at the text, not at blanks
const std::string off = "{M}off{.}";
const std::string state = "{W}0000h{.}={W}0000 0000 0000 0000b{.} Device active: " + no;
const std::string module_state = state + ", Module active: " + no + ", Control active: " + no;
const std::string led =
    "Red: {M}off{.}, Green: {M}off{.}, Blue:  {G}on{.}, Color: {B}LED{.}"; // stand-by
const std::string supply_values =
    "+3V3: {W}3.300V{.}, 5V0: {W}5.000V{.}, +24V: {W}24.000V{.}, -22V: {W}-22.000V{.}+18V: "
    "{W}+18.000V{.}, -18V: {W}-18.000V{.}, +Vc: {W}+1.500V{.}, AGnd: {W}+0.000V{.}, CPU: "
    "{W}+30.0\xC2\xB0"
    "C{.}";

/// Running text goes on in the next line at the screen's edge.
std::string wrapped(std::string text)
{
    return text.replace(text.rfind(".0\xC2"), 0, "{.}\n{W}");
}

const Command commands[] = {
    {"I", "GetModuleProductID", "Getting product identification", "Product identification of ",
     ": {W}KOV-HVPS, HV-Supply 500V negative, Rev. 1-01{.}", "Product identifications",
     "{W}KOV-HTCTRL, Heat-Controller, Rev. 1-02{.}",
     "{W}KOV-HVPS, HV-Supply 500V negative, Rev. 1-01{.}",
     "{W}KOV-BASE, Base unit 200W, Rev. 1-00{.}"},
    {"N", "GetModuleProductNo", "Getting product number", "Product number of ", ": {W}240323{.}",
     "Product numbers", "{W}240211{.}", "{W}240323{.}", "{W}240401{.}"},
    {"M", "GetModuleManufDate", "Getting manufacturing date", "Product manufacturing date of ",
     ": {W}CW13 2024{.}", "Product manufacturing dates", "{W}CW11 2024{.}", "{W}CW13 2024{.}",
     "{W}CW06 2024{.}"},
    {"H", "GetModuleHwVersion", "Getting hardware version", "Hardware version of ",
     ": {W}1-01{.}, FPGA: {W}2-05{.}", "Hardware versions", "{W}1-02{.}",
     "{W}1-01{.}, FPGA: {W}2-05{.}", "{W}1-00{.}"},
    {"D", "GetModuleFwDate", "Getting firmware date", "Firmware date of ", ": {W}Jan 10 2024{.}",
     "Firmware dates", "{W}Feb 20 2024{.}", "{W}Jan 10 2024{.}", "{W}Dec 04 2023{.}"},
    {.letter = "F",
     .function = "GetModuleFwVersion",
     .progress = "Getting firmware version",
     .label = "Firmware version of ",
     .single = ": {W}2-03{.}",
     .heading = "Firmware versions",
     .slot_0 = "{W}1-04{.}",
     .slot_3 = "{W}2-03{.}",
     .base = "{W}1-02{.}",
     .failure_ends_all = true},
    {"E", "GetModuleDevType", "Getting device type", "Device type of ", ": {W}HVPS{.}",
     "Device types", "{W}HTCTRL{.}", "{W}HVPS{.}", "{W}KOVCT-BASE{.}"},
    {"T", "GetModuleHwType", "Getting hardware type", "Hardware type of ",
     ": {W}011C81F4h{.} ({W}HVPS{.})", "Hardware types", "{W}06050180h{.} ({W}HTCTRL{.})",
     "{W}011C81F4h{.} ({W}HVPS{.})", "{W}0140C818h{.} ({W}KOVCT-200W-20{.}, {W}24V{.})"},
    {"U", "GetModuleUptimeInt", "Getting CPU data", "Uptime of ",
     ": {W}0.00 sec.{.}, total: {W}0.00 sec.{.}", "Uptime",
     "{W}0.00 sec.{.}, total: {W}0.00 sec.{.}", "{W}0.00 sec.{.}, total: {W}0.00 sec.{.}",
     "{W}0.00 sec.{.}, total: {W}0.00 sec.{.}"},
    {"O", "GetModuleOptimeInt", "Getting CPU data", "Operation time of ",
     ": {W}0.00 sec.{.}, total: {W}0.00 sec.{.}", "Operation times",
     "{W}0.00 sec.{.}, total: {W}0.00 sec.{.}", "{W}0.00 sec.{.}, total: {W}0.00 sec.{.}",
     "{W}0.00 sec.{.}, total: {W}0.00 sec.{.}"},
    {"K", "GetHVsupplyHousekeeping", "Getting housekeeping data", "Housekeeping data of ",
     ":  " + wrapped(supply_values), "Housekeeping data",
     "+3V3: {W}3.300V{.}, +5V0: {W}5.000V{.}, +24V: {W}24.000V{.}, CPU: {W}+30.0\xC2\xB0"
     "C{.}, PSU: {W}+32.0\xC2\xB0"
     "C{.}",
     supply_values,
     "+3V3: {W}3.300V{.}, CPU: {W}+30.0\xC2\xB0"
     "C{.}"},
    {"C", "GetModuleCPUdata", "Getting CPU data", "CPU data of ", ": {W}10.0%{.}", "CPU data",
     "{W}10.0%{.}", "{W}10.0%{.}", "{W}10.0%{.}"},
    {"L", "GetModuleLEDData", "Getting LED data", "LED data of ", ": " + led, "LED data", led, led,
     led},
    {"S", "GetModuleState", "Getting state", "State of ", ": " + module_state, "States",
     module_state, module_state, state},
    {"A", "GetModuleActivationState", "Getting activation state", "Activation state of ",
     ": " + off, "Activation state", off, off, " {G}on{.}"},
};

TEST(OneModuleOrAll, ShowsWhatIsRead)
{
    for (const Command& c : commands) {
        SCOPED_TRACE(c.letter);
        const std::string letters = std::string{"m"} + c.letter;
        Trial single;
        single.run("3 -q -" + letters + "3 -T");
        EXPECT_EQ(single.display(), std::string{c.label} + "HV-supply 3" + c.single + '\n');
        Trial all;
        leave_out_slots_1_and_2(all);
        all.run("3 -q -" + letters + "* -T");
        EXPECT_EQ(all.display(), all_of(c.heading, c.slot_0, c.slot_3, c.base));
        Trial debug;
        debug.run("3 -pn -g -" + letters + "* -T");
        EXPECT_THAT(debug.display(),
                    HasSubstr("{.}\n" + std::string{c.progress} +
                              " of all modules:\nGetting module-presence flags:\n" + c.heading));
        Trial invalid;
        invalid.instrument("reply GetModulePresence.valid 0");
        invalid.run("3 -q -" + letters + "* -T");
        EXPECT_EQ(invalid.display(), "{M}Module-presence flags invalid!{.}\n");
        Trial failing; // one slot fails: the others follow, but for one command
        failing.instrument(std::string{"fail "} + c.function + "@1 always");
        failing.run("3 -q -" + letters + "* -T");
        EXPECT_THAT(failing.display(), HasSubstr(": Error at COM_KOV_CTRL_"));
        EXPECT_EQ(failing.display().find("  slot #03:  ") == std::string::npos, c.failure_ends_all);
    }
}

TEST(OneModuleOrAll, TypesThatDoNotFitTheirPlace)
{
    const struct {
        const char* reply;
        const char* command;
        const char* shown;
    } cases[] = {
        {"GetModuleHwType.type@128 0FFFFFFFFh", "-mt_", "({W}KOVCT-4095W-255{.}, {W}255V{.})"},
        {"GetModuleDevType.type@0 2573", "-mt0", "({M}invalid{.})"},
        {"GetModuleDevType.type@2 56092", "-mt2", "({M}invalid{.})"},
        {"GetModuleDevType.type@128 2573", "-bt", "({M}invalid{.})"},
        {"GetModuleDevType.type@0 7220", "-mt*", "slot #00:  {W}06050180h{.} ({M}invalid{.})"},
        {"GetModuleDevType.type@128 2573", "-mt*", "base unit: {W}0140C818h{.} ({M}invalid{.})"},
        {"GetModuleDevType.type@128 2573", "-be", "base module: {W}HVPS{.}"},
        {"GetModuleDevType.type@128 2573", "-me*", "base unit: {M}unknown{.}"},
        {"GetModuleDevType.type@2 7220", "-me*", "slot #02:  {W}KOVCT-BASE{.}"},
        {"GetModuleDevType.type@2 1", "-me2", "HV-supply 2: {M}unknown{.}"},
        {"GetHVsupplyFpgaVersion.version@1 123405FFh", "-mh1", "FPGA: {W}4660-05{.}"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.shown);
        Trial trial;
        trial.instrument(std::string{"reply "} + c.reply);
        trial.run(std::string{"3 -q "} + c.command + " -T");
        EXPECT_THAT(trial.display(), HasSubstr(c.shown));
    }
}

TEST(OneModuleOrAll, AFailedFpgaVersionStandsBelowTheHardwareVersion)
{
    Trial trial;
    trial.instrument("fail GetHVsupplyFpgaVersion@1 always");
    leave_out_slots_1_and_2(trial);
    trial.instrument("reply GetModulePresence.flags[1] 1");
    trial.run("3 -q -mh* -T");
    EXPECT_THAT(trial.display(), HasSubstr("  slot #01:  {W}1-01{.}\n{M}2026"));
    EXPECT_THAT(trial.display(), HasSubstr("Error at COM_KOV_CTRL_GetHVsupplyFpgaVersion: "));
    EXPECT_THAT(trial.display(), HasSubstr("  slot #03:  {W}1-01{.}, FPGA: {W}2-05{.}\n"));
}

TEST(Housekeeping, OfModulesIsShownAsReadInTheColoursOfItsTolerances)
{
    const struct {
        const char* value;
        const char* shown;
    } cases[] = {
        {"valid 0", "+3V3: {W}3.300V"},
        {"voltage33 3.37", "+3V3: {M}3.370V"},
        {"voltage5 4.89", " 5V0: {C}4.890V"},
        {"voltageMinus22 -20.9", "-22V: {W}-20.900V"},
        {"voltageMinus22 -20.89", "-22V: {C}-20.890V"},
        {"voltage18 -18.1", "+18V: {C}-18.100V"},
        {"voltageMinus18 -18.37", "-18V: {M}-18.370V"},
        {"voltageVc 1.5149", "+Vc: {W}+1.515V"},
        {"voltageVc 1.5151", "+Vc: {M}+1.515V"},
        {"analogGround 9.5", "AGnd: {W}+9.500V"},
        {"temperatureCPU 40.01", "CPU: {M}+40"},
        {"voltage24 nan", "+24V:    {W}nanV"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.value);
        Trial trial;
        trial.instrument(std::string{"reply GetHVsupplyHousekeeping."} + c.value);
        trial.run("3 -q -mk1 -T");
        EXPECT_THAT(trial.display(), HasSubstr(c.shown));
    }
}

TEST(Activation, IsSetForOneOrAll)
{
    Trial trial;
    leave_out_slots_1_and_2(trial);
    trial.instrument("fail SetModuleActivationState@3 at 1");
    trial.run("3 -q -MA* Y -MA0 n -BA n -T");
    EXPECT_EQ(trial.display(), "Activation state:\n"
                               "  slot #00:  activation state set to  {G}on{.}\n"
                               "  slot #03:  activation state set to  {G}on{.}\n"
                               "  base unit: activation state set to  {G}on{.}\n"
                               "Activation state of heat-controller set to {M}off{.}\n"
                               "Activation state of base module set to {M}off{.}\n");
}

TEST(State, OfTheBaseUnit)
{
    const std::string header = "Base-device state: {W}7FFFh{.}={W}0111 1111 1111 1111b{.}\n";
    Trial once;
    once.instrument("reply GetModuleState.state@128 7FFFh");
    once.run("3 -q -ms_ -bs -T");
    EXPECT_EQ(once.display(),
              header + "  Device active:  {M}no{.}\n" + header + "  Device active:  {M}no{.}\n");
    Trial live;
    live.instrument("reply GetModuleState.state@128 8000h");
    live.instrument("latency 10");
    live.type(75, "\033");
    live.run("3 -BS -T");
    EXPECT_EQ(live.display(),
              "Base-device state, press {W}Esc{.} to quit: {W}8000h{.}={W}1000 0000 0000 0000b{.}"
              "   Polling rate: {W}100.00{.} cycles/s     Mean response time:  {W}10.0ms{.}\n"
              "  Device active: {G}yes{.}\n");
    // One failure is enough; it is told on the spot, and the cursor stays hidden.
    Trial failing;
    failing.instrument("fail GetModuleState at 2");
    failing.instrument("latency 10");
    failing.run("3 -q -BS -T");
    EXPECT_THAT(failing.display(), HasSubstr("  Device active:  {M}no2026/03/14, "));
    EXPECT_EQ(std::count(failing.calls.begin(), failing.calls.end(), "GetModuleState(128)"), 2);
}

TEST(ProductData, EachOnceAndWhateverFails)
{
    Trial base;
    base.instrument("fail GetModuleFwVersion always");
    base.run("3 -q -B -T");
    EXPECT_THAT(base.display(), StartsWith("Product identification of base module: "));
    EXPECT_THAT(base.display(), HasSubstr("Error at COM_KOV_CTRL_GetModuleFwVersion"));
    EXPECT_THAT(base.display(), testing::EndsWith("CPU data of base module: {W}10.0%{.}\n"
                                                  "Base-device state: {W}0000h{.}={W}0000 0000 "
                                                  "0000 0000b{.}\n  Device active:  {M}no{.}\n"));
    Trial heater;
    heater.instrument("fail GetHeatCtrlHwLimits always");
    heater.run("3 -q -H -T");
    std::string order;
    for (const char* line :
         {"Activation state of heat-controller: ", "Output voltage control: ",
          "Heater power control: ", "Error at COM_KOV_CTRL_GetHeatCtrlHwLimits",
          "Maximum heater voltage of ", "Maximum heater current of ", "Maximum heater power of ",
          "Target heater temperature of ", "Monitoring of heat-controller:\n",
          "Interlock state of heat-controller:\n"}) {
        SCOPED_TRACE(line);
        const std::size_t at = heater.display().find(line);
        ASSERT_NE(at, std::string::npos);
        EXPECT_EQ(heater.display().find(line, at + 1), std::string::npos);
        EXPECT_GT(at, order.size());
        order.resize(at);
    }
}

} // namespace
