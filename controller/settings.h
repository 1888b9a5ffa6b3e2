/// The controller's settings: device enable, interlock enable masks, function of the slide switch
/// 'Fan'; its restart. The setting forms show what was sent, once the library has accepted it; they
/// read nothing back, and pass any value on as it is.
#pragma once

#include "frame/switches.h"

void enable_device(const Given&);
void disable_device(const Given&);
void show_enable_state(const Given&);

void set_hv_supply_interlock_mask(const Given&);
void show_hv_supply_interlock_mask(const Given&);

void set_heat_controller_interlock_mask(const Given&);
void show_heat_controller_interlock_mask(const Given&);

void set_fan_switch_function(const Given&);
void show_fan_switch_function(const Given&);

void restart_controller(const Given&);
