/// The displays of the controller's status words. The capital forms run until Esc, but for the
/// device state.
#pragma once

#include "frame/switches.h"

void show_overall_state(const Given&);

/// Never repeats, in either form.
void show_device_state(const Given&);

void show_voltage_state(const Given&);
void show_temperature_state(const Given&);
void show_fan_state(const Given&);

/// A failed reading is repeated once.
void show_interlock_state(const Given&);

void show_input_levels(const Given&);
void show_power_monitors(const Given&);
