#include "simulator/model/clocks.h"

namespace simulator
{

void start_clock_again(Instrument& instrument, unsigned clock)
{
    Clock& started = instrument.clocks[clock];
    const std::int64_t now_us = instrument.now_us;
    started.before_us += now_us - started.started_us;
    started.started_us = now_us;
    if (started.operating)
        started.operated_us += now_us - started.operating_since_us;
    started.operated_before_us += started.operated_us;
    started.operated_us = 0;
    started.operating_since_us = now_us;
}

void set_operating(Instrument& instrument, unsigned clock, bool operating)
{
    Clock& switched = instrument.clocks[clock];
    if (switched.operating == operating)
        return;
    if (switched.operating)
        switched.operated_us += instrument.now_us - switched.operating_since_us;
    switched.operating = operating;
    switched.operating_since_us = instrument.now_us;
}

void set_uptime(Instrument& instrument, unsigned clock, std::int64_t microseconds)
{
    instrument.clocks[clock].started_us = instrument.now_us - microseconds;
}

std::int64_t uptime_us(const Instrument& instrument, unsigned clock)
{
    return instrument.now_us - instrument.clocks[clock].started_us;
}

std::int64_t total_uptime_us(const Instrument& instrument, unsigned clock)
{
    return instrument.clocks[clock].before_us + uptime_us(instrument, clock);
}

std::int64_t optime_us(const Instrument& instrument, unsigned clock)
{
    const Clock& shown = instrument.clocks[clock];
    return shown.operated_us + (shown.operating ? instrument.now_us - shown.operating_since_us : 0);
}

std::int64_t total_optime_us(const Instrument& instrument, unsigned clock)
{
    return instrument.clocks[clock].operated_before_us + optime_us(instrument, clock);
}

} // namespace simulator
