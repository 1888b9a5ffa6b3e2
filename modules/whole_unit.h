/// All that a unit tells about itself, one command after the other.
#pragma once

#include "frame/switches.h"

void show_base_unit_product_data(const Given&);
void show_heat_controller_product_data(const Given&);
