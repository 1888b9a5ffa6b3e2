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

// What a value may take: all of its field, so that a shorter one leaves no remains of a longer.
constexpr int short_columns = 12;
constexpr int long_columns = 24;

void show_voltage(Place place, double volts)
{
    console.print_at(place, Color::value, "%+9.3lfV", volts);
    console.blank_to_column(place.column + short_columns);
}

/// Of a time in s.
void show_microseconds(Place place, double seconds)
{
    constexpr double microseconds = 1e6;
    console.print_at(place, Color::value, "%8.5lfus", seconds * microseconds);
    console.blank_to_column(place.column + short_columns);
}

} // namespace

void show_measured_voltage(Place place, const OutputValues& output)
{
    if (!output.has_voltage)
        return;
    console.print_at(place, Color::value, "%+9.3lfV (%s)", output.voltage,
                     output.voltage_ranges.polarity());
    console.blank_to_column(place.column + long_columns);
}

void show_measured_current(Place place, const OutputValues& output, int decimals)
{
    constexpr int width_without_decimals = 7;
    if (!output.has_current)
        return;
    console.print_at(place, Color::value, "%+*.*leA (%s", width_without_decimals + decimals,
                     decimals, output.current, output.current_ranges.high != 0 ? "high)" : "low) ");
    console.blank_to_column(place.column + long_columns);
}

void show_target(Place place, double volts)
{
    if (volts < 0.0) {
        console.print_at(place, Color::bad, "** off ** ");
        console.blank_to_column(place.column + short_columns);
    } else {
        show_voltage(place, volts);
    }
}

namespace
{

void show_measured_voltage_or_overflow(Place place, const OutputValues& output)
{
    constexpr double overflow_volts = 10000.0;
    if (output.has_voltage && std::fabs(output.voltage) >= overflow_volts) {
        console.print_at(place, Color::bad, "* * * Overflow * * * ");
        console.blank_to_column(place.column + long_columns);
    } else {
        show_measured_voltage(place, output);
    }
}

} // namespace

void OutputDataFields::show(const OutputData& data) const
{
    show_target(target, data.target);
    console.print_at(active, yes_no(data.pwm.active != 0));
    show_voltage(set, data.pwm.voltage_set);
    show_voltage(measured, data.pwm.voltage_measured);
    show_microseconds(period, data.pwm.period);
    if (width.row > 0)
        show_microseconds(width, data.pwm.width);
    if (phase_measured.row > 0)
        show_microseconds(phase_measured, data.pwm.phase_measured);
    if (phase_set.row > 0)
        show_microseconds(phase_set, data.pwm.phase_set);
    show_measured_voltage_or_overflow(voltage, data.output);
    show_measured_current(current, data.output, 5);
}
