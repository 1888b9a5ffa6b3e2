#include "simulator/model/measurements.h"

#include "simulator/model/noise.h"

namespace simulator
{

namespace
{

std::int64_t period_us(const Instrument& instrument, unsigned unit, Measurement kind)
{
    const Periods& periods = instrument.physical.periods;
    if (unit == controller)
        return kind == Measurement::controller_housekeeping ? periods.housekeeping
               : kind == Measurement::controller_fan        ? periods.fan
                                                            : 0;
    if (!works(instrument, unit))
        return 0;
    const bool is_supply = unit >= 1 && unit < slot_count;
    switch (kind) {
    case Measurement::monitoring:
        return unit == 0 ? periods.monitoring : 0;
    case Measurement::housekeeping:
        return periods.housekeeping;
    case Measurement::voltage:
        return is_supply ? periods.voltage : 0;
    case Measurement::current:
        return is_supply ? periods.current : 0;
    }
    return 0;
}

} // namespace

std::int64_t measurement_number(const Instrument& instrument, unsigned unit, Measurement kind)
{
    const std::int64_t period = period_us(instrument, unit, kind);
    // The first one is made at the origin, so a unit that starts has something to show at once.
    return period == 0 ? 0 : (instrument.now_us - instrument.origin_us) / period + 1;
}

bool take_measurement(Instrument& instrument, unsigned unit, Measurement kind)
{
    const std::int64_t number = measurement_number(instrument, unit, kind);
    std::int64_t& taken = instrument.taken[unit][static_cast<unsigned>(kind)];
    const bool is_new = number > taken;
    taken = number;
    return is_new;
}

std::uint8_t data_ready_flags(const Instrument& instrument, unsigned unit)
{
    unsigned flags = 0;
    for (unsigned kind = 0; kind < measurement_count; ++kind) {
        const std::int64_t unread =
            measurement_number(instrument, unit, static_cast<Measurement>(kind)) -
            instrument.taken[unit][kind];
        if (unread > 0)
            flags |= 1U << (2 * kind);
        if (unread > 1)
            flags |= 2U << (2 * kind);
    }
    return static_cast<std::uint8_t>(flags);
}

void restart_measurements(Instrument& instrument, unsigned unit)
{
    for (unsigned kind = 0; kind < measurement_count; ++kind)
        instrument.taken[unit][kind] =
            measurement_number(instrument, unit, static_cast<Measurement>(kind)) - 1;
}

ModuleReading read_housekeeping(Instrument& instrument, unsigned unit)
{
    const bool is_new = take_measurement(instrument, unit, Measurement::housekeeping);
    const std::int64_t number = measurement_number(instrument, unit, Measurement::housekeeping);
    Readings values = instrument.physical.units[unit].readings;
    if (main_supply(instrument) == 0)
        values.voltage24 = 0; // all modules are fed from there
    Noise channel = Noise::unit_housekeeping + unit * housekeeping_channels;
    const auto move = [&](double& value, double amplitude) {
        value = with_noise(instrument, value, amplitude, channel, number);
        channel = channel + 1;
    };
    move(values.voltage33, 0.005);
    move(values.voltage5, 0.01);
    move(values.voltage24, 0.05);
    move(values.voltage_minus22, 0.1);
    move(values.voltage18, 0.03);
    move(values.voltage_minus18, 0.03);
    move(values.voltage_vc, 0.003);
    move(values.analog_ground, 0.001);
    move(values.cpu_temperature, 0.2);
    move(values.psu_temperature, 0.2);
    return {is_new, values};
}

} // namespace simulator
