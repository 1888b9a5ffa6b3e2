#include "controller/measurements.h"

#include "frame/live_display.h"
#include "frame/program.h"
#include "frame/terminal/console.h"
#include "instrument/controller_readings.h"
#include "instrument/supplies.h"
#include "instrument/words.h"

void show_uptime(const Given& given)
{
    struct Values {
        RunTimes uptime, operation;
    };
    Place field;
    progress("Getting the device uptime:\r\n");
    run_live_display<Values>(
        {.continuous = given.capital},
        [&](LiveFields&) {
            print_quit_prompt(":\r\n", given.capital);
            field = place_field("Device uptime: ");
        },
        [](Values& values) {
            const Failure failed = attempt_uptime(values.uptime);
            return failed ? failed : attempt_operation_time(values.operation);
        },
        [&](const Values& values) {
            const auto print_times = [](const RunTimes& times) {
                console.print(Color::value, "%s", times.text().c_str());
                console.print(", total: ");
                console.print(Color::value, "%s", times.total_text().c_str());
            };
            console.move_to(field);
            print_times(values.uptime);
            console.print(", Operation time: ");
            print_times(values.operation);
            console.clear_to_end_of_line(); // the texts become shorter when the device restarts
        });
}

void show_housekeeping(const Given& given)
{
    Place field_24, field_5, field_33, field_cpu, field_psu;
    progress("Getting the device housekeeping:\r\n");
    run_live_display<ControllerHousekeeping>(
        {.title = "Device housekeeping", .continuous = given.capital},
        [&](LiveFields& fields) {
            // The last key is echoed two rows above the header, over whatever stands there.
            fields.key_echo = console.place().up(2);
            fields.place_rates(rates_in_header);
            console.print("\r\n");
            field_24 = place_field("  Voltages:  24V:", 8);
            field_5 = place_field("  5V0:", 7);
            field_33 = place_field("  3V3:", 7);
            field_cpu = place_field("  Temperature CPU:", 9);
            field_psu = place_field("  PSU:");
        },
        attempt_controller_housekeeping,
        [&](const ControllerHousekeeping& values) {
            const auto show_voltage = [](Place field, double volts, const Supply& supply,
                                         int width) {
                console.print_at(field, supply.color(volts), "%*.3lfV", width, volts);
            };
            const auto show_temperature = [](Place field, double celsius) {
                console.print_at(field, temperature_color(celsius), "%+7.1lf" DEGREES_C, celsius);
            };
            show_voltage(field_24, values.plus_24, supply::plus_24, 7);
            show_voltage(field_5, values.plus_5, supply::plus_5, 6);
            show_voltage(field_33, values.plus_3_3, supply::plus_3_3, 6);
            show_temperature(field_cpu, values.cpu);
            show_temperature(field_psu, values.psu);
        });
}

void show_fan_data(const Given& given)
{
    Place field_state, field_set, field_measured, field_pwm;
    progress("Getting the fan data:\r\n");
    run_live_display<FanData>(
        {.title = "Fan data", .title_end = ":\r\n", .continuous = given.capital},
        [&](LiveFields&) {
            console.skip(2);
            field_state = place_field("state OK: ", 6);
            field_set = place_field("   set: ", 13);
            field_measured = place_field("measured: ", 13);
            field_pwm = place_field("PWM control:");
        },
        attempt_fan_data,
        [&](const FanData& values) {
            console.print_at(field_state, values.failed == 0 ? ColoredText{"Y", Color::good}
                                                             : ColoredText{"N", Color::not_good});
            console.print_at(field_set, Color::value, "%5urpm", values.set_speed);
            console.print_at(field_measured, Color::value, "%5urpm", values.measured_speed);
            console.print_at(field_pwm, Color::value, "%6.2f%%",
                             static_cast<double>(values.pwm) * 100.0);
        });
}

void show_led_data(const Given& given)
{
    Place field_red, field_green, field_blue, field_color;
    progress("Getting LED data:\r\n");
    run_live_display<LedData>(
        {.continuous = given.capital},
        [&](LiveFields&) {
            print_quit_prompt("\r\n", given.capital);
            // The blanks in front of a label are the room for the value before it.
            field_red = place_field("LED data of the base device: Red: ");
            field_green = place_field("   , Green: ");
            field_blue = place_field("   , Blue: ");
            field_color = place_field("   , Color: ");
        },
        attempt_led_data,
        [&](const LedData& values) {
            const bool red = values.red != 0;
            const bool green = values.green != 0;
            const bool blue = values.blue != 0;
            console.print_at(field_red, on_off(red));
            console.print_at(field_green, on_off(green));
            console.print_at(field_blue, on_off(blue));
            console.print_at(field_color, led_color(red, green, blue), "LED");
        });
}

void show_cpu_data(const Given& given)
{
    constexpr double megahertz = 1e-6;
    Place field_load, field_frequency;
    progress("Getting the CPU data:\r\n");
    run_live_display<CpuData>(
        {.title = "CPU data", .title_end = ":", .continuous = given.capital, .period_ms = 1000},
        [&](LiveFields&) {
            field_load = place_field("   Load: ", 5);
            field_frequency = place_field("   Frequency: ");
        },
        attempt_cpu_data,
        [&](const CpuData& values) {
            console.print_at(field_load, Color::value, "%4.1lf%%", values.load * 100.0);
            console.print_at(field_frequency, Color::value, "%5.2lfMHz",
                             values.frequency * megahertz);
        });
}
