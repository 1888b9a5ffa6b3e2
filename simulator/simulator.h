/// What the tests may set and see of the simulated instrument. The program itself never includes
/// this header: it knows the device library's interface alone.
#pragma once

#include <cstdint>
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

/// One finished call of the library, as the trace file shows it.
struct CallRecord {
    const char* function; ///< with its prefix: "COM_KOV_CTRL_GetModuleState"
    std::string inputs;   ///< "1", "128, 1", "\"text\""; empty when there are none
    std::string outputs;  ///< "state=C100h"; empty after a failure
    std::int32_t status;  ///< 0 = success; 0 also for functions without a status
};

/// Has `observer` called at the end of every library call; an empty one ends it.
void observe_calls(std::function<void(const CallRecord&)> observer);

} // namespace simulator
