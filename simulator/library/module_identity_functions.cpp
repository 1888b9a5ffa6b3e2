/// Identification and clocks of the modules and the base unit.
#include "simulator/library/call_unit.h"
#include "simulator/model/clocks.h"

using namespace simulator;

namespace
{

const Identity& identity(const Instrument& instrument, unsigned unit)
{
    return instrument.physical.units[unit].identity;
}

/// A function whose one result is a figure of the unit's identity.
template <Name name, typename T>
std::int32_t call_for_identity_figure(std::uint32_t address, T Identity::*figure, T* result)
{
    return call_unit<name>(
        address,
        [=](Instrument& instrument, unsigned unit) {
            *result = identity(instrument, unit).*figure;
        },
        result);
}

} // namespace

std::int32_t COM_KOV_CTRL_GetModuleProductID(std::uint32_t address, char* identification)
{
    return call_unit<"GetModuleProductID">(
        address,
        [&](Instrument& instrument, unsigned unit) {
            copy_product_id(identification, identity(instrument, unit).product_id);
        },
        identification);
}

std::int32_t COM_KOV_CTRL_GetModuleProductNo(std::uint32_t address, std::int32_t* number)
{
    return call_for_identity_figure<"GetModuleProductNo">(address, &Identity::product_number,
                                                          number);
}

std::int32_t COM_KOV_CTRL_GetModuleManufDate(std::uint32_t address, std::uint16_t* year,
                                             std::uint16_t* week)
{
    return call_unit<"GetModuleManufDate">(
        address,
        [&](Instrument& instrument, unsigned unit) {
            *year = identity(instrument, unit).year;
            *week = identity(instrument, unit).week;
        },
        year, week);
}

std::int32_t COM_KOV_CTRL_GetModuleHwVersion(std::uint32_t address, std::uint16_t* version)
{
    return call_for_identity_figure<"GetModuleHwVersion">(address, &Identity::hardware_version,
                                                          version);
}

std::int32_t COM_KOV_CTRL_GetModuleFwVersion(std::uint32_t address, std::uint16_t* version)
{
    return call_for_identity_figure<"GetModuleFwVersion">(address, &Identity::firmware_version,
                                                          version);
}

std::int32_t COM_KOV_CTRL_GetModuleFwDate(std::uint32_t address, char* date)
{
    return call_unit<"GetModuleFwDate">(
        address,
        [&](Instrument& instrument, unsigned unit) {
            copy_text(date, 12, identity(instrument, unit).firmware_date);
        },
        date);
}

std::int32_t COM_KOV_CTRL_GetModuleDevType(std::uint32_t address, std::uint16_t* type)
{
    return call_for_identity_figure<"GetModuleDevType">(address, &Identity::device_type, type);
}

std::int32_t COM_KOV_CTRL_GetModuleHwType(std::uint32_t address, std::uint32_t* type)
{
    return call_for_identity_figure<"GetModuleHwType">(address, &Identity::hardware_type, type);
}

std::int32_t COM_KOV_CTRL_GetModuleUptimeInt(std::uint32_t address, std::uint32_t* seconds,
                                             std::uint16_t* milliseconds,
                                             std::uint32_t* totalSeconds,
                                             std::uint16_t* totalMilliseconds)
{
    return call_unit<"GetModuleUptimeInt">(
        address,
        [&](Instrument& instrument, unsigned unit) {
            split_duration(uptime_us(instrument, unit), seconds, milliseconds);
            split_duration(total_uptime_us(instrument, unit), totalSeconds, totalMilliseconds);
        },
        seconds, milliseconds, totalSeconds, totalMilliseconds);
}

std::int32_t COM_KOV_CTRL_GetModuleOptimeInt(std::uint32_t address, std::uint32_t* seconds,
                                             std::uint16_t* milliseconds,
                                             std::uint32_t* totalSeconds,
                                             std::uint16_t* totalMilliseconds)
{
    return call_unit<"GetModuleOptimeInt">(
        address,
        [&](Instrument& instrument, unsigned unit) {
            split_duration(optime_us(instrument, unit), seconds, milliseconds);
            split_duration(total_optime_us(instrument, unit), totalSeconds, totalMilliseconds);
        },
        seconds, milliseconds, totalSeconds, totalMilliseconds);
}
