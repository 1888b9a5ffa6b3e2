/// What a module, the base unit or all of them are: product data, versions, types, times.
#pragma once

#include "frame/switches.h"

void show_module_identification(const Given&);
void show_module_product_number(const Given&);
void show_module_manufacturing_date(const Given&);
/// With the version of the FPGA, where there is one.
void show_module_hardware_version(const Given&);
void show_module_firmware_date(const Given&);
void show_module_firmware_version(const Given&);
void show_module_device_type(const Given&);
void show_module_hardware_type(const Given&);
void show_module_uptime(const Given&);
void show_module_operation_time(const Given&);
