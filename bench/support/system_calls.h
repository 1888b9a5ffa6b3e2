/// Counts the system calls that a display makes. The functions of the C library that make them are
/// defined here and pass every call on.
#pragma once

#include <cstdint>

namespace bench
{

struct SystemCalls {
    std::uint64_t writes = 0;
    std::uint64_t written_bytes = 0;
    std::uint64_t polls = 0; ///< with or without signals
    std::uint64_t reads = 0;
};

/// Those of the calling thread.
extern constinit thread_local SystemCalls system_calls;

} // namespace bench
