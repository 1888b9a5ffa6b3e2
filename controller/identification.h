/// The controller's identification: one value a command, one line a value.
#pragma once

#include "frame/switches.h"

/// All of the following, in their usual order.
void show_product_data(const Given&);

void show_product_identification(const Given&);
void show_product_number(const Given&);
void show_manufacturing_date(const Given&);
void show_firmware_date(const Given&);
void show_firmware_version(const Given&);
void show_hardware_version(const Given&);
void show_device_type(const Given&);
void show_hardware_type(const Given&);
