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
            console.print("Device uptime: ");
            field = console.place();
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
    Field field_24, field_5, field_33, field_cpu, field_psu;
    progress("Getting the device housekeeping:\r\n");
    run_live_display<ControllerHousekeeping>(
        {.title = "Device housekeeping", .continuous = given.capital},
        [&](LiveFields& fields) {
            // The last key is echoed two rows above the header, over whatever stands there.
            fields.key_echo = console.place().up(2);
            fields.place_rates(rates_in_header);
            console.print("\r\n");
            // Blanks between the values are room for wild ones.
            field_24 = place_field("  Voltages:  24V:", 9, 1);
            field_5 = place_field("5V0:", 8, 1);
            field_33 = place_field("3V3:", 8, 1);
            field_cpu = place_field("Temperature CPU:", 10, 1);
            field_psu = place_field("PSU:", 10);
        },
        attempt_controller_housekeeping,
        [&](const ControllerHousekeeping& values) {
            const auto show_voltage = [](const Field& field, double volts, const Supply& supply,
                                         int width) {
                field.show(supply.color(volts), volts,
                           {.width = width, .decimals = 3, .unit = "V"});
            };
            const auto show_temperature = [](const Field& field, double celsius) {
                field.show(temperature_color(celsius), celsius,
                           {.width = 7, .decimals = 1, .unit = DEGREES_C, .sign = true});
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
    constexpr NumberFormat rpm = {.width = 5, .unit = "rpm"};
    Field field_state, field_set, field_measured, field_pwm;
    progress("Getting the fan data:\r\n");
    run_live_display<FanData>(
        {.title = "Fan data", .title_end = ":\r\n", .continuous = given.capital},
        [&](LiveFields&) {
            console.skip(2);
            field_state = place_field("state OK: ", 1, 8);
            field_set = place_field("set: ", 12, 1);
            field_measured = place_field("measured: ", 12, 1);
            field_pwm = place_field("PWM control:", 9);
        },
        attempt_fan_data,
        [&](const FanData& values) {
            field_state.show(values.failed == 0 ? ColoredText{"Y", Color::good}
                                                : ColoredText{"N", Color::not_good});
            field_set.show(Color::value, values.set_speed, rpm);
            field_measured.show(Color::value, values.measured_speed, rpm);
            field_pwm.show(Color::value, static_cast<double>(values.pwm) * 100.0,
                           {.width = 6, .decimals = 2, .unit = "%"});
        });
}

void show_led_data(const Given& given)
{
    Field field_red, field_green, field_blue, field_color;
    progress("Getting LED data:\r\n");
    run_live_display<LedData>(
        {.continuous = given.capital},
        [&](LiveFields&) {
            print_quit_prompt("\r\n", given.capital);
            field_red = place_field("LED data of the base device: Red: ", 3);
            field_green = place_field(", Green: ", 3);
            field_blue = place_field(", Blue: ", 3);
            field_color = place_field(", Color: ", 3);
        },
        attempt_led_data,
        [&](const LedData& values) {
            const bool red = values.red != 0;
            const bool green = values.green != 0;
            const bool blue = values.blue != 0;
            field_red.show(on_off(red));
            field_green.show(on_off(green));
            field_blue.show(on_off(blue));
            field_color.show(led_color(red, green, blue), "LED");
        });
}

void show_cpu_data(const Given& given)
{
    constexpr double megahertz = 1e-6;
    Field field_load, field_frequency;
    progress("Getting the CPU data:\r\n");
    run_live_display<CpuData>(
        {.title = "CPU data", .title_end = ":", .continuous = given.capital, .period_ms = 1000},
        [&](LiveFields&) {
            field_load = place_field("   Load: ", 7, 1);
            field_frequency = place_field("Frequency: ", 10);
        },
        attempt_cpu_data,
        [&](const CpuData& values) {
            field_load.show(Color::value, values.load * 100.0,
                            {.width = 4, .decimals = 1, .unit = "%"});
            field_frequency.show(Color::value, values.frequency * megahertz,
                                 {.width = 5, .decimals = 2, .unit = "MHz"});
        });
}
