/// What the modules measure: their records, and reading them.
#pragma once

#include "frame/failure.h"

#include <cstdint>
#include <initializer_list>
#include <optional>

/// Bits of a module's data-ready byte: there is a new value. The next bit says that one was lost
/// before it was fetched. (The controller's byte is alike: controller_ready_bit.)
namespace ready_bit
{
inline constexpr int monitoring = 0;
inline constexpr int housekeeping = 2;
inline constexpr int output_voltage = 4;
inline constexpr int output_current = 6;
} // namespace ready_bit

[[nodiscard]] constexpr bool is_ready(std::uint8_t flags, int bit)
{
    return (flags >> bit & 1) != 0;
}

[[nodiscard]] constexpr bool has_overflowed(std::uint8_t flags, int bit)
{
    return (flags >> (bit + 1) & 1) != 0;
}

/// The flags as they would be if none of those values had been lost.
[[nodiscard]] constexpr std::uint8_t without_overflows(std::uint8_t flags,
                                                       std::initializer_list<int> bits)
{
    unsigned rest = flags;
    for (const int bit : bits)
        rest &= ~(2U << bit);
    return static_cast<std::uint8_t>(rest);
}

/// Supply voltages in V and temperatures in degrees Celsius. A module fills what it has: the base
/// unit 3.3 V and CPU, the heat-controller 5 V, 24 V and PSU as well, an HV-supply all but the PSU.
struct ModuleHousekeeping {
    std::uint8_t valid = 0;
    double plus_3_3 = 0, plus_5 = 0, plus_24 = 0;
    double minus_22 = 0, plus_18 = 0, minus_18 = 0, vc = 0, analog_ground = 0;
    double cpu = 0, psu = 0;
};

/// Reads the housekeeping record of the module at an address (0..3, base_unit) once.
[[nodiscard]] Failure attempt_housekeeping(unsigned address, ModuleHousekeeping& record);

/// The same by the HV-supplies' function, whatever the address.
[[nodiscard]] Failure attempt_hv_supply_housekeeping(unsigned address, ModuleHousekeeping& record);

/// One measurement of the heat-controller.
struct HeaterMonitoring {
    std::uint8_t ready = 0;    ///< the measurement is a new one
    double output_voltage = 0; ///< V, at the module
    double heater_voltage = 0; ///< V, at the heater
    double current = 0;        ///< A
    double temperature = 0;    ///< degrees Celsius

    [[nodiscard]] double output_power() const { return output_voltage * current; }
    /// Lost in the supply wires.
    [[nodiscard]] double wire_power() const { return (output_voltage - heater_voltage) * current; }
    [[nodiscard]] double heater_power() const { return heater_voltage * current; }
    /// In ohms; nothing when the current is too small to tell.
    [[nodiscard]] std::optional<double> heater_resistance() const;
};

/// Reads the heat-controller's monitoring record once.
[[nodiscard]] Failure attempt_monitoring(HeaterMonitoring& record);

/// What the heat-controller's hardware allows: V, A, W, degrees Celsius.
struct HeaterLimits {
    double voltage = 0, current = 0, power = 0, temperature = 0;
};

/// Reads them once.
[[nodiscard]] Failure attempt_hardware_limits(HeaterLimits& limits);

/// One measurement at the output of an HV-supply, in V or in A.
struct OutputMeasurement {
    std::uint8_t valid = 0; ///< the measurement is a new one
    double value = 0;
};

// Each reads one once.

[[nodiscard]] Failure attempt_output_voltage(unsigned address, OutputMeasurement& volts);
[[nodiscard]] Failure attempt_output_current(unsigned address, OutputMeasurement& amperes);
