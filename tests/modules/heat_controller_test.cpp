#include "tests/support/trial.h"

namespace
{

#define CELSIUS                                                                                    \
    "\xC2\xB0"                                                                                     \
    "C"

void set_monitoring(Trial& trial, const std::string& current)
{
    for (const std::string& line :
         {std::string{"outputVoltage 10.5"}, std::string{"heaterVoltage 10"},
          std::string{"temperature 81.25"}, "current " + current})
        trial.instrument("reply GetHeatCtrlMonitoring." + line);
}

TEST(HeatController, TargetsAndLimits)
{
    expect_shown({
        {"reply GetHeatCtrlHeaterTemperature.temperature 35.5", "-ht",
         "Target heater temperature of heat-controller: {W}35.500" CELSIUS "{.}\n"},
        {"reply GetHeatCtrlHeaterTemperature.temperature -0.5", "-ht",
         "Target heater temperature of heat-controller: {M}off{.}\n"},
        {"reply GetHeatCtrlHeaterTemperature.temperature -0.0", "-ht",
         "Target heater temperature of heat-controller: {W}-0.000" CELSIUS "{.}\n"},
        {"", "-HT95.5",
         "Target heater temperature of heat-controller set to: {W}95.500" CELSIUS "{.}\n",
         "SetHeatCtrlHeaterTemperature(95.5)"},
        {"", "-HT-1", "Target heater temperature of heat-controller set to: {M}off{.}\n",
         "SetHeatCtrlHeaterTemperature(-1)"},
        {"reply GetHeatCtrlOutputVoltage.voltage 12", "-ho",
         "Target output voltage of heat-controller: {W}12.000V{.}\n"},
        {"reply GetHeatCtrlOutputVoltage.voltage -1", "-ho", "Output voltage control: {W}off{.}\n"},
        {"reply GetHeatCtrlHeaterPower.power 0", "-hp",
         "Target heater power of heat-controller: {W}0.000W{.}\n"},
        {"reply GetHeatCtrlHeaterPower.power -1", "-hp", "Heater power control: {W}off{.}\n"},
        {"reply GetHeatCtrlVoltageLimit.voltage 22", "-hv",
         "Maximum heater voltage of heat-controller: {W}22.000V{.}\n"},
        {"", "-HV12.25", "Maximum heater voltage of heat-controller set to: {W}12.250V{.}\n",
         "SetHeatCtrlVoltageLimit(12.25)"},
        {"reply GetHeatCtrlCurrentLimit.current -2", "-ha",
         "Maximum heater current of heat-controller: {W}-2.000A{.}\n"},
        {"", "-HA-2", "Maximum heater current of heat-controller set to: {W}-2.000A{.}\n",
         "SetHeatCtrlCurrentLimit(-2)"},
        {"reply GetHeatCtrlPowerLimit.power 90", "-hw",
         "Maximum heater power of heat-controller: {W}90.000W{.}\n"},
        {"", "-HW5", "Maximum heater power of heat-controller set to: {W}5.000W{.}\n",
         "SetHeatCtrlPowerLimit(5)"},
    });
    EXPECT_THAT(display_of("-pn -g -ho"),
                HasSubstr("{.}\nGetting target output voltage of heat-controller:\n"));
}

TEST(HeatController, HardwareLimits)
{
    const std::string limits = "  Maximum heater voltage:      {W}22.000V{.}\n"
                               "  Maximum heater current:       {W}5.000A{.}\n"
                               "  Maximum heater power:        {W}90.000W{.}\n"
                               "  Maximum heater temperature: {W}200.000" CELSIUS "{.}\n";
    EXPECT_EQ(display_of("-HL"), "Hardware limits of heat-controller:\n" + limits);
    EXPECT_EQ(display_of("-q -hl"), limits);
}

TEST(Monitoring, OnceAndContinuously)
{
    const std::string values =
        "  Voltage output: {W}10.500V{.}    heater: {W}10.000V{.}    Current:  {W}2.000A{.}    "
        "Heater temperature:  {W}+81.25" CELSIUS "{.}\n"
        "  Power output:    {W}21.00W{.}    wires:    {W}1.00W{.}    heater:   {W}20.00W{.}    "
        "Heater resistance:   {W}5.000Ohm{.}\n";
    // Waits for a new measurement.
    Trial once{"latency 10", "reply GetHeatCtrlMonitoring.ready 0",
               "after 500 reply GetHeatCtrlMonitoring.ready 2"};
    set_monitoring(once, "2");
    once.run("3 -hm -T");
    EXPECT_EQ(once.display(), "Monitoring of heat-controller:\n" + values);
    EXPECT_GT(once.calls_of("GetHeatCtrlMonitoring()"), 40);
    Trial live{"latency 10"}; // only new measurements count: one in 100 ms
    set_monitoring(live, "2");
    live.type(1015, "\033");
    live.run("3 -HM -T");
    const std::string display = live.display();
    EXPECT_THAT(display,
                StartsWith("Monitoring of heat-controller, press {W}Esc{.} to quit: Data rate:  "));
    EXPECT_THAT(display, HasSubstr("{.} cycles/s, Mean measurement duration: "));
    EXPECT_THAT(display, HasSubstr("ms\n" + values));
    const double rate = std::stod(display.substr(display.find("{W}", display.find("rate")) + 3));
    EXPECT_NEAR(rate, 10.0, 2.0);
    // Esc ends the wait for a single measurement, too.
    EXPECT_THAT(live_display_of("-hm", 300, {"reply GetHeatCtrlMonitoring.ready 0"}),
                Not(HasSubstr("Error")));
}

TEST(Monitoring, NoResistanceAtSmallCurrents)
{
    for (const auto& [current, shown] : {std::pair{"0.1", "     {W}-{.}\n"},
                                         {"0.1001", " {W}99.900Ohm{.}\n"},
                                         {"nan", "     {W}-{.}\n"},
                                         {"inf", "  {W}0.000Ohm{.}\n"}}) {
        Trial trial;
        set_monitoring(trial, current);
        trial.run("3 -q -hm -T");
        EXPECT_THAT(trial.display(), HasSubstr(std::string{"Heater resistance: "} + shown));
    }
}

TEST(HeaterInterlocks, EachOfTwoSamples)
{
    const std::string closed = "{G}closed{.}";
    const std::string open = "{M}open{.}";
    const std::string noisy = "{W}noisy{.}";
    const struct {
        const char* state;
        std::string first, second;
    } cases[] = {
        {"05h", closed, open},       {"0Ah", open + "  ", closed}, {"01h", noisy + " ", open},
        {"04h", noisy + " ", open},  {"02h", open + "  ", noisy},  {"0FFh", closed, closed},
        {"0F0h", open + "  ", open},
    };
    for (const auto& [state, first, second] : cases)
        EXPECT_EQ(display_of("-hi", {std::string{"reply GetHeatCtrlIlockState.state "} + state}),
                  "Interlock state of heat-controller:\n  Interlock #1: " + first +
                      "     Interlock #2: " + second + '\n')
            << state;
    EXPECT_THAT(live_display_of("-q -HI", 75),
                StartsWith("Interlock state of heat-controller: Polling rate: {W}100.00{.} "
                           "cycles/s, Mean response time:  {W}10.00{.} ms\n"));
}

TEST(HeaterHousekeeping, WaitsForAValidRecord)
{
    EXPECT_EQ(display_of("-hk", {"latency 10", "reply GetHeatCtrlHousekeeping.valid 0",
                                 "after 300 reply GetHeatCtrlHousekeeping.valid 1"}),
              "Housekeeping of heat-controller:\n"
              "  Voltages: +3V3: {W}3.300V{.}     +5V0: {W}5.000V{.}     +24V: {W}24.000V{.}    "
              "Temperatures: CPU: {W}+30.0" CELSIUS "{.}    PSU: {W}+32.0" CELSIUS "{.}\n");
    EXPECT_THAT(
        live_display_of("-HK", 100),
        StartsWith("Housekeeping of heat-controller, press {W}Esc{.} to quit: Data rate:  "));
}

} // namespace
