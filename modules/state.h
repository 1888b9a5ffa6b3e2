/// The commands on the state of modules and base unit, and on activation.
#pragma once

#include "frame/switches.h"

/// The state of the module at an address; of the base unit as show_base_unit_state() does it.
void show_module_state(const Given&);
void show_base_unit_state(const Given&);

void set_module_activation(const Given&);
void show_module_activation(const Given&);
