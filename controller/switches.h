/// The switches of the commands on the controller as a whole: its identification, housekeeping and
/// CPU, fan and LED data, its status words and its settings.
#pragma once

#include "controller/identification.h"
#include "controller/measurements.h"
#include "controller/settings.h"
#include "controller/status_displays.h"
#include "frame/switches.h"

// clang-format off
inline constexpr Switch controller_switches[] = {
    {"P",  Form::either,  Attached::nothing, Next::nothing, Session::wanted,   show_product_data},
    {"PI", Form::either,  Attached::nothing, Next::nothing, Session::wanted,   show_product_identification},
    {"PN", Form::either,  Attached::nothing, Next::nothing, Session::wanted,   show_product_number},
    {"PM", Form::either,  Attached::nothing, Next::nothing, Session::wanted,   show_manufacturing_date},
    {"PH", Form::either,  Attached::nothing, Next::nothing, Session::wanted,   show_hardware_version},
    {"PD", Form::either,  Attached::nothing, Next::nothing, Session::wanted,   show_firmware_date},
    {"PF", Form::either,  Attached::nothing, Next::nothing, Session::wanted,   show_firmware_version},
    {"PE", Form::either,  Attached::nothing, Next::nothing, Session::wanted,   show_device_type},
    {"PT", Form::either,  Attached::nothing, Next::nothing, Session::wanted,   show_hardware_type},
    {"PU", Form::either,  Attached::nothing, Next::nothing, Session::wanted,   show_uptime},
    {"PK", Form::either,  Attached::nothing, Next::nothing, Session::wanted,   show_housekeeping},
    {"PB", Form::either,  Attached::nothing, Next::nothing, Session::wanted,   show_fan_data},
    {"PL", Form::either,  Attached::nothing, Next::nothing, Session::wanted,   show_led_data},
    {"PC", Form::either,  Attached::nothing, Next::nothing, Session::wanted,   show_cpu_data},
    {"P#", Form::either,  Attached::nothing, Next::nothing, Session::wanted,   restart_controller},
    {"S",  Form::either,  Attached::nothing, Next::nothing, Session::wanted,   show_overall_state},
    {"SD", Form::either,  Attached::nothing, Next::nothing, Session::wanted,   show_device_state},
    {"SV", Form::either,  Attached::nothing, Next::nothing, Session::wanted,   show_voltage_state},
    {"ST", Form::either,  Attached::nothing, Next::nothing, Session::wanted,   show_temperature_state},
    {"SF", Form::either,  Attached::nothing, Next::nothing, Session::wanted,   show_fan_state},
    {"SI", Form::either,  Attached::nothing, Next::nothing, Session::wanted,   show_interlock_state},
    {"SN", Form::either,  Attached::nothing, Next::nothing, Session::wanted,   show_input_levels},
    {"SP", Form::either,  Attached::nothing, Next::nothing, Session::wanted,   show_power_monitors},
    {"SE", Form::capital, Attached::nothing, Next::number,  Session::required, set_hv_supply_interlock_mask},
    {"SE", Form::lower,   Attached::nothing, Next::nothing, Session::wanted,   show_hv_supply_interlock_mask},
    {"SG", Form::capital, Attached::nothing, Next::number,  Session::required, set_heat_controller_interlock_mask},
    {"SG", Form::lower,   Attached::nothing, Next::nothing, Session::wanted,   show_heat_controller_interlock_mask},
    {"SS", Form::capital, Attached::nothing, Next::number,  Session::required, set_fan_switch_function},
    {"SS", Form::lower,   Attached::nothing, Next::nothing, Session::wanted,   show_fan_switch_function},
    {"UY", Form::capital, Attached::nothing, Next::nothing, Session::wanted,   enable_device},
    {"UN", Form::capital, Attached::nothing, Next::nothing, Session::wanted,   disable_device},
    {"U",  Form::lower,   Attached::nothing, Next::nothing, Session::wanted,   show_enable_state},
};
// clang-format on
