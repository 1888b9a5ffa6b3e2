/// Presence, scan, buffers, restart and identity of the modules.
#include "tests/simulator/instrument_test.h"

#include <array>

namespace
{

using ModuleTest = InstrumentTest;

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

} // namespace
