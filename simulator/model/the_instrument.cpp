#include "simulator/model/the_instrument.h"

#include "simulator/host.h"
#include "simulator/model/operation.h"

namespace simulator
{

namespace
{

bool made = false;
std::int64_t clock_offset_us = 0; ///< from the monotonic clock to the instrument's

} // namespace

Instrument& the_instrument()
{
    static Instrument& instrument = *new Instrument; // there until the process ends
    return instrument;
}

Instrument& instrument_now()
{
    if (!made) [[unlikely]]
        make_the_instrument();
    Instrument& instrument = the_instrument();
    advance(instrument, host::monotonic_us() + clock_offset_us);
    return instrument;
}

void make_the_instrument()
{
    made = true;
    const std::int64_t now_us = host::wall_clock_us();
    set_clock_us(now_us);
    make_new(the_instrument(), now_us);
}

void set_clock_us(std::int64_t now_us)
{
    clock_offset_us = now_us - host::monotonic_us();
}

} // namespace simulator
