/// The HV-supplies: output, ramp, load and measurements.
#pragma once

#include "simulator/model/instrument.h"

namespace simulator
{

/// What a supply can do, as its hardware-type word says.
struct SupplyKind {
    double range; ///< V
    bool bipolar;
    bool positive;     ///< of a unipolar one
    double low_range;  ///< A
    double high_range; ///< A
};
[[nodiscard]] SupplyKind supply_kind(std::uint32_t hardware_type);

/// Moves a supply on by one step and takes the measurements that are due at its end.
void step_supply(Instrument& instrument, unsigned supply, double seconds, bool measure_voltage,
                 bool measure_current);

/// Switches the measurement ranges, which then take a while to settle; a bipolar supply turns its
/// output with the polarity.
void set_ranges(Instrument& instrument, unsigned supply, bool negative, bool high);

/// The pulse-width modulation that makes the output voltage: times in s, voltages in V.
struct PulseWidth {
    double period;
    double width;
    double phase_measured;
    double phase_set;
    double voltage_set;
    double voltage_measured;
};
[[nodiscard]] PulseWidth pulse_width(const Instrument& instrument, unsigned supply);

} // namespace simulator
