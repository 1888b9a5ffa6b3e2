/// The switch of the acceptance test.
#pragma once

#include "frame/switches.h"

// clang-format off
inline constexpr Switch protocol_switches[] = {
    {"R", Form::either, Attached::nothing, Next::text, Session::required, not_yet_there},
};
// clang-format on
