/// The fields of a configuration record: 53 packed bytes, little-endian.
#pragma once

#include "simulator/model/memory.h"

#include <cstdint>
#include <span>

namespace simulator
{

using ConfigBytes = std::span<std::uint8_t, config_size>;
using ConstConfigBytes = std::span<const std::uint8_t, config_size>;

/// Places of the fields.
namespace field
{
inline constexpr std::size_t enable = 0;
inline constexpr std::size_t interlock_masks = 1; ///< bits 0-3 HV-supplies, 4-7 heat-controller
inline constexpr std::size_t fan_override = 2;    ///< bit 0 override, bit 1 fan on
inline constexpr std::size_t voltage_limit = 3;   ///< 16 bits
inline constexpr std::size_t current_limit = 5;   ///< 16 bits
inline constexpr std::size_t power_limit = 7;     ///< 32 bits
inline constexpr std::size_t temperature = 11;    ///< 32 bits
inline constexpr std::size_t heater_active = 15;

/// Of HV-supply n = 0..2.
constexpr std::size_t target(unsigned supply)
{
    return 17 + 12 * supply;
} ///< 32 bits, signed
constexpr std::size_t max_step(unsigned supply)
{
    return 21 + 12 * supply;
} ///< 32 bits
constexpr std::size_t negative(unsigned supply)
{
    return 25 + 12 * supply;
}
constexpr std::size_t high_range(unsigned supply)
{
    return 26 + 12 * supply;
}
constexpr std::size_t supply_active(unsigned supply)
{
    return 27 + 12 * supply;
}
} // namespace field

/// Units of the raw values.
inline constexpr double volt_unit = 1024e-6;        ///< heater voltage limit, V
inline constexpr double ampere_unit = 1024e-6;      ///< heater current limit, A
inline constexpr double watt_unit = 1073741824e-12; ///< heater power limit, W
inline constexpr double zero_celsius_mk = 273150;   ///< heater temperature, mK
inline constexpr double millivolt = 1e-3;           ///< HV-supplies, V

/// Reads or writes an unsigned field of `bytes` bytes.
[[nodiscard]] inline std::uint32_t get_field(ConstConfigBytes config, std::size_t place,
                                             std::size_t bytes)
{
    std::uint32_t value = 0;
    for (std::size_t i = bytes; i-- > 0;)
        value = value << 8 | config[place + i];
    return value;
}

inline void put_field(ConfigBytes config, std::size_t place, std::size_t bytes, std::uint32_t value)
{
    for (std::size_t i = 0; i < bytes; ++i)
        config[place + i] = static_cast<std::uint8_t>(value >> (8 * i));
}

/// Settings in their units, as they stand in the record.
[[nodiscard]] inline double heater_voltage_limit(ConstConfigBytes config)
{
    return get_field(config, field::voltage_limit, 2) * volt_unit;
}
[[nodiscard]] inline double heater_current_limit(ConstConfigBytes config)
{
    return get_field(config, field::current_limit, 2) * ampere_unit;
}
[[nodiscard]] inline double heater_power_limit(ConstConfigBytes config)
{
    return get_field(config, field::power_limit, 4) * watt_unit;
}
/// Degrees Celsius; negative = off.
[[nodiscard]] inline double heater_target(ConstConfigBytes config)
{
    return (get_field(config, field::temperature, 4) - zero_celsius_mk) * 0.001;
}
/// Volt without sign; negative = off.
[[nodiscard]] inline double supply_target(ConstConfigBytes config, unsigned supply)
{
    return static_cast<std::int32_t>(get_field(config, field::target(supply), 4)) * millivolt;
}
[[nodiscard]] inline double supply_max_step(ConstConfigBytes config, unsigned supply)
{
    return get_field(config, field::max_step(supply), 4) * millivolt;
}

/// The raw value of a setting, rounded and held within 0..highest. NaN becomes 0.
[[nodiscard]] constexpr std::uint32_t raw_value(double value, double unit, std::uint32_t highest)
{
    const double raw = value / unit + 0.5;
    if (!(raw > 0))
        return 0;
    return raw < highest ? static_cast<std::uint32_t>(raw) : highest;
}

} // namespace simulator
