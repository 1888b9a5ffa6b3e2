#include <gtest/gtest.h>

#include "modules/hardware_types.h"
#include "modules/presence.h"

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

TEST(Presence, ModuleTypeNames)
{
    EXPECT_STREQ(module_type_name(heat_controller), "Heat Controller");
    EXPECT_STREQ(module_type_name(base_unit), "KOV Controller");
    EXPECT_STREQ(module_type_name(2), "HV Supply");
}

} // namespace
