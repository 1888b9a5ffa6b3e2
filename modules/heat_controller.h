/// The commands of the heat-controller in slot 0.
#pragma once

#include "frame/switches.h"

// Targets and limits. A negative target means that this kind of control is off.
void show_target_temperature(const Given&);
void set_target_temperature(const Given&);
void show_target_output_voltage_of_heater(const Given&);
void show_target_heater_power(const Given&);
void show_heater_voltage_limit(const Given&);
void set_heater_voltage_limit(const Given&);
void show_heater_current_limit(const Given&);
void set_heater_current_limit(const Given&);
void show_heater_power_limit(const Given&);
void set_heater_power_limit(const Given&);

/// What the hardware allows.
void show_heater_hardware_limits(const Given&);

// As live displays.
void show_heater_monitoring(const Given&);
void show_heater_interlock_state(const Given&);
