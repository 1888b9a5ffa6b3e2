/// The one clock of a test: it stands still until somebody lets time pass.
#pragma once

#include <cstdint>

namespace virtual_time
{

inline std::int64_t microseconds = 0;

/// Microseconds since the test began.
inline std::int64_t now_us()
{
    return microseconds;
}

/// Lets time pass.
inline void advance_us(std::int64_t passing)
{
    microseconds += passing;
}

/// Back to 0: Saturday, 14 March 2026, 09:26:53.589 local time.
inline void reset()
{
    microseconds = 0;
}

/// The local wall-clock time that belongs to now_us() = 0, in milliseconds since 1970-01-01 00:00.
inline std::int64_t wall_clock_start_ms = 1'773'480'413'589;

} // namespace virtual_time
