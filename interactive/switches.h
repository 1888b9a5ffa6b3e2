/// The switch of the full-screen status display.
#pragma once

#include "frame/switches.h"

/// Runs the full-screen status display until Esc.
inline constexpr void (*status_screen)() = nullptr;

// clang-format off
inline constexpr Switch interactive_switches[] = {
    {"N", Form::either, Attached::nothing, Next::nothing, Session::wanted, not_yet_there},
};
// clang-format on
