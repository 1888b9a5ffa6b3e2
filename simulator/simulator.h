/// What the tests may set and see of the simulated instrument. The program itself never includes
/// this header: it knows the device library's interface alone.
#pragma once

#include "simulator/library/call_record.h"

#include <functional>
#include <string>
#include <string_view>

namespace simulator
{

/// A new instrument, as delivered and switched on just now: port closed, default settings, empty
/// memory, no scenario, no faults, noise off, no answer time. The clock must not go back
/// afterwards. State file and scenario file are read again where the host's environment names them;
/// the one of the tests says that the state is kept nowhere but in this process.
void reset_for_test();

/// Carries out one line of the scenario language ("interlock.front open", "fail GetState at 2",
/// "reply GetHousekeeping.voltage24 24.6"). Returns false and says why in `problem` when the line
/// is wrong; nothing is changed then.
[[nodiscard]] bool apply(std::string_view line, std::string& problem);

/// Has `observer` called at the end of every library call; an empty one ends it.
void observe_calls(std::function<void(const CallRecord&)> observer);

} // namespace simulator
