#include "tests/support/trial.h"

namespace
{

void set_output(Trial& trial, const std::string& voltage, const std::string& current)
{
    trial.instrument("reply GetHVsupplyOutputVoltage.voltage " + voltage);
    trial.instrument("reply GetHVsupplyOutputCurrent.current " + current);
    trial.instrument("reply GetModuleDataReadyFlags.flags 50h");
    trial.instrument("reply GetHVsupplyParamsPWM.dataReady 50h");
}

TEST(HvSupply, TargetAndRanges)
{
    expect_shown({
        {"reply GetHVsupplyTargetOutputVoltage.voltage 250.25", "-vv3",
         "Target output voltage of HV-supply 3: {W}250.2V{.}\n",
         "GetHVsupplyTargetOutputVoltage(3)"},
        {"reply GetHVsupplyTargetOutputVoltage.voltage -1", "-vv1",
         "Target output voltage of HV-supply 1: {M}off{.}\n"},
        {"", "-VV2 100.5", "Target output voltage of HV-supply 2 set to {W}100.5V{.}\n",
         "SetHVsupplyTargetOutputVoltage(2, 100.5)"},
        {"", "-VV2 -3", "Target output voltage of HV-supply 2 set to {M}off{.}\n",
         "SetHVsupplyTargetOutputVoltage(2, -3)"},
        {"reply GetHVsupplyMeasRanges.negative 2", "-VG1",
         "Measurement channels of HV-supply 1: Voltage: {W}negative{.}, Current: {W}high{.}\n"},
        {"reply GetHVsupplyMeasRanges.high 0", "-vg1",
         "Measurement channels of HV-supply 1: Voltage: {W}positive{.}, Current: {W}low{.}\n"},
        {"", "-VG1yN",
         "Measurement channels of HV-supply 1 were set: Voltage: {W}negative{.}, Current: "
         "{W}low{.}\n",
         "SetHVsupplyMeasRanges(1, 1, 0)"},
    });
}

TEST(Output, ShowsWhatIsReady)
{
    const std::string start = "Output voltage & current of HV-supply 1:\n";
    const struct {
        const char* line;
        testing::Matcher<std::string> shown;
    } cases[] = {
        {"noise off", start + "  Voltage: {W}+1234.500V (positive){.}     Current: "
                              "{W}-1.250e-09A (high){.}\n"},
        {"reply GetModuleDataReadyFlags.flags 0AFh",
         start + "  Voltage:                           Current:\n"},
        {"reply GetHVsupplyOutputVoltage.valid 0",
         start + "  Voltage:                           Current: {W}-1.250e-09A (high){.}\n"},
        {"reply GetHVsupplyMeasRanges.high 0", HasSubstr("-1.250e-09A (low){.}\n")},
        {"reply GetHVsupplyMeasRanges.negative 1", HasSubstr("(negative)")},
        {"reply GetHVsupplyOutputVoltage.voltage -20000",
         HasSubstr("{W}-20000.000V (positive){.}")},
        {"reply GetHVsupplyOutputVoltage.voltage nan", HasSubstr("     {W}+nanV (positive){.}")},
    };
    for (const auto& [line, shown] : cases) {
        Trial trial;
        set_output(trial, "1234.5", "-1.25e-9");
        trial.instrument(line);
        trial.run("3 -vo1 -T");
        EXPECT_THAT(trial.display(), shown) << line;
    }
}

TEST(Output, KeysChangeTheRanges)
{
    Trial trial{"latency 10"};
    set_output(trial, "100", "2e-9");
    trial.type(50, "P"); // sent although it changes nothing
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
    std::erase_if(trial.calls, [](const std::string& call) { return !call.starts_with("Set"); });
    EXPECT_THAT(trial.calls, testing::ElementsAre("SetHVsupplyMeasRanges(1, 0, 1)",
                                                  "SetHVsupplyMeasRanges(1, 1, 1)",
                                                  "SetHVsupplyMeasRanges(1, 1, 0)"));
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
    const struct {
        const char* line;
        testing::Matcher<std::string> shown;
    } cases[] = {
        {"noise off", "Output data of HV-supply 1\n" + values},
        {"reply GetHVsupplyOutputVoltage.voltage -10000", HasSubstr("{M}* * * Overflow * * *{.}")},
        {"reply GetHVsupplyTargetOutputVoltage.voltage -1", HasSubstr("Target: {M}** off **{.}")},
        {"reply GetHVsupplyTargetOutputVoltage.voltage 0", HasSubstr("Target:    {W}+0.000V{.}")},
        {"reply GetHVsupplyParamsPWM.active 0", HasSubstr("Active:  {M}no{.}")},
        {"reply GetHVsupplyParamsPWM.dataReady 0AFh",
         HasSubstr("   Voltage:                             Current:\n")},
        // The report stands below the display.
        {"fail GetHVsupplyTargetOutputVoltage at 1", HasSubstr("Active:\n{M}2026")},
    };
    for (const auto& [line, shown] : cases) {
        Trial trial;
        prepare(trial);
        trial.instrument(line);
        trial.run("3 -vd1 -T");
        EXPECT_THAT(trial.display(), shown) << line;
    }
    Trial live{"latency 10"}; // the prompt stands in quiet mode, too
    prepare(live);
    live.type(115, "\033");
    live.run("3 -q -VD1 -T");
    EXPECT_THAT(live.display(), StartsWith("Output data of HV-supply 1, press {W}Esc{.} to quit: "
                                           "    Polling rate: "));
    EXPECT_THAT(live.display(), EndsWith(values));
    EXPECT_EQ(live.calls_of("GetHVsupplyTargetOutputVoltage(1)"), 1);
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
    EXPECT_EQ(trial.calls_of("GetHVsupplyHousekeeping(255)"), 1); // as typed
}

} // namespace
