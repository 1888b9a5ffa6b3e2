/// What a finished call leaves for the trace and for the tests.
#pragma once

#include <cstdint>
#include <string>

namespace simulator
{

/// One finished call of the library, as the trace file shows it.
struct CallRecord {
    const char* function; ///< with its prefix: "COM_KOV_CTRL_GetModuleState"
    std::string inputs;   ///< "1", "128, 1", "\"text\""; empty when there are none
    std::string outputs;  ///< "state=C100h"; empty after a failure
    std::int32_t status;  ///< 0 = success; 0 also for functions without a status
};

} // namespace simulator
