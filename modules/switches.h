/// The switches of the module commands: plug-in modules in general, the base unit, the
/// heat-controller and the HV-supplies.
#pragma once

#include "frame/switches.h"
#include "modules/addressing.h"
#include "modules/heat_controller.h"
#include "modules/housekeeping.h"
#include "modules/hv_supply.h"
#include "modules/identification.h"
#include "modules/maintenance.h"
#include "modules/state.h"
#include "modules/voltage_tuning.h"
#include "modules/whole_unit.h"

// clang-format off
inline constexpr Switch module_switches[] = {
    {"M",  Form::lower,   Attached::nothing, Next::nothing, Session::wanted, list_modules},
    {"M",  Form::capital, Attached::nothing, Next::nothing, Session::wanted, check_modules},
    {"MP", Form::either,  Attached::nothing, Next::nothing, Session::wanted, update_presence},
    {"MR", Form::either,  Attached::nothing, Next::nothing, Session::wanted, rescan_all_modules},
    {"M#", Form::either,  Attached::address, Next::nothing, Session::wanted, restart_module},
    {"MG", Form::either,  Attached::address, Next::nothing, Session::wanted, rescan_module},
    {"MZ", Form::lower,   Attached::address, Next::nothing, Session::wanted, show_module_buffer_state},
    {"MZ", Form::capital, Attached::address, Next::nothing, Session::wanted, purge_module},
    {"MS", Form::either,  Attached::address, Next::nothing, Session::wanted, show_module_state},
    {"MA", Form::capital, Attached::address, Next::yes_no, Session::required, set_module_activation},
    {"MA", Form::lower,   Attached::address, Next::nothing, Session::wanted, show_module_activation},
    {"MI", Form::either,  Attached::address, Next::nothing, Session::wanted, show_module_identification},
    {"MN", Form::either,  Attached::address, Next::nothing, Session::wanted, show_module_product_number},
    {"MM", Form::either,  Attached::address, Next::nothing, Session::wanted, show_module_manufacturing_date},
    {"MH", Form::either,  Attached::address, Next::nothing, Session::wanted, show_module_hardware_version},
    {"MD", Form::either,  Attached::address, Next::nothing, Session::wanted, show_module_firmware_date},
    {"MF", Form::either,  Attached::address, Next::nothing, Session::wanted, show_module_firmware_version},
    {"ME", Form::either,  Attached::address, Next::nothing, Session::wanted, show_module_device_type},
    {"MT", Form::either,  Attached::address, Next::nothing, Session::wanted, show_module_hardware_type},
    {"MU", Form::either,  Attached::address, Next::nothing, Session::wanted, show_module_uptime},
    {"MO", Form::either,  Attached::address, Next::nothing, Session::wanted, show_module_operation_time},
    {"MK", Form::either,  Attached::address, Next::nothing, Session::wanted, show_module_housekeeping},
    {"MC", Form::either,  Attached::address, Next::nothing, Session::wanted, show_module_cpu_data},
    {"ML", Form::either,  Attached::address, Next::nothing, Session::wanted, show_module_led_data},
    {"B",  Form::either,  Attached::nothing, Next::nothing, Session::wanted, show_base_unit_product_data},
    {"BS", Form::either,  Attached::nothing, Next::nothing, Session::wanted, show_base_unit_state},
    {"BA", Form::capital, Attached::nothing, Next::yes_no, Session::required, of_base_unit<set_module_activation>},
    {"BA", Form::lower,   Attached::nothing, Next::nothing, Session::wanted, of_base_unit<show_module_activation>},
    {"BI", Form::either,  Attached::nothing, Next::nothing, Session::wanted, of_base_unit<show_module_identification>},
    {"BN", Form::either,  Attached::nothing, Next::nothing, Session::wanted, of_base_unit<show_module_product_number>},
    {"BM", Form::either,  Attached::nothing, Next::nothing, Session::wanted, of_base_unit<show_module_manufacturing_date>},
    {"BH", Form::either,  Attached::nothing, Next::nothing, Session::wanted, of_base_unit<show_module_hardware_version>},
    {"BD", Form::either,  Attached::nothing, Next::nothing, Session::wanted, of_base_unit<show_module_firmware_date>},
    {"BF", Form::either,  Attached::nothing, Next::nothing, Session::wanted, of_base_unit<show_module_firmware_version>},
    {"BE", Form::either,  Attached::nothing, Next::nothing, Session::wanted, of_base_unit<show_module_device_type>},
    {"BT", Form::either,  Attached::nothing, Next::nothing, Session::wanted, of_base_unit<show_module_hardware_type>},
    {"BU", Form::either,  Attached::nothing, Next::nothing, Session::wanted, of_base_unit<show_module_uptime>},
    {"BO", Form::either,  Attached::nothing, Next::nothing, Session::wanted, of_base_unit<show_module_operation_time>},
    {"BK", Form::either,  Attached::nothing, Next::nothing, Session::wanted, of_base_unit<show_module_housekeeping>},
    {"BC", Form::either,  Attached::nothing, Next::nothing, Session::wanted, of_base_unit<show_module_cpu_data>},
    {"B#", Form::either,  Attached::nothing, Next::nothing, Session::wanted, of_base_unit<restart_module>},
    {"BG", Form::either,  Attached::nothing, Next::nothing, Session::wanted, of_base_unit<rescan_module>},
    {"BZ", Form::lower,   Attached::nothing, Next::nothing, Session::wanted, of_base_unit<show_module_buffer_state>},
    {"BZ", Form::capital, Attached::nothing, Next::nothing, Session::wanted, of_base_unit<purge_module>},
    {"H",  Form::either,  Attached::nothing, Next::nothing, Session::wanted, show_heat_controller_product_data},
    {"HT", Form::capital, Attached::real, Next::nothing, Session::wanted, set_target_temperature, SecondLetter::as_first},
    {"HT", Form::lower,   Attached::nothing, Next::nothing, Session::wanted, show_target_temperature, SecondLetter::as_first},
    {"HV", Form::capital, Attached::real, Next::nothing, Session::wanted, set_heater_voltage_limit, SecondLetter::as_first},
    {"HV", Form::lower,   Attached::nothing, Next::nothing, Session::wanted, show_heater_voltage_limit, SecondLetter::as_first},
    {"HA", Form::capital, Attached::real, Next::nothing, Session::wanted, set_heater_current_limit, SecondLetter::as_first},
    {"HA", Form::lower,   Attached::nothing, Next::nothing, Session::wanted, show_heater_current_limit, SecondLetter::as_first},
    {"HW", Form::capital, Attached::real, Next::nothing, Session::wanted, set_heater_power_limit, SecondLetter::as_first},
    {"HW", Form::lower,   Attached::nothing, Next::nothing, Session::wanted, show_heater_power_limit, SecondLetter::as_first},
    {"HO", Form::lower,   Attached::nothing, Next::nothing, Session::wanted, show_target_output_voltage_of_heater, SecondLetter::as_first},
    {"HP", Form::lower,   Attached::nothing, Next::nothing, Session::wanted, show_target_heater_power, SecondLetter::as_first},
    {"HK", Form::either,  Attached::nothing, Next::nothing, Session::wanted, show_heat_controller_housekeeping, SecondLetter::as_first},
    {"HM", Form::either,  Attached::nothing, Next::nothing, Session::wanted, show_heater_monitoring, SecondLetter::as_first},
    {"HI", Form::either,  Attached::nothing, Next::nothing, Session::wanted, show_heater_interlock_state, SecondLetter::as_first},
    {"HL", Form::either,  Attached::nothing, Next::nothing, Session::wanted, show_heater_hardware_limits, SecondLetter::as_first},
    {"VK", Form::either,  Attached::hv_address, Next::nothing, Session::wanted, show_hv_supply_housekeeping},
    {"VO", Form::either,  Attached::hv_address, Next::nothing, Session::wanted, show_output},
    {"VD", Form::either,  Attached::hv_address, Next::nothing, Session::wanted, show_output_data},
    {"VV", Form::capital, Attached::hv_address, Next::real, Session::required, set_target_voltage},
    {"VV", Form::lower,   Attached::hv_address, Next::nothing, Session::wanted, show_target_voltage},
    {"VG", Form::capital, Attached::hv_address_with_optional_ranges, Next::nothing, Session::wanted, show_or_set_measurement_ranges},
    {"VG", Form::lower,   Attached::hv_address, Next::nothing, Session::wanted, show_measurement_ranges},
    {"VT", Form::either,  Attached::hv_address, Next::nothing, Session::wanted, tune_voltage},
};
// clang-format on
