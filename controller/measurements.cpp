#include "controller/measurements.h"

#include "frame/console.h"
#include "frame/device_call.h"
#include "frame/format.h"
#include "frame/live_display.h"
#include "frame/supplies.h"

void show_uptime(const Given& given)
{
    struct Times {
        std::uint32_t seconds, total_seconds;
        std::uint16_t milliseconds, total_milliseconds;
    };
    struct Values {
        Times uptime, operation;
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
            Times& up = values.uptime;
            Times& on = values.operation;
            const char* failed = attempt(LIB(GetUptimeInt), &up.seconds, &up.milliseconds,
                                         &up.total_seconds, &up.total_milliseconds);
            return failed != nullptr ? failed
                                     : attempt(LIB(GetOptimeInt), &on.seconds, &on.milliseconds,
                                               &on.total_seconds, &on.total_milliseconds);
        },
        [&](const Values& values) {
            const auto print_times = [](const Times& times) {
                console.print(Color::value, "%s",
                              uptime_text(times.seconds, times.milliseconds).c_str());
                console.print(", total: ");
                console.print(Color::value, "%s",
                              uptime_text(times.total_seconds, times.total_milliseconds).c_str());
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
    struct Values {
        double voltage_24, voltage_5, voltage_33, temperature_cpu, temperature_psu;
    };
    Place field_24, field_5, field_33, field_cpu, field_psu;
    progress("Getting the device housekeeping:\r\n");
    run_live_display<Values>(
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
        [](Values& values) {
            return attempt(LIB(GetHousekeeping), &values.voltage_24, &values.voltage_5,
                           &values.voltage_33, &values.temperature_cpu, &values.temperature_psu);
        },
        [&](const Values& values) {
            const auto show_voltage = [](Place field, double volts, const Supply& supply,
                                         int width) {
                console.print_at(field, supply.color(volts), "%*.3lfV", width, volts);
            };
            const auto show_temperature = [](Place field, double celsius) {
                console.print_at(field, temperature_color(celsius), "%+7.1lf" DEGREES_C, celsius);
            };
            show_voltage(field_24, values.voltage_24, supply::plus_24, 7);
            show_voltage(field_5, values.voltage_5, supply::plus_5, 6);
            show_voltage(field_33, values.voltage_33, supply::plus_3_3, 6);
            show_temperature(field_cpu, values.temperature_cpu);
            show_temperature(field_psu, values.temperature_psu);
        });
}

void show_fan_data(const Given& given)
{
    struct Values {
        std::uint8_t failed;
        std::uint16_t reserved, set_speed, measured_speed;
        float pwm;
    };
    Place field_state, field_set, field_measured, field_pwm;
    progress("Getting the fan data:\r\n");
    run_live_display<Values>(
        {.title = "Fan data", .title_end = ":\r\n", .continuous = given.capital},
        [&](LiveFields&) {
            console.skip(2);
            field_state = place_field("state OK: ", 6);
            field_set = place_field("   set: ", 13);
            field_measured = place_field("measured: ", 13);
            field_pwm = place_field("PWM control:");
        },
        [](Values& values) {
            return attempt(LIB(GetFanData), &values.failed, &values.reserved, &values.set_speed,
                           &values.measured_speed, &values.pwm);
        },
        [&](const Values& values) {
            console.print_at(field_state, values.failed == 0 ? Word{"Y", Color::good}
                                                             : Word{"N", Color::not_good});
            console.print_at(field_set, Color::value, "%5urpm", values.set_speed);
            console.print_at(field_measured, Color::value, "%5urpm", values.measured_speed);
            console.print_at(field_pwm, Color::value, "%6.2f%%",
                             static_cast<double>(values.pwm) * 100.0);
        });
}

void show_led_data(const Given& given)
{
    struct Values {
        std::uint8_t red, green, blue;
    };
    Place field_red, field_green, field_blue, field_color;
    progress("Getting LED data:\r\n");
    run_live_display<Values>(
        {.continuous = given.capital},
        [&](LiveFields&) {
            print_quit_prompt("\r\n", given.capital);
            // The blanks in front of a label are the room for the value before it.
            field_red = place_field("LED data of the base device: Red: ");
            field_green = place_field("   , Green: ");
            field_blue = place_field("   , Blue: ");
            field_color = place_field("   , Color: ");
        },
        [](Values& values) {
            return attempt(LIB(GetLEDData), &values.red, &values.green, &values.blue);
        },
        [&](const Values& values) {
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
    struct Values {
        double load, frequency;
    };
    constexpr double megahertz = 1e-6;
    Place field_load, field_frequency;
    progress("Getting the CPU data:\r\n");
    run_live_display<Values>(
        {.title = "CPU data", .title_end = ":", .continuous = given.capital, .period_ms = 1000},
        [&](LiveFields&) {
            field_load = place_field("   Load: ", 5);
            field_frequency = place_field("   Frequency: ");
        },
        [](Values& values) { return attempt(LIB(GetCPUdata), &values.load, &values.frequency); },
        [&](const Values& values) {
            console.print_at(field_load, Color::value, "%4.1lf%%", values.load * 100.0);
            console.print_at(field_frequency, Color::value, "%5.2lfMHz",
                             values.frequency * megahertz);
        });
}
