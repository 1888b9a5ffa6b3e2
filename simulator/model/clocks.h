/// The clocks of the units and of the controller: for how long they have been up, and in operation.
#pragma once

#include "simulator/model/instrument.h"

namespace simulator
{

/// Starts a clock again; what it showed counts to its total.
void start_clock_again(Instrument& instrument, unsigned clock);

/// Goes in operation, or out of it.
void set_operating(Instrument& instrument, unsigned clock, bool operating);

/// Moves the last start back or forth.
void set_uptime(Instrument& instrument, unsigned clock, std::int64_t microseconds);

/// Since the last start / summed over the unit's life, in microseconds.
[[nodiscard]] std::int64_t uptime_us(const Instrument& instrument, unsigned clock);
[[nodiscard]] std::int64_t total_uptime_us(const Instrument& instrument, unsigned clock);
[[nodiscard]] std::int64_t optime_us(const Instrument& instrument, unsigned clock);
[[nodiscard]] std::int64_t total_optime_us(const Instrument& instrument, unsigned clock);

} // namespace simulator
