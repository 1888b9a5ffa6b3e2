#include "modules/whole_unit.h"

#include "frame/platform/platform.h"
#include "instrument/addresses.h"
#include "modules/heat_controller.h"
#include "modules/housekeeping.h"
#include "modules/identification.h"
#include "modules/state.h"

#include <span>

namespace
{

constexpr Routine base_unit_routines[] = {
    show_module_identification,   show_module_product_number, show_module_manufacturing_date,
    show_module_hardware_version, show_module_firmware_date,  show_module_firmware_version,
    show_module_device_type,      show_module_hardware_type,  show_module_uptime,
    show_module_operation_time,   show_module_housekeeping,   show_module_cpu_data,
    show_base_unit_state,
};

constexpr Routine heat_controller_routines[] = {
    show_module_identification,
    show_module_product_number,
    show_module_manufacturing_date,
    show_module_hardware_version,
    show_module_firmware_date,
    show_module_firmware_version,
    show_module_device_type,
    show_module_hardware_type,
    show_module_uptime,
    show_module_operation_time,
    show_module_housekeeping,
    show_module_cpu_data,
    show_module_led_data,
    show_module_state,
    show_module_activation,
    show_target_output_voltage_of_heater,
    show_target_heater_power,
    show_heater_hardware_limits,
    show_heater_voltage_limit,
    show_heater_current_limit,
    show_heater_power_limit,
    show_target_temperature,
    show_heater_monitoring,
    show_heater_interlock_state,
};

/// Each display is read once, whatever the switch's case; one that fails does not keep the next
/// from its turn.
void run_all(std::span<const Routine> routines, unsigned address)
{
    Given given;
    given.address = address;
    for (const Routine routine : routines) {
        if (platform::stop_signal() != 0)
            return;
        routine(given);
    }
}

} // namespace

void show_base_unit_product_data(const Given&)
{
    run_all(base_unit_routines, base_unit);
}

void show_heat_controller_product_data(const Given&)
{
    run_all(heat_controller_routines, heat_controller);
}
