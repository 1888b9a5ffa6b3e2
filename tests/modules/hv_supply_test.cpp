#include <algorithm>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/support/trial.h"

namespace
{

using testing::Contains;
using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;

void set_output(Trial& trial, const char* voltage, const char* current)
{
    trial.instrument(std::string{"reply GetHVsupplyOutputVoltage.voltage "} + voltage);
    trial.instrument(std::string{"reply GetHVsupplyOutputCurrent.current "} + current);
    trial.instrument("reply GetModuleDataReadyFlags.flags 50h");
    trial.instrument("reply GetHVsupplyParamsPWM.dataReady 50h");
}

TEST(HvSupply, TargetAndRanges)
{
    const struct {
        const char* reply;
        const char* command;
        const char* shown;
        const char* call;
    } cases[] = {
        {"GetHVsupplyTargetOutputVoltage.voltage 250.25", "-vv3",
         "Target output voltage of HV-supply 3: {W}250.2V{.}\n",
         "GetHVsupplyTargetOutputVoltage(3)"},
        {"GetHVsupplyTargetOutputVoltage.voltage -1", "-vv1",
         "Target output voltage of HV-supply 1: {M}off{.}\n", nullptr},
        {nullptr, "-VV2 100.5", "Target output voltage of HV-supply 2 set to {W}100.5V{.}\n",
         "SetHVsupplyTargetOutputVoltage(2, 100.5)"},
        {nullptr, "-VV2 -3", "Target output voltage of HV-supply 2 set to {M}off{.}\n",
         "SetHVsupplyTargetOutputVoltage(2, -3)"},
        {"GetHVsupplyMeasRanges.negative 2", "-VG1",
         "Measurement channels of HV-supply 1: Voltage: {W}negative{.}, Current: {W}high{.}\n",
         nullptr},
        {"GetHVsupplyMeasRanges.high 0", "-vg1",
         "Measurement channels of HV-supply 1: Voltage: {W}positive{.}, Current: {W}low{.}\n",
         nullptr},
        {nullptr, "-VG1yN",
         "Measurement channels of HV-supply 1 were set: Voltage: {W}negative{.}, Current: "
         "{W}low{.}\n",
         "SetHVsupplyMeasRanges(1, 1, 0)"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.shown);
        Trial trial;
        if (c.reply != nullptr)
            trial.instrument(std::string{"reply "} + c.reply);
        trial.run(std::string{"3 -q "} + c.command + " -T");
        EXPECT_EQ(trial.display(), c.shown);
        if (c.call != nullptr) {
            EXPECT_THAT(trial.calls, Contains(c.call));
        }
    }
}

TEST(OutputData, AReportStandsBelowTheDisplay)
{
    Trial below;
    below.instrument("fail GetHVsupplyTargetOutputVoltage at 1");
    below.run("3 -q -vd1 -T");
    EXPECT_THAT(below.display(), HasSubstr("Active:\n{M}2026"));
}

TEST(Output, ShowsWhatIsReady)
{
    Trial ready;
    set_output(ready, "1234.5", "-1.25e-9");
    ready.run("3 -vo1 -T");
    EXPECT_EQ(ready.display(), "Output voltage & current of HV-supply 1:\n"
                               "  Voltage: {W}+1234.500V (positive){.}     Current: "
                               "{W}-1.250e-09A (high){.}\n");
    const struct {
        const char* line;
        const char* shown;
    } cases[] = {
        {"reply GetModuleDataReadyFlags.flags 0AFh",
         "  Voltage:                           Current:\n"},
        {"reply GetHVsupplyOutputVoltage.valid 0", "  Voltage:                           Current: "
                                                   "{W}-1.250e-09A (high){.}\n"},
        {"reply GetHVsupplyMeasRanges.high 0", "-1.250e-09A (low){.}\n"},
        {"reply GetHVsupplyMeasRanges.negative 1", "(negative)"},
        {"reply GetHVsupplyOutputVoltage.voltage -20000", "{W}-20000.000V (positive){.}"},
        {"reply GetHVsupplyOutputVoltage.voltage nan", "     {W}+nanV (positive){.}"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.line);
        Trial trial;
        set_output(trial, "1234.5", "-1.25e-9");
        trial.instrument(c.line);
        trial.run("3 -q -vo1 -T");
        EXPECT_THAT(trial.display(), HasSubstr(c.shown));
    }
}

TEST(Output, KeysChangeTheRanges)
{
    Trial trial;
    set_output(trial, "100", "2e-9");
    trial.instrument("latency 10");
    trial.type(100, "n");
    trial.type(200, "lx");
    trial.type(400, "\033");
    trial.run("3 -VO1 -T");
    EXPECT_THAT(trial.display(),
                StartsWith("Output voltage & current of HV-supply 1, press {W}Esc{.} to quit, "
                           "{W}P{.}/{W}N{.} for positive/negative voltage, {W}H{.}/{W}L{.} for "
                           "high/low current range:\n    Polling rate: "));
    EXPECT_THAT(trial.display(), HasSubstr(" {W}+100.000V (negative){.}     Current: "
                                           "{W}+2.000e-09A (low){.}\n"));
    std::vector<std::string> sent;
    std::copy_if(trial.calls.begin(), trial.calls.end(), std::back_inserter(sent),
                 [](const std::string& call) { return call.starts_with("SetHVsupply"); });
    EXPECT_THAT(sent, testing::ElementsAre("SetHVsupplyMeasRanges(1, 1, 1)",
                                           "SetHVsupplyMeasRanges(1, 1, 0)"));
    Trial failing;
    failing.instrument("latency 10");
    failing.instrument("fail SetHVsupplyMeasRanges at 1");
    failing.type(100, "P"); // sent although it changes nothing
    failing.run("3 -q -VO1 -T");
    EXPECT_THAT(failing.display(), HasSubstr("Error at COM_KOV_CTRL_SetHVsupplyMeasRanges"));
}

TEST(OutputData, OnceAndContinuously)
{
    const auto prepare = [](Trial& trial) {
        set_output(trial, "-9999.999", "1.5e-9");
        for (const char* line :
             {"period 20e-6", "width 1e-6", "phaseMeasured 10e-6", "phaseSet 9e-6",
              "voltageSet 100", "voltageMeasured -99.5", "active 1"})
            trial.instrument(std::string{"reply GetHVsupplyParamsPWM."} + line);
        trial.instrument("reply GetHVsupplyTargetOutputVoltage.voltage 100");
    };
    const std::string values =
        "   PWM Period: {W}20.00000us{.}               Width:  {W}1.00000us{.}         Phase "
        "measured: {W}10.00000us{.}    Phase set:  {W}9.00000us{.}\n"
        "   Voltage: {W}-9999.999V (positive){.}       Current: {W}+1.50000e-09A (high){.}\n"
        "   Measured:   {W}-99.500V{.}                 Set:  {W}+100.000V{.}           Target:  "
        "{W}+100.000V{.}            Active: {G}yes{.}\n";
    Trial once;
    prepare(once);
    once.run("3 -vd1 -T");
    EXPECT_EQ(once.display(), "Output data of HV-supply 1\n" + values);
    Trial live; // the prompt stands in quiet mode, too
    prepare(live);
    live.instrument("latency 10");
    live.type(115, "\033");
    live.run("3 -q -VD1 -T");
    EXPECT_THAT(live.display(), StartsWith("Output data of HV-supply 1, press {W}Esc{.} to quit: "
                                           "    Polling rate: "));
    EXPECT_THAT(live.display(), testing::EndsWith(values));
    EXPECT_EQ(std::count(live.calls.begin(), live.calls.end(), "GetHVsupplyTargetOutputVoltage(1)"),
              1);
    const struct {
        const char* line;
        const char* shown;
    } cases[] = {
        {"reply GetHVsupplyOutputVoltage.voltage -10000", "{M}* * * Overflow * * *{.}"},
        {"reply GetHVsupplyTargetOutputVoltage.voltage -1", "Target: {M}** off **{.}"},
        {"reply GetHVsupplyParamsPWM.active 0", "Active:  {M}no{.}"},
        {"reply GetHVsupplyParamsPWM.dataReady 0AFh",
         "   Voltage:                             Current:\n"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.line);
        Trial trial;
        prepare(trial);
        trial.instrument(c.line);
        trial.run("3 -q -vd1 -T");
        EXPECT_THAT(trial.display(), HasSubstr(c.shown));
    }
}

TEST(HvSupplyHousekeeping, InTwoRows)
{
    Trial trial;
    trial.run("3 -vk1 -vk* -T");
    EXPECT_THAT(trial.display(),
                StartsWith("Housekeeping of HV-supply 1:\n"
                           "  Voltages: +3V3: {W}+3.300V{.}    +5V0: {W}+5.000V{.}    +24V: "
                           "{W}+24.000V{.}   -22V: {W}-22.000V{.}   +Vc: {W}+1.500V{.}\n"
                           "            AGnd: {W}+0.000V{.}    +18V: {W}+18.000V{.}   -18V: "
                           "{W}-18.000V{.}   Temperatures: CPU: {W}+30.0"));
    EXPECT_THAT(trial.calls, Contains("GetHVsupplyHousekeeping(255)")); // as typed
}

} // namespace
