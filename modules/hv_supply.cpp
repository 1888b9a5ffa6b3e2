#include "modules/hv_supply.h"

#include "frame/device_call.h"
#include "frame/live_display.h"
#include "frame/program.h"
#include "frame/terminal/console.h"
#include "frame/terminal/keys.h"
#include "instrument/addresses.h"
#include "instrument/words.h"
#include "modules/output.h"

#include <string>

namespace
{

void print_ranges(const std::string& name, const char* between, MeasurementRanges ranges)
{
    console.print("Measurement channels of %s%s Voltage: ", name.c_str(), between);
    console.print(Color::value, "%s", ranges.polarity());
    console.print(", Current: ");
    console.print(Color::value, "%s", ranges.current_range());
    console.print("\r\n");
}

void print_target(const std::string& name, const char* between, double volts)
{
    console.print("Target output voltage of %s%s", name.c_str(), between);
    if (volts < 0.0)
        console.print(off_word);
    else
        console.print(Color::value, "%.1lfV", volts);
    console.print("\r\n");
}

void set_measurement_ranges(const Given& given)
{
    const std::string name = module_name(given.address);
    progress("Setting measurement channels of %s:\r\n", name.c_str());
    const MeasurementRanges ranges = {.negative = given.negative_voltage,
                                      .high = given.high_current};
    if (succeeded(attempt_to_set_ranges(given.address, ranges)))
        print_ranges(name, " were set:", ranges);
}

} // namespace

void show_measurement_ranges(const Given& given)
{
    const std::string name = module_name(given.address);
    progress("Getting measurement channels of %s:\r\n", name.c_str());
    MeasurementRanges ranges;
    if (succeeded(attempt_ranges(given.address, ranges)))
        print_ranges(name, ":", ranges);
}

void show_or_set_measurement_ranges(const Given& given)
{
    if (given.has_ranges)
        set_measurement_ranges(given);
    else
        show_measurement_ranges(given);
}

void show_target_voltage(const Given& given)
{
    const std::string name = module_name(given.address);
    progress("Getting target output voltage of %s:\r\n", name.c_str());
    double volts = 0.0;
    if (call_twice(LIB(GetHVsupplyTargetOutputVoltage), given.address, &volts))
        print_target(name, ": ", volts);
}

void set_target_voltage(const Given& given)
{
    const std::string name = module_name(given.address);
    progress("Setting target output voltage of %s:\r\n", name.c_str());
    if (call_twice(LIB(SetHVsupplyTargetOutputVoltage), given.address, given.real))
        print_target(name, " set to ", given.real);
}

void show_output(const Given& given)
{
    const unsigned address = given.address;
    const std::string name = module_name(address);
    progress("Getting output voltage & current of %s:\r\n", name.c_str());
    MeasurementRanges ranges;
    if (!succeeded(attempt_ranges(address, ranges)))
        return;
    OutputValues output;
    Field voltage, current;
    run_live_display<OutputValues>(
        {.continuous = given.capital,
         .on_key = [&](int key) -> Failure {
             return change_ranges(folded(key), ranges) ? attempt_to_set_ranges(address, ranges)
                                                       : Failure{};
         }},
        [&](LiveFields& fields) {
            constexpr int gap = 2;
            const std::string title = "Output voltage & current of " + name;
            if (given.capital && !program.quiet) {
                print_live_title(title, ", ", true);
                print_range_keys();
                console.print("\r\n    ");
            } else {
                print_live_title(title, ": ", false);
            }
            fields.place_rates(fine_rates_in_header);
            console.print("\r\n");
            console.skip(2);
            voltage = place_field("Voltage: ", measured_columns, gap);
            current = place_field("Current: ", measured_columns);
        },
        [&](OutputValues& shown) {
            std::uint8_t data_ready = 0;
            if (const Failure failed = attempt(LIB(GetModuleDataReadyFlags), address, &data_ready))
                return Reading{failed};
            NewOutput news;
            const Failure failed = attempt_output(address, data_ready, ranges, output, news);
            shown = output;
            return Reading::partly(failed);
        },
        [&](const OutputValues& shown) {
            show_measured_voltage(voltage, shown);
            show_measured_current(current, shown, 3);
        });
}

namespace
{

/// Three rows under the title.
OutputDataFields place_output_data()
{
    OutputDataFields fields;
    constexpr int columns_to_second = 25;
    constexpr int columns_to_third = 19;
    constexpr int columns_to_fourth = 14;
    const auto begin_row = [] {
        console.print("\r\n");
        console.skip(3);
    };
    // The columns of the first row are those of the rows below.
    const auto place_at = [](const Field& above, int columns_from_there, const char* label,
                             int columns = output_columns) {
        console.move_to_column(above.place().column + columns_from_there);
        return place_field(label, columns);
    };
    begin_row();
    fields.period = place_field("PWM Period: ", output_columns);
    fields.width = place_at(fields.period, columns_to_second, "Width: ");
    fields.phase_measured = place_at(fields.width, columns_to_third, "Phase measured: ");
    fields.phase_set = place_at(fields.phase_measured, columns_to_fourth, "Phase set: ");
    begin_row();
    fields.voltage = place_field("Voltage: ", measured_columns);
    fields.current = place_at(fields.period, columns_to_second, "Current: ", measured_columns);
    begin_row();
    fields.measured = place_field("Measured: ", output_columns);
    fields.set = place_at(fields.period, columns_to_second, "Set: ");
    fields.target = place_at(fields.width, columns_to_third, "Target: ");
    fields.active = place_at(fields.phase_measured, columns_to_fourth, "Active: ", 3);
    return fields;
}

} // namespace

void show_output_data(const Given& given)
{
    const unsigned address = given.address;
    const std::string name = module_name(address);
    progress("Getting output data of %s:\r\n", name.c_str());
    MeasurementRanges ranges;
    if (!succeeded(attempt_ranges(address, ranges)))
        return;
    OutputData latest;
    Failure target_failed;
    OutputDataFields places;
    run_live_display<OutputData>(
        {.continuous = given.capital},
        [&](LiveFields& fields) {
            console.print("Output data of %s", name.c_str());
            if (given.capital) { // in quiet mode, too
                print_how_to_quit();
                console.print(": ");
            }
            console.skip(4);
            fields.place_rates(fine_rates_in_header);
            places = place_output_data();
            console.flush();
            target_failed = attempt_target_voltage(address, latest.target);
            if (!target_failed)
                show_target(places.target, latest.target);
        },
        [&](OutputData& shown) {
            if (target_failed)
                return Reading{target_failed};
            if (const Failure failed = attempt_pwm_parameters(address, latest.pwm))
                return Reading{failed};
            NewOutput news;
            const Failure failed =
                attempt_output(address, latest.pwm.data_ready, ranges, latest.output, news);
            shown = latest;
            return Reading::partly(failed);
        },
        [&](const OutputData& shown) { places.show(shown); });
}
