/// What the controller measures of itself. The capital forms run until Esc.
#pragma once

#include "frame/switches.h"

/// Uptime and operation time, current and total.
void show_uptime(const Given&);

/// Supply voltages and temperatures, coloured by their tolerances.
void show_housekeeping(const Given&);

void show_fan_data(const Given&);
void show_led_data(const Given&);

/// CPU load and clock, one reading a second; the single form, too, waits for a full second.
void show_cpu_data(const Given&);
