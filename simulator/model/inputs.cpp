/// Inputs with latched bits, the fan, the LEDs: what status.h reads.
#include "simulator/model/measurements.h"
#include "simulator/model/status.h"

#include <algorithm>

namespace simulator
{

namespace
{

constexpr unsigned heater_inputs = 1U << heater1 | 1U << heater2;

/// Inputs that are closed just now; a noisy one is, but was not all the time. An empty slot has no
/// closed inputs.
unsigned closed_now(const Instrument& instrument)
{
    unsigned closed = 0;
    for (unsigned input = 0; input < input_count; ++input)
        closed |= instrument.physical.inputs[input] != Contact::open ? 1U << input : 0U;
    return works(instrument, 0) ? closed : closed & ~heater_inputs;
}

/// The latched levels of some inputs, which latch anew.
unsigned take_latched(Instrument& instrument, unsigned inputs)
{
    const unsigned now = closed_now(instrument);
    const unsigned latched = now & instrument.last_inputs & inputs;
    unsigned next = now;
    for (unsigned input = 0; input < input_count; ++input)
        if (instrument.physical.inputs[input] == Contact::noisy)
            next &= ~(1U << input);
    instrument.last_inputs =
        static_cast<std::uint8_t>((instrument.last_inputs & ~inputs) | (next & inputs));
    return latched;
}

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

std::uint16_t read_interlock_word(Instrument& instrument)
{
    const unsigned now = closed_now(instrument);
    const unsigned latched = take_latched(instrument, 0x0F);
    unsigned word = instrument.status.interlock_results;
    word |= (now & 0x03U) << 8;
    word |= (latched & 0x03U) << 10;
    word |= (now & 0x0CU) << 10;
    word |= (latched & 0x0CU) << 12;
    return instrument.physical.forced_interlock_state.value_or(static_cast<std::uint16_t>(word));
}

std::uint8_t read_heater_interlocks(Instrument& instrument)
{
    const unsigned now = closed_now(instrument) & heater_inputs;
    const unsigned latched = take_latched(instrument, heater_inputs);
    return static_cast<std::uint8_t>(now | latched << 2);
}

std::uint8_t input_level(const Instrument& instrument, Input input)
{
    return (closed_now(instrument) >> input & 1U) != 0;
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
    const std::int64_t sample = measurement_number(instrument, controller, controller_fan);
    const double measured = physical.fan.forced_speed.value_or(
        runs > 0 ? with_noise(instrument, runs, 20, 8, sample) : 0);
    return {speed(set), speed(measured),
            static_cast<float>(physical.fan.forced_pwm.value_or(set / fastest))};
}

void show_led(std::uint8_t led, std::uint8_t* red, std::uint8_t* green, std::uint8_t* blue)
{
    *red = led >> 2 & 1;
    *green = led >> 1 & 1;
    *blue = led & 1;
}

} // namespace simulator
