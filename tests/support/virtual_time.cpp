#include "tests/support/virtual_time.h"

namespace virtual_time
{

namespace
{
std::int64_t microseconds_now = 0;
}

std::int64_t now_us()
{
    return microseconds_now;
}

void advance_us(std::int64_t microseconds)
{
    microseconds_now += microseconds;
}

void reset()
{
    microseconds_now = 0;
}

} // namespace virtual_time
