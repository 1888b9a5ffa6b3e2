/// The configuration record, 53 packed bytes with little-endian fields, as the entries of a
/// configuration file know it: one row for each key, in the order in which the file holds them.
/// Writer and reader share the rows. The bytes at 16, 28, 40 and 52 are reserved; no entry knows
/// them.
#pragma once

#include "devlib/COM-KOV-CTRL.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

enum class EntryKind : std::uint8_t {
    yes_no,          ///< a byte, "N" = 0, "Y" = anything else
    low_interlocks,  ///< bits 0..3, four letters
    high_interlocks, ///< bits 4..7, four letters
    fan_switch,      ///< bit 0 = override, bit 1 = fan on
    number,          ///< little-endian, unsigned
    target_voltage,  ///< the same, but signed; negative = no target
    voltage_step,    ///< a number
};

struct ConfigEntry {
    const char* key;
    EntryKind kind;
    std::uint8_t offset;
    std::uint8_t size = 1;       ///< in bytes
    double steps_per_unit = 1.0; ///< raw value of one volt, ampere, watt or degree
    double zero = 0.0;           ///< raw value of 0 in the file

    /// What an error in this entry is called. Kept: a wrong voltage or step of an HV-supply is
    /// reported as the key of the heater.
    [[nodiscard]] constexpr const char* reported_key() const
    {
        return kind == EntryKind::target_voltage || kind == EntryKind::voltage_step ? "HeaterEnable"
                                                                                    : key;
    }
};

namespace config_unit
{
inline constexpr double limit = 1e6 / 1024.0;        ///< steps of 1.024 mV or mA
inline constexpr double power = 1e12 / 1073741824.0; ///< steps of 2^30 x 10^-12 W
inline constexpr double milli = 1000.0;              ///< mV or mK
inline constexpr double zero_celsius_mk = 273150.0;  ///< 0 degrees Celsius in mK
} // namespace config_unit

// clang-format off
inline constexpr std::array config_entries = {
    ConfigEntry{"DeviceEnable",               EntryKind::yes_no,           0},
    ConfigEntry{"HvPsInterlockEnable",        EntryKind::low_interlocks,   1},
    ConfigEntry{"HeatControlInterlockEnable", EntryKind::high_interlocks,  1},
    ConfigEntry{"FanSwitchOverride",          EntryKind::fan_switch,       2},
    ConfigEntry{"HeaterLimitVolt",            EntryKind::number,           3, 2, config_unit::limit},
    ConfigEntry{"HeaterLimitAmp",             EntryKind::number,           5, 2, config_unit::limit},
    ConfigEntry{"HeaterLimitWatt",            EntryKind::number,           7, 4, config_unit::power},
    ConfigEntry{"HeaterTemperature",          EntryKind::number,          11, 4, config_unit::milli, config_unit::zero_celsius_mk},
    ConfigEntry{"HeaterEnable",               EntryKind::yes_no,          15},
    ConfigEntry{"HVPS1Voltage",               EntryKind::target_voltage,  17, 4, config_unit::milli},
    ConfigEntry{"HVPS1MaxVoltStep",           EntryKind::voltage_step,    21, 4, config_unit::milli},
    ConfigEntry{"HVPS1NegOut",                EntryKind::yes_no,          25},
    ConfigEntry{"HVPS1HighCurrRange",         EntryKind::yes_no,          26},
    ConfigEntry{"HVPS1Enable",                EntryKind::yes_no,          27},
    ConfigEntry{"HVPS2Voltage",               EntryKind::target_voltage,  29, 4, config_unit::milli},
    ConfigEntry{"HVPS2MaxVoltStep",           EntryKind::voltage_step,    33, 4, config_unit::milli},
    ConfigEntry{"HVPS2NegOut",                EntryKind::yes_no,          37},
    ConfigEntry{"HVPS2HighCurrRange",         EntryKind::yes_no,          38},
    ConfigEntry{"HVPS2Enable",                EntryKind::yes_no,          39},
    ConfigEntry{"HVPS3Voltage",               EntryKind::target_voltage,  41, 4, config_unit::milli},
    ConfigEntry{"HVPS3MaxVoltStep",           EntryKind::voltage_step,    45, 4, config_unit::milli},
    ConfigEntry{"HVPS3NegOut",                EntryKind::yes_no,          49},
    ConfigEntry{"HVPS3HighCurrRange",         EntryKind::yes_no,          50},
    ConfigEntry{"HVPS3Enable",                EntryKind::yes_no,          51},
};
// clang-format on

/// The entry's value as the file holds it, "Y" or "24.576".
[[nodiscard]] std::string entry_text(const ConfigEntry& entry, const ConfigRecord& record);

/// Sets the entry's field from the text in the file; false when it does not convert. The field's
/// bits must be 0 before. Only a text's first characters count: 99 of the letters of interlocks and
/// of the fan switch, 19 of the others.
[[nodiscard]] bool set_entry(const ConfigEntry& entry, std::string_view text, ConfigRecord& record);
