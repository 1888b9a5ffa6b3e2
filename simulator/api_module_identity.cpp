/// Identification and clocks of the modules and the base unit.
#include "simulator/call_unit.h"

using namespace simulator;

namespace
{

const Identity& identity(const Instrument& instrument, unsigned unit)
{
    return instrument.physical.units[unit].identity;
}

} // namespace

std::int32_t COM_KOV_CTRL_GetModuleProductID(std::uint32_t address, char* identification)
{
    return call_unit<"GetModuleProductID">(
        address,
        [&](Instrument& instrument, unsigned unit) {
            copy_text(identification, 84, identity(instrument, unit).product_id);
        },
        identification);
}

std::int32_t COM_KOV_CTRL_GetModuleProductNo(std::uint32_t address, std::int32_t* number)
{
    return call_unit<"GetModuleProductNo">(
        address,
        [&](Instrument& instrument, unsigned unit) {
            *number = identity(instrument, unit).product_number;
        },
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
    return call_unit<"GetModuleHwVersion">(
        address,
        [&](Instrument& instrument, unsigned unit) {
            *version = identity(instrument, unit).hardware_version;
        },
        version);
}

std::int32_t COM_KOV_CTRL_GetModuleFwVersion(std::uint32_t address, std::uint16_t* version)
{
    return call_unit<"GetModuleFwVersion">(
        address,
        [&](Instrument& instrument, unsigned unit) {
            *version = identity(instrument, unit).firmware_version;
        },
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
    return call_unit<"GetModuleDevType">(
        address,
        [&](Instrument& instrument, unsigned unit) {
            *type = identity(instrument, unit).device_type;
        },
        type);
}

std::int32_t COM_KOV_CTRL_GetModuleHwType(std::uint32_t address, std::uint32_t* type)
{
    return call_unit<"GetModuleHwType">(
        address,
        [&](Instrument& instrument, unsigned unit) {
            *type = identity(instrument, unit).hardware_type;
        },
        type);
}

std::int32_t COM_KOV_CTRL_GetModuleUptimeInt(std::uint32_t address, std::uint32_t* seconds,
                                             std::uint16_t* milliseconds,
                                             std::uint32_t* totalSeconds,
                                             std::uint16_t* totalMilliseconds)
{
    return call_unit<"GetModuleUptimeInt">(
        address,
        [&](Instrument& instrument, unsigned unit) {
            const Duration now = duration(uptime_us(instrument, unit));
            const Duration total = duration(total_uptime_us(instrument, unit));
            *seconds = now.seconds;
            *milliseconds = now.milliseconds;
            *totalSeconds = total.seconds;
            *totalMilliseconds = total.milliseconds;
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
            const Duration now = duration(optime_us(instrument, unit));
            const Duration total = duration(total_optime_us(instrument, unit));
            *seconds = now.seconds;
            *milliseconds = now.milliseconds;
            *totalSeconds = total.seconds;
            *totalMilliseconds = total.milliseconds;
        },
        seconds, milliseconds, totalSeconds, totalMilliseconds);
}
