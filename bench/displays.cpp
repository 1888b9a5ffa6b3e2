#include "bench/displays.h"

#include <benchmark/benchmark.h>

#include "controller/measurements.h"
#include "devlib/COM-KOV-CTRL.h"
#include "frame/console.h"
#include "frame/device_call.h"
#include "frame/format.h"
#include "frame/keys.h"
#include "frame/live_display.h"
#include "frame/program.h"
#include "frame/switches.h"

namespace bench
{

namespace
{

/// The state in which the program starts.
void start_program()
{
    program = {};
    console.start();
    start_keys();
}

/// Nothing of a reading is optimised away.
template <class Values>
void read_in_loop(std::uint32_t calls)
{
    for (; calls > 0; --calls) {
        Values values{};
        bool good = read_values(values);
        benchmark::DoNotOptimize(good);
        benchmark::DoNotOptimize(values);
    }
}

} // namespace

bool read_values(Housekeeping& values)
{
    return COM_KOV_CTRL_GetHousekeeping(&values.voltage_24, &values.voltage_5, &values.voltage_33,
                                        &values.temperature_cpu, &values.temperature_psu) == 0;
}

bool read_values(Wide& wide)
{
    Housekeeping values{};
    const bool good = read_values(values);
    for (std::size_t i = 0; i < wide_fields; ++i)
        wide.values[i] = values.voltage_24 + static_cast<double>(i);
    return good;
}

void show_housekeeping()
{
    start_program();
    console.print("\r\n\r\n"); // the last key is echoed above the header
    ::show_housekeeping(Given{.capital = true});
    console.finish();
}

void show_wide()
{
    start_program();
    std::array<Place, wide_fields> fields;
    run_live_display<Wide>(
        {.title = "Many values", .continuous = true},
        [&](LiveFields& live) {
            live.place_rates(rates_in_header);
            for (std::size_t i = 0; i < wide_fields; ++i) {
                if (i % wide_fields_in_row == 0)
                    console.print("\r\n");
                console.print("  %03zu: ", i);
                fields[i] = console.place();
                console.skip(9);
            }
        },
        [](Wide& wide) { return read_values(wide) ? nullptr : "COM_KOV_CTRL_GetHousekeeping"; },
        [&](const Wide& wide) {
            for (std::size_t i = 0; i < wide_fields; ++i) {
                const double value = wide.values[i];
                const Color color =
                    deviation_color(value, wide_nominal(i), supply_tolerance_percent);
                console.print_at(fields[i], color, "%8.3lfV", value);
            }
        });
    console.finish();
}

void read_housekeeping(std::uint32_t calls)
{
    read_in_loop<Housekeeping>(calls);
}

void read_wide(std::uint32_t calls)
{
    read_in_loop<Wide>(calls);
}

} // namespace bench
