#include "modules/output.h"

#include "instrument/words.h"

#include <cmath>

bool change_ranges(int key, MeasurementRanges& ranges)
{
    switch (key) {
    case 'P':
        ranges.negative = 0;
        return true;
    case 'N':
        ranges.negative = 1;
        return true;
    case 'H':
        ranges.high = 1;
        return true;
    case 'L':
        ranges.high = 0;
        return true;
    default:
        return false;
    }
}

void print_key_pair(const char* first, const char* second, const char* meaning)
{
    console.print(Color::value, "%s", first);
    console.print("/");
    console.print(Color::value, "%s", second);
    console.print("%s", meaning);
}

void print_range_keys()
{
    print_key_pair("P", "N", " for positive/negative voltage, ");
    print_key_pair("H", "L", " for high/low current range:");
}

namespace
{

constexpr NumberFormat volts_format = {.width = 9, .decimals = 3, .unit = "V", .sign = true};

/// Of a time in s.
void show_microseconds(const Field& field, double seconds)
{
    constexpr double microseconds = 1e6;
    field.show(Color::value, seconds * microseconds, {.width = 8, .decimals = 5, .unit = "us"});
}

} // namespace

void show_measured_voltage(const Field& field, const OutputValues& output)
{
    if (!output.has_voltage)
        return;
    NumberFormat format = volts_format;
    format.unit = output.voltage_ranges.negative != 0 ? "V (negative)" : "V (positive)";
    field.show(Color::value, output.voltage, format);
}

void show_measured_current(const Field& field, const OutputValues& output, int decimals)
{
    constexpr int width_without_decimals = 7;
    if (!output.has_current)
        return;
    field.show(Color::value, output.current,
               {.width = width_without_decimals + decimals,
                .decimals = decimals,
                .unit = output.current_ranges.high != 0 ? "A (high)" : "A (low) ",
                .sign = true,
                .exponent = true});
}

void show_target(const Field& field, double volts)
{
    if (volts < 0.0)
        field.show(Color::bad, "** off ** ");
    else
        field.show(Color::value, volts, volts_format);
}

namespace
{

void show_measured_voltage_or_overflow(const Field& field, const OutputValues& output)
{
    constexpr double overflow_volts = 10000.0;
    if (output.has_voltage && std::fabs(output.voltage) >= overflow_volts)
        field.show(Color::bad, "* * * Overflow * * * ");
    else
        show_measured_voltage(field, output);
}

} // namespace

void OutputDataFields::show(const OutputData& data) const
{
    show_target(target, data.target);
    active.show(yes_no(data.pwm.active != 0));
    set.show(Color::value, data.pwm.voltage_set, volts_format);
    measured.show(Color::value, data.pwm.voltage_measured, volts_format);
    show_microseconds(period, data.pwm.period);
    show_microseconds(width, data.pwm.width);
    show_microseconds(phase_measured, data.pwm.phase_measured);
    show_microseconds(phase_set, data.pwm.phase_set);
    show_measured_voltage_or_overflow(voltage, data.output);
    show_measured_current(current, data.output, 5);
}
