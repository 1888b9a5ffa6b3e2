/// The values of the modules' records: how each is told, and in which colour.
#pragma once

#include "frame/text/format.h"
#include "instrument/module_readings.h"
#include "instrument/supplies.h"
#include "instrument/words.h"

#include <functional>
#include <optional>

/// A value of a record, and how it is told.
template <class Record>
struct Quantity {
    std::optional<double> (*value)(const Record& record); ///< none = there is no telling
    NumberFormat format;
    Color (*color)(double value) = [](double) { return Color::value; };

    /// The same with another unit.
    [[nodiscard]] constexpr Quantity in(const char* unit) const
    {
        Quantity changed = *this;
        changed.format.unit = unit;
        return changed;
    }
    /// The same in another width.
    [[nodiscard]] constexpr Quantity as_wide_as(int width) const
    {
        Quantity changed = *this;
        changed.format.width = width;
        return changed;
    }
};

/// A quantity under its label on a display.
template <class Record>
struct LabelledQuantity {
    const char* label;
    Quantity<Record> quantity;
};

/// A member of a record, or what a member function makes of it.
template <class Record, auto part>
[[nodiscard]] std::optional<double> part_of(const Record& record)
{
    return std::invoke(part, record);
}

/// The housekeeping of the modules.
namespace housekeeping
{

template <auto part, const Supply& nominal>
[[nodiscard]] constexpr Quantity<ModuleHousekeeping> voltage(int width, bool sign)
{
    return {.value = part_of<ModuleHousekeeping, part>,
            .format = {.width = width, .decimals = 3, .unit = "V", .sign = sign},
            .color = [](double volts) { return nominal.color(volts); }};
}

template <auto part>
[[nodiscard]] constexpr Quantity<ModuleHousekeeping> temperature()
{
    return {.value = part_of<ModuleHousekeeping, part>,
            .format = {.width = 6, .decimals = 1, .unit = DEGREES_C, .sign = true},
            .color = temperature_color};
}

using Record = ModuleHousekeeping;

inline constexpr auto plus_3_3 = voltage<&Record::plus_3_3, supply::plus_3_3>(6, false);
inline constexpr auto plus_5 = voltage<&Record::plus_5, supply::plus_5>(6, false);
inline constexpr auto plus_24 = voltage<&Record::plus_24, supply::plus_24>(7, false);
inline constexpr auto signed_3_3 = voltage<&Record::plus_3_3, supply::plus_3_3>(7, true);
inline constexpr auto signed_5 = voltage<&Record::plus_5, supply::plus_5>(7, true);
inline constexpr auto signed_24 = voltage<&Record::plus_24, supply::plus_24>(8, true);
inline constexpr auto minus_22 = voltage<&Record::minus_22, supply::minus_22>(8, true);
inline constexpr auto plus_18 = voltage<&Record::plus_18, supply::plus_18>(8, true);
inline constexpr auto minus_18 = voltage<&Record::minus_18, supply::minus_18>(8, true);
inline constexpr auto vc = voltage<&Record::vc, supply::vc>(7, true);
inline constexpr auto analog_ground =
    voltage<&Record::analog_ground, supply::analog_ground>(7, true);
inline constexpr auto cpu = temperature<&Record::cpu>();
inline constexpr auto psu = temperature<&Record::psu>();

} // namespace housekeeping

/// What the heat-controller measures.
namespace monitoring
{

template <auto part>
[[nodiscard]] constexpr Quantity<HeaterMonitoring> measured(int decimals, const char* unit)
{
    return {.value = part_of<HeaterMonitoring, part>,
            .format = {.width = 7, .decimals = decimals, .unit = unit}};
}

using Record = HeaterMonitoring;

inline constexpr auto output_voltage = measured<&Record::output_voltage>(3, "V");
inline constexpr auto heater_voltage = measured<&Record::heater_voltage>(3, "V");
inline constexpr auto current = measured<&Record::current>(3, "A");
inline constexpr Quantity<Record> temperature = {
    .value = part_of<Record, &Record::temperature>,
    .format = {.width = 8, .decimals = 2, .unit = DEGREES_C, .sign = true}};
inline constexpr auto output_power = measured<&Record::output_power>(2, "W");
inline constexpr auto wire_power = measured<&Record::wire_power>(2, "W");
inline constexpr auto heater_power = measured<&Record::heater_power>(2, "W");
inline constexpr auto resistance = measured<&Record::heater_resistance>(3, "Ohm");

} // namespace monitoring
