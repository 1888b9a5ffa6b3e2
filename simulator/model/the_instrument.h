/// The one instrument of this process, and its clock.
#pragma once

#include "simulator/model/instrument.h"

namespace simulator
{

/// As it last was. It is made when somebody asks for it at the present time.
[[nodiscard]] Instrument& the_instrument();

/// At the present time.
[[nodiscard]] Instrument& instrument_now();

/// Throws it away: a new one, switched on just now by the clock on the wall.
void make_the_instrument();

/// Sets its clock, which goes on from there.
void set_clock_us(std::int64_t now_us);

} // namespace simulator
