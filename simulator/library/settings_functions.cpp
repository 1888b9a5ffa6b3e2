/// Device enable, interlock masks and the function of the slide switch 'Fan'.
#include "simulator/library/call.h"
#include "simulator/model/config_record.h"
#include "simulator/model/status.h"

using namespace simulator;

std::int32_t COM_KOV_CTRL_GetEnable(std::uint8_t* enable)
{
    return call<"GetEnable">(
        [&](Instrument& instrument) { *enable = current_config(instrument)[field::enable] != 0; },
        enable);
}

std::int32_t COM_KOV_CTRL_SetEnable(std::uint8_t enable)
{
    return call<"SetEnable">(
        [&](Instrument& instrument) {
            current_config(instrument)[field::enable] = enable != 0;
            settings_changed(instrument);
        },
        enable);
}

std::int32_t COM_KOV_CTRL_GetHVsupplyInterlockEnable(std::uint8_t* mask)
{
    return call<"GetHVsupplyInterlockEnable">(
        [&](Instrument& instrument) {
            *mask = current_config(instrument)[field::interlock_masks] & 0x0F;
        },
        mask);
}

std::int32_t COM_KOV_CTRL_SetHVsupplyInterlockEnable(std::uint32_t mask)
{
    return call<"SetHVsupplyInterlockEnable">(
        [&](Instrument& instrument) {
            std::uint8_t& masks = current_config(instrument)[field::interlock_masks];
            masks = static_cast<std::uint8_t>((masks & 0xF0U) | (mask & 0x0FU));
            settings_changed(instrument);
        },
        mask);
}

std::int32_t COM_KOV_CTRL_GetHeatCtrlInterlockEnable(std::uint8_t* mask)
{
    return call<"GetHeatCtrlInterlockEnable">(
        [&](Instrument& instrument) {
            *mask = current_config(instrument)[field::interlock_masks] >> 4;
        },
        mask);
}

std::int32_t COM_KOV_CTRL_SetHeatCtrlInterlockEnable(std::uint32_t mask)
{
    return call<"SetHeatCtrlInterlockEnable">(
        [&](Instrument& instrument) {
            std::uint8_t& masks = current_config(instrument)[field::interlock_masks];
            masks = static_cast<std::uint8_t>((masks & 0x0FU) | (mask & 0x0FU) << 4);
            settings_changed(instrument);
        },
        mask);
}

std::int32_t COM_KOV_CTRL_GetFanSwitchOverride(std::uint8_t* function)
{
    return call<"GetFanSwitchOverride">(
        [&](Instrument& instrument) {
            *function = current_config(instrument)[field::fan_override];
        },
        function);
}

std::int32_t COM_KOV_CTRL_SetFanSwitchOverride(std::uint32_t function)
{
    return call<"SetFanSwitchOverride">(
        [&](Instrument& instrument) {
            current_config(instrument)[field::fan_override] =
                static_cast<std::uint8_t>(function & 0xFF);
            settings_changed(instrument);
        },
        function);
}
