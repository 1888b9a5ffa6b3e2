/// The HV-supplies: ramps in both polarities, measurement ranges, currents.
#include "simulator/arithmetic.h"
#include "tests/simulator/instrument_test.h"

#include <cmath>
#include <cstdlib>
#include <string>

namespace
{

using ValidValue = std::int32_t (*)(std::uint32_t, std::uint8_t*, double*);

double read_supply(ValidValue getter, std::uint32_t address)
{
    std::uint8_t valid = 0;
    double value = 0;
    EXPECT_EQ(getter(address, &valid, &value), 0);
    return value;
}

constexpr ValidValue voltage = COM_KOV_CTRL_GetHVsupplyOutputVoltage;
constexpr ValidValue current = COM_KOV_CTRL_GetHVsupplyOutputCurrent;

struct Pulse {
    double width = 0, set = 0, measured = 0;
};

Pulse pulse(std::uint32_t address)
{
    Pulse p;
    double period = 0, phase_measured = 0, phase_set = 0;
    std::uint8_t active = 0, ready = 0;
    EXPECT_EQ(COM_KOV_CTRL_GetHVsupplyParamsPWM(address, &period, &p.width, &phase_measured,
                                                &phase_set, &p.set, &p.measured, &active, &ready),
              0);
    return p;
}

using SupplyTest = InstrumentTest;

void turn_on(std::uint32_t address, double target, bool negative, bool high = true)
{
    COM_KOV_CTRL_SetEnable(1);
    COM_KOV_CTRL_SetHVsupplyMeasRanges(address, negative, high);
    COM_KOV_CTRL_SetHVsupplyTargetOutputVoltage(address, target);
    COM_KOV_CTRL_SetModuleActivationState(address, 1);
}

TEST_F(SupplyTest, OutputReachesTheTargetInItsPolarity)
{
    struct {
        std::uint32_t address;
        double target;
        bool negative;
        double read; ///< by the chosen range
        double output;
    } const cases[] = {
        {1, 3000, false, 3000, 3000}, {1, 1500.123, true, -1500.123, -1500.123},
        {1, 5000, false, 3000, 3000}, {2, 2000, false, 2000, 2000},
        {2, 2000, true, 0, 2000},     {3, 500, true, -500, -500},
        {3, 250, false, 0, -250},     {3, 0, true, 0, 0},
    };
    for (const auto& row : cases) {
        SetUp();
        turn_on(row.address, row.target, row.negative);
        wait_seconds(10);
        EXPECT_NEAR(read_supply(voltage, row.address), row.read, 1e-9)
            << row.address << ' ' << row.target;
        EXPECT_NEAR(pulse(row.address).measured, row.output, 1e-9);
        EXPECT_NEAR(pulse(row.address).set, row.output, 1e-9);
    }
}

TEST_F(SupplyTest, OutputDecaysWhenItIsSwitchedOff)
{
    turn_on(2, 2000, false);
    wait_seconds(10);
    EXPECT_GT(pulse(2).width, 0);
    COM_KOV_CTRL_SetHVsupplyTargetOutputVoltage(2, -5);
    EXPECT_EQ(got(COM_KOV_CTRL_GetHVsupplyTargetOutputVoltage, 2), -1);
    wait_seconds(0.5);
    EXPECT_NEAR(read_supply(voltage, 2), 2000 / std::exp(1), 300);
    wait_seconds(20);
    EXPECT_EQ(read_supply(voltage, 2), 0);
    EXPECT_EQ(pulse(2).width, 0);
}

TEST_F(SupplyTest, LowRangeIsFinerAndSaturates)
{
    turn_on(1, 1234.5, false, false);
    wait_seconds(20);
    EXPECT_NEAR(read_supply(current, 1), 123.45e-9, 1e-12);
    COM_KOV_CTRL_SetHVsupplyMeasRanges(1, 0, 1);
    wait_seconds(20);
    EXPECT_NEAR(read_supply(current, 1), 123e-9, 0.5e-12); // whole nanoamperes
    apply("slot1.load 1e8");
    wait_seconds(1);
    EXPECT_NEAR(read_supply(current, 1), 12.345e-6, 1e-12);
    for (const bool negative : {false, true}) {
        COM_KOV_CTRL_SetHVsupplyMeasRanges(1, negative, 0);
        wait_seconds(20);
        EXPECT_NEAR(read_supply(current, 1), negative ? -1e-6 : 1e-6, 1e-12);
    }
}

TEST(Arithmetic, IsExactWhereItMustBe)
{
    for (const double value : {0.0, 0.001, 0.02, 0.031, 1.0, 3.3, 40.0, 200.0})
        EXPECT_NEAR(simulator::faded(value) / std::exp(-value), 1.0, 1e-12) << value;
    for (const auto& [value, rounded] :
         {std::pair{0.49999999999999994, 0}, {0.5, 1}, {2.5, 3}, {-0.5, -1}, {-1.4, -1}})
        EXPECT_EQ(simulator::nearest(value), rounded) << value;
    for (int exponent = -14; exponent <= 1; ++exponent) {
        const std::string text = "1e" + std::to_string(exponent);
        EXPECT_EQ(simulator::power_of_ten(exponent), std::strtod(text.c_str(), nullptr)) << text;
    }
}

} // namespace
