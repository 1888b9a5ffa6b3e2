/// The heat-controller's heater: a resistance that warms a body, and the controller that drives it.
#pragma once

#include "simulator/model/instrument.h"

namespace simulator
{

/// Moves the heater on by one step; `measure` takes a measurement at its end.
void step_heater(Instrument& instrument, double seconds, bool measure);

} // namespace simulator
