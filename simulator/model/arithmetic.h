/// The little mathematics that the models need. The mathematics library would be one more shared
/// object to load at every start of a program, which takes a tenth of the whole start.
#pragma once

#include <cstdint>

namespace simulator
{

/// The nearest whole number, halves away from zero; for values below 2^63.
[[nodiscard]] constexpr std::int64_t nearest(double value)
{
    const auto whole = static_cast<std::int64_t>(value);
    const double rest = value - static_cast<double>(whole);
    return whole + (rest >= 0.5 ? 1 : rest <= -0.5 ? -1 : 0);
}

/// e to the power of -`value`, for what fades away: 0 and more.
[[nodiscard]] constexpr double faded(double value)
{
    if (value > 700)
        return 0;
    // The series is short for a small part of the value; each halving is a squaring of the result.
    int squarings = 0;
    while (value > 0.03) {
        value /= 2;
        ++squarings;
    }
    double sum = 1;
    constexpr int terms = 8;
    for (int term = terms; term > 0; --term)
        sum = 1 - value * sum / term;
    for (; squarings > 0; --squarings)
        sum *= sum;
    return sum;
}

/// 10 to the power of `exponent`.
[[nodiscard]] constexpr double power_of_ten(int exponent)
{
    double power = 1;
    for (; exponent > 0; --exponent)
        power *= 10;
    double divisor = 1;
    for (; exponent < 0; ++exponent)
        divisor *= 10;
    return power / divisor;
}

} // namespace simulator
