/// The switches of the configuration files and of the configuration sets in the device's memory.
#pragma once

#include "frame/switches.h"

// clang-format off
inline constexpr Switch config_switches[] = {
    {"XI", Form::either,  Attached::nothing,             Next::nothing, Session::wanted,   not_yet_there},
    {"XS", Form::capital, Attached::optional_set_number, Next::text,    Session::wanted,   not_yet_there},
    {"XS", Form::lower,   Attached::nothing,             Next::text,    Session::wanted,   not_yet_there},
    {"XL", Form::capital, Attached::optional_set_number, Next::text,    Session::wanted,   not_yet_there},
    {"XL", Form::lower,   Attached::nothing,             Next::text,    Session::wanted,   not_yet_there},
    {"XC", Form::either,  Attached::set_number,          Next::nothing, Session::wanted,   not_yet_there},
    {"XN", Form::capital, Attached::set_number,          Next::text,    Session::required, not_yet_there},
    {"XN", Form::lower,   Attached::set_number,          Next::nothing, Session::wanted,   not_yet_there},
    {"XR", Form::either,  Attached::nothing,             Next::nothing, Session::wanted,   not_yet_there},
    {"XD", Form::either,  Attached::optional_set_number, Next::nothing, Session::wanted,   not_yet_there},
    {"XU", Form::either,  Attached::optional_set_number, Next::nothing, Session::wanted,   not_yet_there},
    {"XW", Form::either,  Attached::optional_set_number, Next::nothing, Session::wanted,   not_yet_there},
};
// clang-format on
