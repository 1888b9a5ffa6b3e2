/// How long the steps of the acceptance test wait and measure.
#pragma once

#include <cstddef>
#include <cstdint>

/// What follows a switch before the next measurement, in ms.
namespace settling_ms
{
inline constexpr std::int64_t enabling = 1'000;
inline constexpr std::int64_t ranges = 10'000;
inline constexpr std::int64_t heater = 10'000;
inline constexpr std::int64_t target = 20'000;
} // namespace settling_ms

/// A series of measurements: how many, and how often they come as a rule.
struct Series {
    std::size_t count;
    std::int64_t period_ms;

    [[nodiscard]] constexpr std::int64_t expected_ms() const
    {
        return static_cast<std::int64_t>(count) * period_ms;
    }
};

namespace series
{
inline constexpr Series cpu = {10, 1'000};
inline constexpr Series housekeeping = {20, 1'000};
inline constexpr Series fan = {10, 1'000};
inline constexpr Series monitoring = {100, 100};
inline constexpr Series voltage = {20, 200};
inline constexpr Series current = {100, 100};
} // namespace series

/// How long the parts of the steps take as a rule.
namespace expected_ms
{
inline constexpr std::int64_t controller = 2 * settling_ms::enabling + series::cpu.expected_ms() +
                                           series::housekeeping.expected_ms() +
                                           series::fan.expected_ms();
/// Of a module or the base unit, before anything of its kind.
inline constexpr std::int64_t unit = series::cpu.expected_ms() + series::housekeeping.expected_ms();
inline constexpr std::int64_t idle_heater = unit + series::monitoring.expected_ms();
inline constexpr std::int64_t idle_supply = unit + 3 * settling_ms::ranges +
                                            2 * series::current.expected_ms() +
                                            2 * series::voltage.expected_ms();
inline constexpr std::int64_t heater = 4 * (settling_ms::heater + series::monitoring.expected_ms());

/// Of a supply with that many targets for each polarity.
[[nodiscard]] constexpr std::int64_t supply(unsigned targets)
{
    constexpr std::int64_t target = settling_ms::target + series::current.expected_ms();
    return 2 * (settling_ms::ranges + targets * target);
}
} // namespace expected_ms

/// The targets of a supply: whole volts from a tenth of its range on, as many as fit into it. A
/// range that is no multiple of ten has more than ten, or ends below its top; one below ten has
/// none.
struct TargetSteps {
    unsigned step, count;

    explicit constexpr TargetSteps(unsigned range)
        : step{range / 10}, count{step > 0 ? range / step : 0}
    {
    }
};
