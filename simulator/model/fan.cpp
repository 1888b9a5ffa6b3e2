#include "simulator/model/fan.h"

#include "simulator/model/measurements.h"
#include "simulator/model/noise.h"

#include <algorithm>

namespace simulator
{

namespace
{

std::uint16_t speed(double rpm)
{
    return static_cast<std::uint16_t>(rpm > 0 ? std::min(rpm + 0.5, 65535.0) : 0.0);
}

} // namespace

std::uint8_t read_fan_word(Instrument& instrument)
{
    const Fan& fan = instrument.physical.fan;
    unsigned word = 0;
    word |= fan.failed ? 0U : 0x01U;
    word |= fan.switched_on ? 0x02U : 0U;
    word |= instrument.last_fan_switch ? 0x04U : 0U;
    word |= instrument.status.fan_enabled ? 0x08U : 0U;
    instrument.last_fan_switch = fan.switched_on;
    return instrument.physical.forced_fan_state.value_or(static_cast<std::uint8_t>(word));
}

FanReading fan_reading(const Instrument& instrument)
{
    constexpr double slowest = 1500;
    constexpr double fastest = 4500;
    constexpr double rpm_per_degree = 100;
    const Physical& physical = instrument.physical;
    const double warmest =
        std::max(physical.readings.cpu_temperature, physical.readings.psu_temperature);
    // A temperature that is no number gives the slowest speed, too.
    const double wanted =
        std::min(fastest, std::max(slowest, slowest + (warmest - 25) * rpm_per_degree));
    const double set = physical.fan.forced_set.value_or(instrument.status.fan_enabled ? wanted : 0);
    const double runs = physical.fan.failed ? 0 : set;
    const std::int64_t sample =
        measurement_number(instrument, controller, Measurement::controller_fan);
    const double measured = physical.fan.forced_speed.value_or(
        runs > 0 ? with_noise(instrument, runs, 20, Noise::fan_speed, sample) : 0);
    return {speed(set), speed(measured),
            static_cast<float>(physical.fan.forced_pwm.value_or(set / fastest))};
}

} // namespace simulator
