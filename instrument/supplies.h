/// The supply voltages inside the instrument: what they should be, and how far they may be off.
#pragma once

#include "frame/format.h"
#include "frame/terminal/colors.h"

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

/// Colour of the temperature of a CPU or a power supply, in degrees Celsius.
[[nodiscard]] inline Color temperature_color(double celsius)
{
    constexpr double coldest_good = 10.0;
    constexpr double hottest_good = 40.0;
    return range_color(celsius, coldest_good, hottest_good);
}
