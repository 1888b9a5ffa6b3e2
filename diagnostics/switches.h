/// The switches of the communication tests, the recording and the memory image.
#pragma once

#include "frame/switches.h"

// clang-format off
inline constexpr Switch diagnostic_switches[] = {
    {"@",  Form::either,  Attached::optional_count, Next::nothing, Session::required, not_yet_there},
    {"&",  Form::either,  Attached::address,        Next::count,   Session::required, not_yet_there},
    {"Y",  Form::either,  Attached::nothing,        Next::text,    Session::required, not_yet_there},
    {"HS", Form::either,  Attached::nothing,        Next::text,    Session::wanted,   not_yet_there,
     SecondLetter::as_first},
};
// clang-format on
