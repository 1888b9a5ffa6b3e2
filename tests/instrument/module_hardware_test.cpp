#include "instrument/module_hardware.h"

#include <gtest/gtest.h>

namespace
{

TEST(HardwareTypes, Names)
{
    EXPECT_EQ(base_unit_hardware::type_name(0x0140'C818), "KOVCT-200W-4");
    EXPECT_EQ(base_unit_hardware::type_name_with_fans(0x0140'C818), "KOVCT-200W-20");
    EXPECT_EQ(heat_controller_hardware::type_name(0x0605'0180), "HEAT-CTRL-245");
    EXPECT_EQ(hv_supply_hardware::type_name(0xC51C'8BB8), "HVPS-3000B"); // bipolar goes first
    EXPECT_EQ(hv_supply_hardware::type_name(0x411C'87D0), "HVPS-2000P");
    EXPECT_EQ(hv_supply_hardware::type_name(0x311C'81F4), "HVPS-500N");
    EXPECT_STREQ(hv_supply_hardware::output_kind(0x311C'81F4), "Negative");
}

TEST(HardwareTypes, FieldsEndWhereTheNextBegins)
{
    const struct {
        WordField field;
        std::uint32_t mask;
    } cases[] = {
        {base_unit_hardware::supply_voltage, 0x0000'00FF},
        {base_unit_hardware::maximum_power, 0x000F'FF00},
        {base_unit_hardware::slots, 0x00F0'0000},
        {base_unit_hardware::fans, 0x0300'0000},
        {heat_controller_hardware::interlocks, 0x0300'0000},
        {heat_controller_hardware::channels, 0x0C00'0000},
        {hv_supply_hardware::voltage_range, 0x0000'3FFF},
        {hv_supply_hardware::current_ranges, 0x0003'C000},
        {hv_supply_hardware::bipolar_outputs, 0x0C00'0000},
        {hv_supply_hardware::unipolar_outputs, 0xC000'0000},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.mask);
        EXPECT_EQ(c.field.of(c.mask), (1U << c.field.bits) - 1);
        EXPECT_EQ(c.field.of(~c.mask), 0U);
    }
    EXPECT_EQ(heat_controller_hardware::supply_voltage(0x0000'0FFF), 4095 / 16.0);
    EXPECT_EQ(heat_controller_hardware::supply_voltage(0xFFFF'F000), 0.0);
    EXPECT_EQ(heat_controller_hardware::maximum_current(0x00FF'F000), 4095 / 16.0);
    EXPECT_EQ(heat_controller_hardware::maximum_current(0xFF00'0FFF), 0.0);
    EXPECT_EQ(hv_supply_hardware::lowest_current_exponent(0x003C'0000), -14);
    EXPECT_EQ(hv_supply_hardware::lowest_current_exponent(0xFFC3'FFFF), 1);
    EXPECT_EQ(hv_supply_hardware::highest_current_exponent(0x03C0'0000), -14);
    EXPECT_EQ(hv_supply_hardware::highest_current_exponent(0xFC3F'FFFF), 1);
}

} // namespace
