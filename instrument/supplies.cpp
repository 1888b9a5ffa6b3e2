#include "instrument/supplies.h"

Color deviation_color(double value, double nominal, double tolerance_percent)
{
    constexpr double guard = 1e-9; // per cent: 24.48 V is 24 V + 2 % for a reader, not for doubles
    if (nominal == 0.0)
        return Color::value;
    const double deviation = (value / nominal - 1.0) * 100.0;
    if (deviation > tolerance_percent + guard)
        return Color::above;
    return deviation < -tolerance_percent - guard ? Color::below : Color::value;
}

Color range_color(double value, double low, double high)
{
    if (value > high)
        return Color::above;
    return value < low ? Color::below : Color::value;
}
