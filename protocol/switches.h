/// The switch of the acceptance test.
#pragma once

#include "frame/switches.h"
#include "protocol/test_protocol.h"

// clang-format off
inline constexpr Switch protocol_switches[] = {
    {"R", Form::either, Attached::nothing, Next::text, Session::required, create_test_protocol},
};
// clang-format on
