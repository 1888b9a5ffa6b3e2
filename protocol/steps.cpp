#include "protocol/steps.h"

#include "protocol/controller_steps.h"
#include "protocol/heater_steps.h"
#include "protocol/module_steps.h"
#include "protocol/supply_steps.h"

bool run_steps(Report& report, const ProductData& data)
{
    return run_controller_steps(report) && run_module_steps(report, data) &&
           enable_device_and_check(report) && run_heater_steps(report, data) &&
           run_supply_steps(report, data);
}
