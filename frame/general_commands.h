/// The commands of the frame itself: what governs the program, and the communication with the
/// device as such.
#pragma once

#include "frame/switches.h"

void ask_for_help(const Given&);
void be_quiet(const Given&);
void terminate_program(const Given&);

/// Debug mode; the capital form opens the library's own trace file, too.
void turn_debug_mode_on(const Given&);

/// Sets the data rate of the port and the device, in baud.
void set_data_rate(const Given&);

void show_buffer_state(const Given&);

/// Purges the port's buffers on this side, then the device's.
void purge_communication(const Given&);

// clang-format off
inline constexpr Switch general_switches[] = {
    {"?", Form::either,  Attached::nothing,         Next::nothing, Session::none,     ask_for_help},
    {"Q", Form::either,  Attached::nothing,         Next::nothing, Session::none,     be_quiet},
    {"T", Form::either,  Attached::nothing,         Next::nothing, Session::none,     terminate_program},
    {"G", Form::either,  Attached::nothing,         Next::nothing, Session::none,     turn_debug_mode_on},
    {"$", Form::either,  Attached::optional_number, Next::nothing, Session::required, set_data_rate},
    {"Z", Form::lower,   Attached::nothing,         Next::nothing, Session::wanted,   show_buffer_state},
    {"Z", Form::capital, Attached::nothing,         Next::nothing, Session::wanted,   purge_communication},
};
// clang-format on
