/// When measurements are made, and which of them were read: data-ready and overflow flags.
///
/// Each kind of measurement has its own rate. A reading takes the flag; a new measurement on top of
/// an unread one sets the overflow flag as well, until the next reading.
#pragma once

#include "simulator/model/instrument.h"

namespace simulator
{

/// Number of the last measurement of a unit (the controller included) since the instrument's
/// origin; 0 for a kind that the unit does not have.
[[nodiscard]] std::int64_t measurement_number(const Instrument& instrument, unsigned unit,
                                              Measurement kind);

/// Reads a measurement: true when it is a new one.
bool take_measurement(Instrument& instrument, unsigned unit, Measurement kind);

/// The flags of a unit, in pairs ready/overflow in the order of its kinds.
[[nodiscard]] std::uint8_t data_ready_flags(const Instrument& instrument, unsigned unit);

/// Starts a unit's measurements again: the next one is the only one unread.
void restart_measurements(Instrument& instrument, unsigned unit);

/// One reading of a unit's housekeeping, with what its kind has; takes the measurement.
struct ModuleReading {
    bool is_new;
    Readings values;
};
[[nodiscard]] ModuleReading read_housekeeping(Instrument& instrument, unsigned unit);

} // namespace simulator
