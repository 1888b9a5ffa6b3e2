/// Presence, scan, maintenance, readings and state of the modules and the base unit.
#include "simulator/library/call_unit.h"
#include "simulator/library/units.h"
#include "simulator/model/config_record.h"
#include "simulator/model/measurements.h"
#include "simulator/model/noise.h"
#include "simulator/model/operation.h"
#include "simulator/model/status.h"

using namespace simulator;

namespace
{

constexpr std::int64_t module_restart_us = 200'000;
constexpr std::int64_t presence_us = 20'000;
constexpr std::int64_t rescan_us = 20'000;

/// Where the current configuration keeps a module's activation.
std::size_t activation_field(unsigned unit)
{
    return unit == 0 ? field::heater_active : field::supply_active(unit - 1);
}

} // namespace

std::int32_t COM_KOV_CTRL_GetModulePresence(std::uint8_t* valid, std::uint32_t* slotCount,
                                            std::uint8_t* flags)
{
    return call<"GetModulePresence">(
        [&](Instrument& instrument) {
            *valid = instrument.physical.presence_valid;
            *slotCount = instrument.physical.presence_slots;
            std::copy(instrument.presence.begin(), instrument.presence.end(), flags);
        },
        valid, slotCount, flags);
}

std::int32_t COM_KOV_CTRL_UpdateModulePresence(void)
{
    return call<"UpdateModulePresence">([](Instrument& instrument) {
        take_time_us(presence_us);
        refresh_presence(instrument);
    });
}

std::int32_t COM_KOV_CTRL_RescanModules(void)
{
    return call<"RescanModules">([](Instrument& instrument) {
        take_time_us(rescan_us);
        for (unsigned unit = 0; unit < unit_count; ++unit)
            scan(instrument, unit);
        refresh(instrument);
    });
}

std::int32_t COM_KOV_CTRL_RescanModule(std::uint32_t address)
{
    return call_unit<"RescanModule">(address, [](Instrument& instrument, unsigned unit) {
        scan(instrument, unit);
        refresh(instrument);
    });
}

std::int32_t COM_KOV_CTRL_RestartModule(std::uint32_t address)
{
    return call_unit<"RestartModule">(address, [](Instrument& instrument, unsigned unit) {
        restart_unit(instrument, unit);
        take_time_us(module_restart_us);
    });
}

std::int32_t COM_KOV_CTRL_GetModuleBufferState(std::uint32_t address, std::uint8_t* empty)
{
    return call_unit<"GetModuleBufferState">(
        address,
        [&](Instrument& instrument, unsigned unit) {
            *empty = instrument.physical.units[unit].buffer_empty;
        },
        empty);
}

std::int32_t COM_KOV_CTRL_ModulePurge(std::uint32_t address, std::uint8_t* purged)
{
    return call_unit<"ModulePurge">(
        address,
        [&](Instrument& instrument, unsigned unit) {
            Unit& cleared = instrument.physical.units[unit];
            cleared.buffer_empty |= cleared.purges;
            *purged = cleared.purges;
        },
        purged);
}

std::int32_t COM_KOV_CTRL_GetScannedModuleState(std::uint8_t* changed)
{
    return call<"GetScannedModuleState">(
        [&](Instrument& instrument) { *changed = instrument.scanned != instrument.saved; },
        changed);
}

std::int32_t COM_KOV_CTRL_GetScannedModuleParams(std::uint32_t address,
                                                 std::int32_t* scannedProductNo,
                                                 std::int32_t* savedProductNo,
                                                 std::uint32_t* scannedHwType,
                                                 std::uint32_t* savedHwType)
{
    return call<"GetScannedModuleParams">(
        [&](Instrument& instrument) {
            unsigned unit = 0;
            const Failure failure = find_place(address, unit);
            if (failure != Failure::none)
                return failure;
            *scannedProductNo = instrument.scanned[unit].product_number;
            *savedProductNo = instrument.saved[unit].product_number;
            *scannedHwType = instrument.scanned[unit].hardware_type;
            *savedHwType = instrument.saved[unit].hardware_type;
            return Failure::none;
        },
        address, scannedProductNo, savedProductNo, scannedHwType, savedHwType);
}

std::int32_t COM_KOV_CTRL_SetScannedModuleState(void)
{
    return call<"SetScannedModuleState">([](Instrument& instrument) {
        instrument.saved = instrument.scanned;
        settings_changed(instrument);
    });
}

std::int32_t COM_KOV_CTRL_GetModuleCPUdata(std::uint32_t address, double* load)
{
    return call_unit<"GetModuleCPUdata">(
        address,
        [&](Instrument& instrument, unsigned unit) {
            *load = with_noise(instrument, instrument.physical.units[unit].readings.cpu_load, 2.0,
                               Noise::unit_cpu_load + unit,
                               measurement_number(instrument, unit, Measurement::housekeeping));
        },
        load);
}

std::int32_t COM_KOV_CTRL_GetModuleLEDData(std::uint32_t address, std::uint8_t* red,
                                           std::uint8_t* green, std::uint8_t* blue)
{
    return call_unit<"GetModuleLEDData">(
        address,
        [&](Instrument& instrument, unsigned unit) {
            show_led(instrument.status.leds[unit], red, green, blue);
        },
        red, green, blue);
}

std::int32_t COM_KOV_CTRL_GetModuleState(std::uint32_t address, std::uint16_t* state)
{
    return call_unit<"GetModuleState">(
        address,
        [&](Instrument& instrument, unsigned unit) { *state = instrument.status.modules[unit]; },
        state);
}

std::int32_t COM_KOV_CTRL_GetModuleActivationState(std::uint32_t address, std::uint8_t* state)
{
    return call_unit<"GetModuleActivationState">(
        address,
        [&](Instrument& instrument, unsigned unit) {
            *state = unit == base_unit ? instrument.base_activated
                                       : current_config(instrument)[activation_field(unit)] != 0;
        },
        state);
}

std::int32_t COM_KOV_CTRL_SetModuleActivationState(std::uint32_t address, std::uint8_t state)
{
    return call_unit<"SetModuleActivationState">(
        address,
        [&](Instrument& instrument, unsigned unit) {
            if (unit == base_unit)
                instrument.base_activated = state != 0;
            else
                current_config(instrument)[activation_field(unit)] = state != 0;
            settings_changed(instrument);
        },
        state);
}

std::int32_t COM_KOV_CTRL_GetModuleDataReadyFlags(std::uint32_t address, std::uint8_t* flags)
{
    return call_unit<"GetModuleDataReadyFlags">(
        address,
        [&](Instrument& instrument, unsigned unit) { *flags = data_ready_flags(instrument, unit); },
        flags);
}

std::int32_t COM_KOV_CTRL_GetBaseHousekeeping(std::uint8_t* valid, double* voltage33,
                                              double* temperatureCPU)
{
    return call<"GetBaseHousekeeping">(
        [&](Instrument& instrument) {
            unsigned unit = 0;
            const Failure failure = find_unit(instrument, base_address, unit);
            if (failure != Failure::none)
                return failure;
            const ModuleReading reading = read_housekeeping(instrument, unit);
            *valid = reading.is_new;
            *voltage33 = reading.values.voltage33;
            *temperatureCPU = reading.values.cpu_temperature;
            return Failure::none;
        },
        valid, voltage33, temperatureCPU);
}
