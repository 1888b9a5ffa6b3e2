#include "simulator/model/supply.h"

#include "simulator/model/arithmetic.h"
#include "simulator/model/config_record.h"
#include "simulator/model/measurements.h"
#include "simulator/model/noise.h"
#include "simulator/model/status.h"

#include <algorithm>
#include <cmath>

namespace simulator
{

namespace
{

constexpr double settling_seconds = 0.5;
constexpr double discharge_seconds = 0.5;
constexpr double ramps_per_second = 10; ///< how often the output may move by the maximum step
constexpr double voltage_resolution = 0.001;
constexpr double pwm_period = 20e-6;
constexpr double widest_pulse = 0.45; ///< of the period, at the end of the range

SupplyKind kind_of(const Instrument& instrument, unsigned supply)
{
    return supply_kind(instrument.physical.units[supply + 1].identity.hardware_type);
}

bool negative_range(const Instrument& instrument, unsigned supply)
{
    return current_config(instrument)[field::negative(supply)] != 0;
}

bool high_range(const Instrument& instrument, unsigned supply)
{
    return current_config(instrument)[field::high_range(supply)] != 0;
}

/// Where the output has to go, with its sign.
double goal(const Instrument& instrument, unsigned supply, const SupplyKind& kind)
{
    const double target = std::min(supply_target(current_config(instrument), supply), kind.range);
    const bool negative = kind.bipolar ? negative_range(instrument, supply) : !kind.positive;
    return negative ? -target : target;
}

/// What the voltage measurement makes of an output: a range sees only its own polarity.
double seen_voltage(double output, bool negative)
{
    return negative ? std::min(output, 0.0) : std::max(output, 0.0);
}

void ramp(Instrument& instrument, unsigned supply, double seconds)
{
    Supply& moved = instrument.supplies[supply];
    const SupplyKind kind = kind_of(instrument, supply);
    const double step = supply_max_step(current_config(instrument), supply) * ramps_per_second;
    const double pace = (step > 0 ? std::min(step, kind.range) : kind.range) * seconds;
    moved.set += std::clamp(goal(instrument, supply, kind) - moved.set, -pace, pace);
    moved.output = moved.set;
}

void discharge(Supply& supply, double seconds)
{
    supply.output *= faded(seconds / discharge_seconds);
    if (std::abs(supply.output) < voltage_resolution)
        supply.output = 0;
    supply.set = supply.output; // where the next ramp starts
}

double rounded(double value, double resolution)
{
    return static_cast<double>(nearest(value / resolution)) * resolution;
}

void measure_current(Instrument& instrument, unsigned supply)
{
    Supply& measured = instrument.supplies[supply];
    const SupplyModel& model = instrument.physical.supplies[supply];
    const SupplyKind kind = kind_of(instrument, supply);
    const double range = high_range(instrument, supply) ? kind.high_range : kind.low_range;
    const double offset = instrument.physical.noise ? range * 20e-6 : 0.0;
    const double mean = measured.output / model.load + measured.current_error + offset;
    const double value =
        with_noise(instrument, mean, range * 5e-6, Noise::supply_current + supply,
                   measurement_number(instrument, supply + 1, Measurement::current));
    measured.current_sample =
        model.forced_current.value_or(rounded(std::clamp(value, -range, range), range * 1e-6));
}

void measure_voltage(Instrument& instrument, unsigned supply)
{
    Supply& measured = instrument.supplies[supply];
    const double mean =
        seen_voltage(measured.output, negative_range(instrument, supply)) + measured.voltage_error;
    const double value =
        with_noise(instrument, mean, 0.02, Noise::supply_voltage + supply,
                   measurement_number(instrument, supply + 1, Measurement::voltage));
    measured.voltage_sample = instrument.physical.supplies[supply].forced_voltage.value_or(
        rounded(value, voltage_resolution));
}

} // namespace

SupplyKind supply_kind(std::uint32_t hardware_type)
{
    const auto current_range = [&](unsigned place) {
        return power_of_ten(1 - static_cast<int>(hardware_type >> place & 0xF));
    };
    return {static_cast<double>(hardware_type & 0x3FFF), (hardware_type >> 26 & 3) != 0,
            (hardware_type >> 30 & 3) != 0, current_range(18), current_range(22)};
}

void step_supply(Instrument& instrument, unsigned supply, double seconds, bool voltage_due,
                 bool current_due)
{
    Supply& moved = instrument.supplies[supply];
    if (moved.controlling)
        ramp(instrument, supply, seconds);
    else if (moved.output != 0)
        discharge(moved, seconds);
    if (moved.voltage_error != 0 || moved.current_error != 0) {
        const double settled = faded(seconds / settling_seconds);
        moved.voltage_error *= settled;
        moved.current_error *= settled;
        if (std::abs(moved.voltage_error) < voltage_resolution / 10)
            moved.voltage_error = 0;
        if (std::abs(moved.current_error) < 1e-15)
            moved.current_error = 0;
    }
    if (voltage_due)
        measure_voltage(instrument, supply);
    if (current_due)
        measure_current(instrument, supply);
}

void set_ranges(Instrument& instrument, unsigned supply, bool negative, bool high)
{
    Supply& switched = instrument.supplies[supply];
    const ConfigBytes config = current_config(instrument);
    if (negative != negative_range(instrument, supply))
        switched.voltage_error +=
            seen_voltage(switched.output, !negative) - seen_voltage(switched.output, negative);
    config[field::negative(supply)] = negative;
    const SupplyKind kind = kind_of(instrument, supply);
    if (high != high_range(instrument, supply))
        switched.current_error = 0.2 * (high ? kind.high_range : kind.low_range);
    config[field::high_range(supply)] = high;
    settings_changed(instrument);
}

PulseWidth pulse_width(const Instrument& instrument, unsigned supply)
{
    const Supply& shown = instrument.supplies[supply];
    const SupplyKind kind = kind_of(instrument, supply);
    const double set = shown.controlling ? shown.set : 0.0;
    const double share = kind.range > 0 ? std::min(std::abs(set) / kind.range, 1.0) : 0.0;
    const double width = pwm_period * widest_pulse * share;
    const double phase = (pwm_period - width) / 2;
    const std::int64_t sample = measurement_number(instrument, supply + 1, Measurement::current);
    return {pwm_period,
            width,
            with_noise(instrument, phase, 5e-9, Noise::pulse_phase + supply, sample),
            phase,
            set,
            with_noise(instrument, shown.output, 0.05, Noise::pulse_voltage + supply, sample)};
}

} // namespace simulator
