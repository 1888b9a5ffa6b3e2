/// The switches of the communication tests, the recording and the memory image.
#pragma once

#include "diagnostics/communication_tests.h"
#include "diagnostics/memory_image.h"
#include "diagnostics/recording.h"
#include "frame/switches.h"

// clang-format off
inline constexpr Switch diagnostic_switches[] = {
    {"@",  Form::either,  Attached::optional_count, Next::nothing, Session::required, test_controller},
    {"&",  Form::either,  Attached::address,        Next::count,   Session::required, test_modules},
    {"Y",  Form::lower,   Attached::nothing,        Next::text,    Session::required, back_memory_up},
    {"Y",  Form::capital, Attached::nothing,        Next::text,    Session::required, restore_memory},
    {"HS", Form::either,  Attached::nothing,        Next::text,    Session::wanted,   record_heat_controller,
     SecondLetter::as_first},
};
// clang-format on
