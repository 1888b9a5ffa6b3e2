/// The commands of the HV-supplies in the slots 1 to 3.
#pragma once

#include "frame/switches.h"

void show_measurement_ranges(const Given&);
/// Shows the ranges, or sets them where both were given.
void show_or_set_measurement_ranges(const Given&);

// A negative target means that the output is off.
void show_target_voltage(const Given&);
void set_target_voltage(const Given&);

// As live displays.
void show_output(const Given&);
void show_output_data(const Given&);
