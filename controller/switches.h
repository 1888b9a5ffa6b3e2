/// The switches of the commands on the controller as a whole: its identification, housekeeping and
/// CPU, fan and LED data, its status words and its settings.
#pragma once

#include "controller/identification.h"
#include "controller/measurements.h"
#include "frame/general_commands.h"
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
    {"S",  Form::either,  Attached::nothing, Next::nothing, Session::wanted,   not_yet_there},
    {"SD", Form::either,  Attached::nothing, Next::nothing, Session::wanted,   not_yet_there},
    {"SV", Form::either,  Attached::nothing, Next::nothing, Session::wanted,   not_yet_there},
    {"ST", Form::either,  Attached::nothing, Next::nothing, Session::wanted,   not_yet_there},
    {"SF", Form::either,  Attached::nothing, Next::nothing, Session::wanted,   not_yet_there},
    {"SI", Form::either,  Attached::nothing, Next::nothing, Session::wanted,   not_yet_there},
    {"SN", Form::either,  Attached::nothing, Next::nothing, Session::wanted,   not_yet_there},
    {"SP", Form::either,  Attached::nothing, Next::nothing, Session::wanted,   not_yet_there},
    {"SE", Form::capital, Attached::nothing, Next::number,  Session::required, not_yet_there},
    {"SE", Form::lower,   Attached::nothing, Next::nothing, Session::wanted,   not_yet_there},
    {"SG", Form::capital, Attached::nothing, Next::number,  Session::required, not_yet_there},
    {"SG", Form::lower,   Attached::nothing, Next::nothing, Session::wanted,   not_yet_there},
    {"SS", Form::capital, Attached::nothing, Next::number,  Session::required, not_yet_there},
    {"SS", Form::lower,   Attached::nothing, Next::nothing, Session::wanted,   not_yet_there},
    {"UY", Form::capital, Attached::nothing, Next::nothing, Session::wanted,   not_yet_there},
    {"UN", Form::capital, Attached::nothing, Next::nothing, Session::wanted,   not_yet_there},
    {"U",  Form::lower,   Attached::nothing, Next::nothing, Session::wanted,   not_yet_there},
};
// clang-format on
