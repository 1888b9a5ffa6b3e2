/// How the instrument starts and moves as time passes.
#pragma once

#include "simulator/model/instrument.h"

namespace simulator
{

/// Thermal and electrical models move in steps of this length.
inline constexpr std::int64_t step_us = 10'000;

/// A new instrument, switched on at that time, with the scenario-less physical world.
void make_new(Instrument& instrument, std::int64_t now_us);

/// Moves on to that time; never back.
void advance(Instrument& instrument, std::int64_t now_us);

/// Starts the controller (with all units) or one unit again.
void restart(Instrument& instrument);
void restart_unit(Instrument& instrument, unsigned unit);

} // namespace simulator
