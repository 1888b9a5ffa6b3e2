/// What the modules tell of their own well-being: supply voltages, temperatures, CPU and LED.
#pragma once

#include "frame/switches.h"

/// Supply voltages and temperatures, one line a module.
void show_module_housekeeping(const Given&);

// As live displays.
void show_heat_controller_housekeeping(const Given&);
void show_hv_supply_housekeeping(const Given&);

void show_module_cpu_data(const Given&);
void show_module_led_data(const Given&);
