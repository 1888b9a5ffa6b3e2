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

#define CELSIUS                                                                                    \
    "\xC2\xB0"                                                                                     \
    "C"

void set_monitoring(Trial& trial, const char* current)
{
    for (const std::string& line :
         {std::string{"outputVoltage 10.5"}, std::string{"heaterVoltage 10"},
          std::string{"temperature 81.25"}, std::string{"current "} + current})
        trial.instrument("reply GetHeatCtrlMonitoring." + line);
}

TEST(HeatController, TargetsAndLimits)
{
    const struct {
        const char* reply; ///< of the getter
        const char* command;
        const char* shown;
        const char* call;
    } cases[] = {
        {"GetHeatCtrlHeaterTemperature.temperature 35.5", "-ht",
         "Target heater temperature of heat-controller: {W}35.500" CELSIUS "{.}\n",
         "GetHeatCtrlHeaterTemperature()"},
        {"GetHeatCtrlHeaterTemperature.temperature -0.5", "-ht",
         "Target heater temperature of heat-controller: {M}off{.}\n", nullptr},
        {"GetHeatCtrlHeaterTemperature.temperature -0.0", "-ht",
         "Target heater temperature of heat-controller: {W}-0.000" CELSIUS "{.}\n", nullptr},
        {nullptr, "-HT95.5",
         "Target heater temperature of heat-controller set to: {W}95.500" CELSIUS "{.}\n",
         "SetHeatCtrlHeaterTemperature(95.5)"},
        {nullptr, "-HT-1", "Target heater temperature of heat-controller set to: {M}off{.}\n",
         "SetHeatCtrlHeaterTemperature(-1)"},
        {"GetHeatCtrlOutputVoltage.voltage 12", "-ho",
         "Target output voltage of heat-controller: {W}12.000V{.}\n", nullptr},
        {"GetHeatCtrlOutputVoltage.voltage -1", "-ho", "Output voltage control: {W}off{.}\n",
         nullptr},
        {"GetHeatCtrlHeaterPower.power 0", "-hp",
         "Target heater power of heat-controller: {W}0.000W{.}\n", nullptr},
        {"GetHeatCtrlHeaterPower.power -1", "-hp", "Heater power control: {W}off{.}\n", nullptr},
        {"GetHeatCtrlVoltageLimit.voltage 22", "-hv",
         "Maximum heater voltage of heat-controller: {W}22.000V{.}\n", nullptr},
        {nullptr, "-HV12.25", "Maximum heater voltage of heat-controller set to: {W}12.250V{.}\n",
         "SetHeatCtrlVoltageLimit(12.25)"},
        {"GetHeatCtrlCurrentLimit.current -2", "-ha",
         "Maximum heater current of heat-controller: {W}-2.000A{.}\n", nullptr},
        {nullptr, "-HA-2", "Maximum heater current of heat-controller set to: {W}-2.000A{.}\n",
         "SetHeatCtrlCurrentLimit(-2)"},
        {"GetHeatCtrlPowerLimit.power 90", "-hw",
         "Maximum heater power of heat-controller: {W}90.000W{.}\n", nullptr},
        {nullptr, "-HW5", "Maximum heater power of heat-controller set to: {W}5.000W{.}\n",
         "SetHeatCtrlPowerLimit(5)"},
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
    Trial debug;
    debug.run("3 -g -ho -HV1 -hl -hi -hm -T");
    for (const char* line :
         {"Getting target output voltage", "Setting voltage limit", "Getting hardware limits",
          "Getting interlock state", "Getting monitoring data"})
        EXPECT_THAT(debug.display(), HasSubstr(std::string{line} + " of heat-controller:\n"));
}

TEST(HeatController, HardwareLimits)
{
    const std::string limits = "  Maximum heater voltage:      {W}22.000V{.}\n"
                               "  Maximum heater current:       {W}5.000A{.}\n"
                               "  Maximum heater power:        {W}90.000W{.}\n"
                               "  Maximum heater temperature: {W}200.000" CELSIUS "{.}\n";
    Trial trial;
    trial.run("3 -HL -T");
    EXPECT_EQ(trial.display(), "Hardware limits of heat-controller:\n" + limits);
    Trial quiet;
    quiet.run("3 -q -hl -T");
    EXPECT_EQ(quiet.display(), limits);
}

TEST(Monitoring, OnceAndContinuously)
{
    const std::string values =
        "  Voltage output: {W}10.500V{.}    heater: {W}10.000V{.}    Current:  {W}2.000A{.}    "
        "Heater temperature:  {W}+81.25" CELSIUS "{.}\n"
        "  Power output:    {W}21.00W{.}    wires:    {W}1.00W{.}    heater:   {W}20.00W{.}    "
        "Heater resistance:   {W}5.000Ohm{.}\n";
    Trial once; // waits for a new measurement
    set_monitoring(once, "2");
    once.instrument("latency 10");
    once.instrument("reply GetHeatCtrlMonitoring.ready 0");
    once.instrument("after 500 reply GetHeatCtrlMonitoring.ready 2");
    once.run("3 -hm -T");
    EXPECT_EQ(once.display(), "Monitoring of heat-controller:\n" + values);
    EXPECT_GT(std::count(once.calls.begin(), once.calls.end(), "GetHeatCtrlMonitoring()"), 40);
    Trial live; // only new measurements count: one in 100 ms
    set_monitoring(live, "2");
    live.instrument("latency 10");
    live.type(1015, "\033");
    live.run("3 -HM -T");
    EXPECT_THAT(live.display(),
                StartsWith("Monitoring of heat-controller, press {W}Esc{.} to quit: Data rate:  "));
    EXPECT_THAT(live.display(), HasSubstr("{.} cycles/s, Mean measurement duration: "));
    EXPECT_THAT(live.display(), HasSubstr("ms\n" + values));
    const std::string& display = live.display();
    const double rate = std::stod(display.substr(display.find("{W}", display.find("rate")) + 3));
    EXPECT_NEAR(rate, 10.0, 2.0);
    Trial given_up; // Esc ends the wait for a single measurement, too
    given_up.instrument("latency 10");
    given_up.instrument("reply GetHeatCtrlMonitoring.ready 0");
    given_up.type(300, "\033");
    given_up.run("3 -hm -T");
    EXPECT_EQ(given_up.exit_status, 0);
    EXPECT_THAT(given_up.display(), Not(HasSubstr("Error")));
    Trial failing; // one failure is enough
    failing.instrument("fail GetHeatCtrlMonitoring at 3");
    failing.instrument("latency 10");
    failing.run("3 -HM -T");
    EXPECT_THAT(failing.display(), HasSubstr("{W}-{.}\n{M}2026"));
}

TEST(Monitoring, NoResistanceAtSmallCurrents)
{
    const struct {
        const char* current;
        const char* shown;
    } cases[] = {
        {"0.1", "Heater resistance:      {W}-{.}\n"},
        {"0.1001", "Heater resistance:  {W}99.900Ohm{.}\n"},
        {"nan", "Heater resistance:      {W}-{.}\n"},
        {"inf", "Heater resistance:   {W}0.000Ohm{.}\n"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.current);
        Trial trial;
        set_monitoring(trial, c.current);
        trial.run("3 -q -hm -T");
        EXPECT_THAT(trial.display(), HasSubstr(c.shown));
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
    for (const auto& c : cases) {
        SCOPED_TRACE(c.state);
        Trial trial;
        trial.instrument(std::string{"reply GetHeatCtrlIlockState.state "} + c.state);
        trial.instrument("fail GetHeatCtrlIlockState at 1"); // repeated silently
        trial.run("3 -hi -T");
        EXPECT_EQ(trial.display(), "Interlock state of heat-controller:\n  Interlock #1: " +
                                       c.first + "     Interlock #2: " + c.second + '\n');
    }
    Trial live;
    live.instrument("latency 10");
    live.type(75, "\033");
    live.run("3 -q -HI -T");
    EXPECT_THAT(live.display(),
                StartsWith("Interlock state of heat-controller: Polling rate: {W}100.00{.} "
                           "cycles/s, Mean response time:  {W}10.00{.} ms\n"));
}

TEST(HeaterHousekeeping, WaitsForAValidRecord)
{
    const std::string values = "  Voltages: +3V3: {W}3.300V{.}     +5V0: {W}5.000V{.}     +24V: "
                               "{W}24.000V{.}    Temperatures: CPU: {W}+30.0" CELSIUS
                               "{.}    PSU: {W}+32.0" CELSIUS "{.}\n";
    Trial once;
    once.instrument("latency 10");
    once.instrument("reply GetHeatCtrlHousekeeping.valid 0");
    once.instrument("after 300 reply GetHeatCtrlHousekeeping.valid 1");
    once.run("3 -hk -T");
    EXPECT_EQ(once.display(), "Housekeeping of heat-controller:\n" + values);
    Trial live;
    live.instrument("latency 10");
    live.type(100, "\033");
    live.run("3 -HK -T");
    EXPECT_THAT(live.display(), StartsWith("Housekeeping of heat-controller, press {W}Esc{.} to "
                                           "quit: Data rate:  "));
    Trial failing;
    failing.instrument("fail GetHeatCtrlHousekeeping at 1");
    failing.run("3 -q -hk -T");
    EXPECT_THAT(failing.display(), HasSubstr("Error at COM_KOV_CTRL_GetHeatCtrlHousekeeping"));
}

} // namespace
