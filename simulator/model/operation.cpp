#include "simulator/model/operation.h"

#include "simulator/model/clocks.h"
#include "simulator/model/config_record.h"
#include "simulator/model/default_identities.h"
#include "simulator/model/heater.h"
#include "simulator/model/measurements.h"
#include "simulator/model/status.h"
#include "simulator/model/supply.h"

#include <algorithm>

namespace simulator
{

namespace
{

/// After a longer absence only the end of it is worked out: everything has settled by then.
constexpr std::int64_t longest_absence_us = 3'600'000'000;

void default_settings(Instrument& made)
{
    record(made.memory, 0).flags = set_active | set_valid;
    const ConfigBytes config = current_config(made);
    const HeaterModel& heater = made.physical.heater;
    config[field::interlock_masks] = 0xFC; // heat-controller: all inputs, HV-supplies: the doors
    put_field(config, field::voltage_limit, 2, raw_value(heater.voltage_limit, volt_unit, 0xFFFF));
    put_field(config, field::current_limit, 2,
              raw_value(heater.current_limit, ampere_unit, 0xFFFF));
    put_field(config, field::power_limit, 4, raw_value(heater.power_limit, watt_unit, 0xFFFF'FFFF));
    put_field(config, field::temperature, 4, raw_value(272.15, 0.001, 0xFFFF'FFFF)); // -1: off
    for (unsigned supply = 0; supply < supply_count; ++supply) {
        put_field(config, field::target(supply), 4, static_cast<std::uint32_t>(-1000)); // off
        put_field(config, field::max_step(supply), 4, 100'000);
        config[field::high_range(supply)] = 1;
    }
    config[field::negative(2)] = 1; // the third supply can do nothing else
}

} // namespace

void make_new(Instrument& made, std::int64_t now_us)
{
    made = Instrument{};
    made.now_us = now_us;
    made.next_step_us = now_us + step_us;
    made.origin_us = now_us;
    default_identities(made.physical);
    default_settings(made);
    for (Clock& clock : made.clocks)
        clock.started_us = now_us;
    for (unsigned unit = 0; unit < unit_count; ++unit)
        scan(made, unit);
    made.saved = made.scanned;
    refresh(made);
}

void advance(Instrument& moved, std::int64_t now_us)
{
    if (now_us < moved.next_step_us) [[likely]] {
        moved.now_us = std::max(moved.now_us, now_us);
        return;
    }
    if (now_us - moved.next_step_us > longest_absence_us)
        moved.next_step_us +=
            (now_us - moved.next_step_us - longest_absence_us) / step_us * step_us;
    for (; moved.next_step_us <= now_us; moved.next_step_us += step_us) {
        const std::int64_t age_us = moved.next_step_us - moved.origin_us;
        const Periods& periods = moved.physical.periods;
        step_heater(moved, step_us * 1e-6, age_us % periods.monitoring == 0);
        for (unsigned supply = 0; supply < supply_count; ++supply)
            step_supply(moved, supply, step_us * 1e-6, age_us % periods.voltage == 0,
                        age_us % periods.current == 0);
    }
    moved.now_us = now_us;
}

void restart(Instrument& started)
{
    drop_written(started.memory);
    refresh_presence(started);
    for (unsigned unit = 0; unit < unit_count; ++unit) {
        restart_unit(started, unit);
        scan(started, unit);
    }
    start_clock_again(started, controller);
    restart_measurements(started, controller);
    settings_changed(started);
}

void restart_unit(Instrument& started, unsigned unit)
{
    start_clock_again(started, unit);
    restart_measurements(started, unit);
    if (unit >= 1 && unit < slot_count)
        started.supplies[unit - 1].set = started.supplies[unit - 1].output = 0;
    settings_changed(started);
}

} // namespace simulator
