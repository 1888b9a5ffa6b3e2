/// The switch of the full-screen status display.
#pragma once

#include "frame/switches.h"
#include "interactive/status_screen.h"

// clang-format off
inline constexpr Switch interactive_switches[] = {
    {"N", Form::either, Attached::nothing, Next::nothing, Session::wanted, show_status_screen},
};
// clang-format on
