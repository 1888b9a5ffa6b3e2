#include "bench/displays.h"

#include "controller/measurements.h"
#include "devlib/COM-KOV-CTRL.h"
#include "frame/device_call.h"
#include "frame/live_display.h"
#include "frame/program.h"
#include "frame/switches.h"
#include "frame/terminal/console.h"
#include "frame/terminal/keys.h"
#include "instrument/supplies.h"
#include "interactive/screen_readings.h"
#include "interactive/status_screen.h"

#include <benchmark/benchmark.h>

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

/// All values of the full screen.
struct FullScreen {
    CompleteState state;
    ControllerHousekeeping controller;
    PerUnit<ModuleHousekeeping> housekeeping;
    HeaterMonitoring monitoring;
    std::array<OutputMeasurement, screen_slots> voltage, current;
};

bool read_values(FullScreen& screen)
{
    CompleteState& state = screen.state;
    ControllerHousekeeping& controller = screen.controller;
    bool good = COM_KOV_CTRL_GetCompleteState(&state.data_ready, &state.device, &state.voltage,
                                              &state.temperature, &state.fan, &state.interlock,
                                              &state.overall, state.module_data_ready.data(),
                                              state.module.data()) == 0;
    good &=
        COM_KOV_CTRL_GetHousekeeping(&controller.plus_24, &controller.plus_5, &controller.plus_3_3,
                                     &controller.cpu, &controller.psu) == 0;
    ModuleHousekeeping& heater = screen.housekeeping[0];
    good &= COM_KOV_CTRL_GetHeatCtrlHousekeeping(&heater.valid, &heater.plus_3_3, &heater.cpu,
                                                 &heater.plus_5, &heater.plus_24, &heater.psu) == 0;
    ModuleHousekeeping& base = screen.housekeeping[base_index];
    good &= COM_KOV_CTRL_GetBaseHousekeeping(&base.valid, &base.plus_3_3, &base.cpu) == 0;
    for (unsigned slot = 1; slot < screen_slots; ++slot) {
        ModuleHousekeeping& supply = screen.housekeeping[slot];
        good &= COM_KOV_CTRL_GetHVsupplyHousekeeping(
                    slot, &supply.valid, &supply.plus_3_3, &supply.cpu, &supply.plus_5,
                    &supply.plus_24, &supply.minus_22, &supply.plus_18, &supply.minus_18,
                    &supply.vc, &supply.analog_ground) == 0;
    }
    HeaterMonitoring& heating = screen.monitoring;
    good &= COM_KOV_CTRL_GetHeatCtrlMonitoring(&heating.ready, &heating.output_voltage,
                                               &heating.heater_voltage, &heating.current,
                                               &heating.temperature) == 0;
    for (unsigned slot = 1; slot < screen_slots; ++slot) {
        OutputMeasurement& voltage = screen.voltage[slot];
        OutputMeasurement& current = screen.current[slot];
        good &= COM_KOV_CTRL_GetHVsupplyOutputVoltage(slot, &voltage.valid, &voltage.value) == 0;
        good &= COM_KOV_CTRL_GetHVsupplyOutputCurrent(slot, &current.valid, &current.value) == 0;
    }
    return good;
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
    std::array<Field, wide_fields> fields;
    run_live_display<Wide>(
        {.title = "Many values", .continuous = true},
        [&](LiveFields& live) {
            live.place_rates(rates_in_header);
            for (std::size_t i = 0; i < wide_fields; ++i) {
                if (i % wide_fields_in_row == 0)
                    console.print("\r\n");
                fields[i] = place_field(formatted("  %03zu: ", i).c_str(), 9);
            }
        },
        [](Wide& wide) {
            return read_values(wide) ? Failure{} : Failure{"COM_KOV_CTRL_GetHousekeeping"};
        },
        [&](const Wide& wide) {
            for (std::size_t i = 0; i < wide_fields; ++i) {
                const double value = wide.values[i];
                const Color color =
                    deviation_color(value, wide_nominal(i), supply_tolerance_percent);
                fields[i].show(color, value, {.width = 8, .decimals = 3, .unit = "V"});
            }
        });
    console.finish();
}

void show_full_screen()
{
    start_program();
    run_status_screen();
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

void read_full_screen(std::uint32_t cycles)
{
    read_in_loop<FullScreen>(cycles);
}

} // namespace bench
