/// Recording what the heat-controller measures.
#pragma once

#include "frame/switches.h"

/// Writes the heat-controller's housekeeping and monitoring data into the file `text`, until Esc,
/// while a live display shows the latest. Capital and small form do the same.
void record_heat_controller(const Given&);
