/// The supply voltages and temperatures inside the instrument: what they should be, how far they
/// may be off, and the colours that tell it.
#pragma once

#include "frame/terminal/colors.h"

/// Colour of a value by its deviation from the nominal value, (value / nominal - 1) x 100 %: above
/// the tolerance, below it, or good. Exactly the tolerance is good, a nominal of 0 always is. An
/// infinite value is out of tolerance; what is no number is neither above nor below, so it is
/// white.
[[nodiscard]] Color deviation_color(double value, double nominal, double tolerance_percent);

/// Colour of a value by the range that it should be in; the limits belong to the range. What is no
/// number is white.
[[nodiscard]] Color range_color(double value, double low, double high);

struct Supply {
    double nominal;   ///< volts
    double tolerance; ///< per cent of the nominal value

    [[nodiscard]] Color color(double volts) const
    {
        return deviation_color(volts, nominal, tolerance);
    }
};

namespace supply
{
inline constexpr Supply plus_24 = {24.0, 2.0};
inline constexpr Supply plus_5 = {5.0, 2.0};
inline constexpr Supply plus_3_3 = {3.3, 2.0};
inline constexpr Supply minus_22 = {-22.0, 5.0};
inline constexpr Supply plus_18 = {18.0, 2.0};
inline constexpr Supply minus_18 = {-18.0, 2.0};
inline constexpr Supply vc = {1.5, 1.0};
inline constexpr Supply analog_ground = {0.0, 1.0}; ///< never out of tolerance: its nominal is 0
} // namespace supply

/// Between these a CPU or a power supply is as warm as it should be, in degrees Celsius.
namespace good_temperature
{
inline constexpr double lowest = 10.0;
inline constexpr double highest = 40.0;
} // namespace good_temperature

/// Colour of such a temperature.
[[nodiscard]] inline Color temperature_color(double celsius)
{
    return range_color(celsius, good_temperature::lowest, good_temperature::highest);
}
