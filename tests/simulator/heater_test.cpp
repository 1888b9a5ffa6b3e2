/// The heater under each of its limits, and what switches it off.
#include "tests/simulator/instrument_test.h"

#include <algorithm>
#include <functional>

namespace
{

using HeaterTest = InstrumentTest;

void heat_to(double target)
{
    COM_KOV_CTRL_SetEnable(1);
    COM_KOV_CTRL_SetHeatCtrlHeaterTemperature(&target);
    COM_KOV_CTRL_SetModuleActivationState(0, 1);
}

TEST_F(HeaterTest, HardwareLimitsHoldWhateverIsSet)
{
    const double huge = 1e9;
    double voltage = 0, current = 0, power = 0, temperature = 0;
    ASSERT_EQ(COM_KOV_CTRL_GetHeatCtrlHwLimits(&voltage, &current, &power, &temperature), 0);
    // A heater for each of the limits to be the one that counts at first, and the temperature last.
    for (const char* const resistance : {"2", "5", "20"}) {
        SetUp();
        apply(std::string("heater.resistance ") + resistance);
        apply("heater.thermal_resistance 12");
        COM_KOV_CTRL_SetHeatCtrlVoltageLimit(&huge);
        COM_KOV_CTRL_SetHeatCtrlCurrentLimit(&huge);
        COM_KOV_CTRL_SetHeatCtrlPowerLimit(&huge);
        heat_to(5000);
        Monitoring highest;
        for (int second = 0; second < 2000; ++second) {
            wait_seconds(1);
            const Monitoring now = monitoring();
            highest.heater = std::max(highest.heater, now.heater / voltage);
            highest.current = std::max(highest.current, now.current / current);
            highest.output = std::max(highest.output, now.heater * now.current / power);
            ASSERT_LE(now.temperature, temperature + 0.01);
        }
        EXPECT_NEAR(std::max({highest.heater, highest.current, highest.output}), 1, 1e-6);
        EXPECT_NEAR(monitoring().temperature, temperature, 0.1) << resistance;
    }
}

TEST_F(HeaterTest, EverythingThatShouldSwitchItOffDoes)
{
    const double off = -1;
    const std::function<void()> causes[] = {
        [] { COM_KOV_CTRL_SetEnable(0); },
        [] { COM_KOV_CTRL_SetModuleActivationState(0, 0); },
        [&] { COM_KOV_CTRL_SetHeatCtrlHeaterTemperature(&off); },
        [] { apply("interlock.2 open"); },
        [] { apply("psu.temperature 60"); },
        [] { apply("power.dc_output off"); },
    };
    for (const auto& cause : causes) {
        SetUp();
        heat_to(80);
        wait_seconds(60);
        EXPECT_GT(monitoring().current, 1);
        cause();
        wait_seconds(0.2);
        EXPECT_EQ(monitoring().current, 0);
        EXPECT_LT(got(COM_KOV_CTRL_GetHeatCtrlHeaterPower), 0);
        EXPECT_LT(got(COM_KOV_CTRL_GetHeatCtrlOutputVoltage), 0);
        wait_seconds(2000);
        EXPECT_NEAR(monitoring().temperature, 25, 0.01);
    }
}

} // namespace
