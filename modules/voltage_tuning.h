/// Operating one HV-supply by keys: its target voltage in steps, its measurement ranges and its
/// activation, and a file of what it measures meanwhile.
#pragma once

#include "frame/switches.h"

void tune_voltage(const Given&);
