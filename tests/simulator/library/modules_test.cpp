/// The modules of the instrument: their presence, when they measure, the heater within its limits,
/// the outputs of the HV-supplies.
#include "tests/simulator/instrument_test.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <functional>

namespace
{

using ModuleTest = InstrumentTest;
using HeaterTest = InstrumentTest;
using SupplyTest = InstrumentTest;

std::array<std::uint8_t, 8> presence()
{
    std::uint8_t valid = 0;
    std::uint32_t slots = 0;
    std::array<std::uint8_t, 8> flags{};
    EXPECT_EQ(COM_KOV_CTRL_GetModulePresence(&valid, &slots, flags.data()), 0);
    EXPECT_EQ(valid, 1);
    EXPECT_EQ(slots, 4U);
    return flags;
}

TEST_F(ModuleTest, PresenceIsRefreshedOnRequest)
{
    apply("slot1.present 2");
    apply("slot2.present 0");
    apply("slot3.present 9");
    EXPECT_EQ(presence(), (std::array<std::uint8_t, 8>{1, 1, 1, 1, 1}));
    ASSERT_EQ(COM_KOV_CTRL_UpdateModulePresence(), 0);
    EXPECT_EQ(presence(), (std::array<std::uint8_t, 8>{1, 2, 0, 9, 1}));
    for (const std::uint32_t address : {1U, 2U, 3U, 4U, 255U}) {
        std::int32_t number = 0;
        EXPECT_NE(COM_KOV_CTRL_GetModuleProductNo(address, &number), 0) << address;
    }
}

TEST_F(ModuleTest, ChangedModulesHaveToBeSaved)
{
    COM_KOV_CTRL_SetEnable(1);
    apply("slot2.product_number 999");
    apply("slot3.present 0");
    ASSERT_EQ(COM_KOV_CTRL_RescanModule(1), 0);
    EXPECT_EQ(got(COM_KOV_CTRL_GetScannedModuleState), 0);
    ASSERT_EQ(COM_KOV_CTRL_RescanModules(), 0);
    EXPECT_EQ(got(COM_KOV_CTRL_GetScannedModuleState), 1);
    EXPECT_EQ(got(COM_KOV_CTRL_GetState), 0x11);
    for (const std::uint32_t slot : {2U, 3U}) {
        std::int32_t scanned = 0, saved = 0;
        std::uint32_t scanned_type = 0, saved_type = 0;
        ASSERT_EQ(
            COM_KOV_CTRL_GetScannedModuleParams(slot, &scanned, &saved, &scanned_type, &saved_type),
            0);
        EXPECT_EQ(scanned, slot == 2 ? 999 : 0);
        EXPECT_EQ(scanned_type, slot == 2 ? saved_type : 0);
        EXPECT_NE(saved, scanned);
    }
    ASSERT_EQ(COM_KOV_CTRL_SetScannedModuleState(), 0);
    EXPECT_EQ(got(COM_KOV_CTRL_GetScannedModuleState), 0);
    EXPECT_EQ(got(COM_KOV_CTRL_GetState), 0);
}

bool read_voltage()
{
    std::uint8_t valid = 0;
    double value = 0;
    EXPECT_EQ(COM_KOV_CTRL_GetHVsupplyOutputVoltage(2, &valid, &value), 0);
    return valid != 0;
}

bool read_controller()
{
    const bool ready = (got(COM_KOV_CTRL_GetDataReadyFlags) & 1) != 0;
    double v24 = 0, v5 = 0, v33 = 0, cpu = 0, psu = 0;
    EXPECT_EQ(COM_KOV_CTRL_GetHousekeeping(&v24, &v5, &v33, &cpu, &psu), 0);
    return ready;
}

struct Kind {
    const char* name;
    std::uint32_t address; ///< 255 = the controller
    unsigned shift;        ///< of the pair of flags
    unsigned per_10_seconds;
    bool (*read)();
};

constexpr Kind kinds[] = {
    {"controller housekeeping", 255, 0, 10, read_controller},
    {"heater monitoring", 0, 0, 100, [] { return monitoring().ready; }},
    {"HV voltage", 2, 4, 50, read_voltage},
};

unsigned flags(const Kind& kind)
{
    const std::uint8_t all = kind.address == 255
                                 ? got(COM_KOV_CTRL_GetDataReadyFlags)
                                 : got(COM_KOV_CTRL_GetModuleDataReadyFlags, kind.address);
    return unsigned{all} >> kind.shift & 3U;
}

TEST_F(ModuleTest, EveryKindComesAtItsRateAndOverflowsUnread)
{
    for (const Kind& kind : kinds) {
        SCOPED_TRACE(kind.name);
        kind.read();
        unsigned fresh = 0;
        for (int millisecond = 0; millisecond < 10'000; ++millisecond) {
            wait_seconds(0.001);
            fresh += kind.read() ? 1U : 0U;
        }
        EXPECT_EQ(fresh, kind.per_10_seconds);
        for (const unsigned expected : {0U, 1U, 3U}) {
            EXPECT_EQ(flags(kind), expected);
            wait_seconds(10.0 / kind.per_10_seconds);
        }
        EXPECT_TRUE(kind.read()) << "a reading takes both flags";
        EXPECT_EQ(flags(kind), 0U);
    }
}

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

/// The output as it is set and as it is measured.
std::pair<double, double> output(std::uint32_t address)
{
    double period = 0, width = 0, phase_measured = 0, phase_set = 0, set = 0, measured = 0;
    std::uint8_t active = 0, ready = 0;
    EXPECT_EQ(COM_KOV_CTRL_GetHVsupplyParamsPWM(address, &period, &width, &phase_measured,
                                                &phase_set, &set, &measured, &active, &ready),
              0);
    return {set, measured};
}

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
        EXPECT_EQ(output(row.address), std::pair(row.output, row.output));
    }
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

} // namespace
