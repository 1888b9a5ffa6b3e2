/// What moves at random around its mean value.
#pragma once

#include "simulator/model/instrument.h"

namespace simulator
{

/// Each moves independently of the others. Of what several units or supplies have, this is the
/// first one's; those of a unit's housekeeping follow one another.
enum class Noise : unsigned {
    controller_voltage24 = 1,
    controller_voltage5,
    controller_voltage33,
    controller_cpu_temperature,
    controller_psu_temperature,
    controller_cpu_load,
    fan_speed = 8,
    unit_cpu_load = 16,
    heater_output_voltage = 56,
    heater_voltage,
    heater_current,
    heater_temperature,
    supply_current = 64,
    supply_voltage = 72,
    pulse_phase = 80,
    pulse_voltage = 84,
    unit_housekeeping = 128,
};

/// The channel that many places behind.
[[nodiscard]] constexpr Noise operator+(Noise channel, unsigned places)
{
    return static_cast<Noise>(static_cast<unsigned>(channel) + places);
}

/// How many channels a unit's housekeeping has.
inline constexpr unsigned housekeeping_channels = 16;

/// A mean value moved by up to `amplitude`, at random but the same for the same sample.
[[nodiscard]] double with_noise(const Instrument& instrument, double mean, double amplitude,
                                Noise channel, std::int64_t sample);

} // namespace simulator
