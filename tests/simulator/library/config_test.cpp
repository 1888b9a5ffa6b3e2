/// Settings, configuration sets and memory as views of the same bytes.
#include "tests/simulator/instrument_test.h"

#include <algorithm>
#include <array>
#include <vector>

namespace
{

using ConfigTest = InstrumentTest;

ConfigRecord current()
{
    return got(COM_KOV_CTRL_GetCurrentConfig);
}

std::int32_t set_real(std::int32_t (*setter)(const double*), double value)
{
    return setter(&value);
}

TEST_F(ConfigTest, EverySetterShowsInTheCurrentConfiguration)
{
    constexpr auto set_temperature = COM_KOV_CTRL_SetHeatCtrlHeaterTemperature;
    constexpr auto set_target = COM_KOV_CTRL_SetHVsupplyTargetOutputVoltage;
    struct {
        std::int32_t (*set)();
        std::size_t place;
        std::vector<std::uint8_t> bytes;
    } const cases[] = {
        {[] { return COM_KOV_CTRL_SetEnable(1); }, 0, {1}},
        {[] { return COM_KOV_CTRL_SetHVsupplyInterlockEnable(0x101); }, 1, {0xF1}},
        {[] { return COM_KOV_CTRL_SetHeatCtrlInterlockEnable(0x1A); }, 1, {0xAC}},
        {[] { return COM_KOV_CTRL_SetFanSwitchOverride(3); }, 2, {3}},
        {[] { return set_real(COM_KOV_CTRL_SetHeatCtrlVoltageLimit, 10.24); }, 3, {0x10, 0x27}},
        {[] { return set_real(COM_KOV_CTRL_SetHeatCtrlCurrentLimit, 2.048); }, 5, {0xD0, 7}},
        {[] { return set_real(COM_KOV_CTRL_SetHeatCtrlPowerLimit, 50); }, 7, {0xE6, 0xB5, 0, 0}},
        {[] { return set_real(set_temperature, 120); }, 11, {0xBE, 0xFF, 5, 0}},
        {[] { return set_real(set_temperature, -300); }, 11, {0, 0, 0, 0}}, // too cold
        {[] { return COM_KOV_CTRL_SetModuleActivationState(0, 7); }, 15, {1}},
        {[] { return COM_KOV_CTRL_SetHVsupplyMeasRanges(1, 9, 0); }, 25, {1, 0}},
        {[] { return set_target(2, 100.001); }, 29, {0xA1, 0x86, 1, 0}},
        {[] { return set_target(3, -7); }, 41, {0x18, 0xFC, 0xFF, 0xFF}}, // off
        {[] { return COM_KOV_CTRL_SetModuleActivationState(3, 1); }, 51, {1}},
    };
    for (const auto& row : cases) {
        SetUp();
        const ConfigRecord before = current();
        ASSERT_EQ(row.set(), 0) << row.place;
        const ConfigRecord after = current();
        for (std::size_t i = 0; i < sizeof after.bytes; ++i) {
            const bool set = i >= row.place && i < row.place + row.bytes.size();
            EXPECT_EQ(after.bytes[i], set ? row.bytes[i - row.place] : before.bytes[i])
                << "byte " << i;
        }
    }
}

TEST_F(ConfigTest, SetsAreSavedAndLoaded)
{
    EXPECT_NE(COM_KOV_CTRL_LoadCurrentConfig(1022), 0); // nothing in it
    COM_KOV_CTRL_SetFanSwitchOverride(3);
    ASSERT_EQ(COM_KOV_CTRL_SaveCurrentConfig(1022), 0);
    COM_KOV_CTRL_SetFanSwitchOverride(0);
    ASSERT_EQ(COM_KOV_CTRL_LoadCurrentConfig(1022), 0);
    EXPECT_EQ(got(COM_KOV_CTRL_GetFanSwitchOverride), 3);
    std::array<std::uint8_t, 1024> actives{}, valids{};
    actives[1023] = valids[1023] = 77;
    ASSERT_EQ(COM_KOV_CTRL_GetConfigList(actives.data(), valids.data()), 0);
    EXPECT_EQ(actives[1022], 1);
    EXPECT_EQ(std::count(valids.begin(), valids.end(), 0), 1022);
    EXPECT_EQ(actives[1023], 77); // beyond the sets
    EXPECT_NE(COM_KOV_CTRL_SaveCurrentConfig(1023), 0);
}

} // namespace
