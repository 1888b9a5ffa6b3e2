/// The switches of the configuration files and of the configuration sets in the device's memory.
#pragma once

#include "config/files.h"
#include "config/sets.h"
#include "frame/switches.h"

// clang-format off
inline constexpr Switch config_switches[] = {
    {"XI", Form::either,  Attached::nothing,             Next::nothing, Session::wanted,   list_sets},
    {"XS", Form::capital, Attached::optional_set_number, Next::text,    Session::wanted,   save_sets},
    {"XS", Form::lower,   Attached::nothing,             Next::text,    Session::wanted,   save_current_configuration_to_file},
    {"XL", Form::capital, Attached::optional_set_number, Next::text,    Session::wanted,   load_sets},
    {"XL", Form::lower,   Attached::nothing,             Next::text,    Session::wanted,   load_current_configuration_from_file},
    {"XC", Form::either,  Attached::set_number,          Next::nothing, Session::wanted,   copy_current_configuration},
    {"XN", Form::capital, Attached::set_number,          Next::text,    Session::required, set_name_of_set},
    {"XN", Form::lower,   Attached::set_number,          Next::nothing, Session::wanted,   show_name_of_set},
    {"XR", Form::either,  Attached::nothing,             Next::nothing, Session::wanted,   reset_current_configuration},
    {"XD", Form::either,  Attached::optional_set_number, Next::nothing, Session::wanted,   delete_sets},
    {"XU", Form::either,  Attached::optional_set_number, Next::nothing, Session::wanted,   undelete_sets},
    {"XW", Form::either,  Attached::optional_set_number, Next::nothing, Session::wanted,   wipe_out_sets},
};
// clang-format on
