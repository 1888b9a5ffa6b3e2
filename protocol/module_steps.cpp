#include "protocol/module_steps.h"

#include "frame/device_call.h"
#include "instrument/addresses.h"
#include "instrument/device_types.h"
#include "instrument/module_readings.h"
#include "instrument/words.h"
#include "protocol/report/report_items.h"
#include "protocol/report/schedule.h"

namespace
{

bool measure_cpu_load(Report& report, unsigned address)
{
    return take_series(report, report_text::cpu_data, {},
                       {.what = "CPU data",
                        .channels = {{"load", &quantity::percent}},
                        .count = series::cpu.count,
                        .fetch = [address](std::span<double> values) {
                            return Sample{attempt(LIB(GetModuleCPUdata), address, &values[0])};
                        }});
}

bool measure_housekeeping(Report& report, unsigned address)
{
    SampleSource source{.what = "housekeeping data",
                        .channels = {},
                        .count = series::housekeeping.count,
                        .ready_bit = ready_bit::housekeeping,
                        .fetch = {}};
    sample_records<ModuleHousekeeping>(
        source, channels::module_housekeeping(address), [address](ModuleHousekeeping& record) {
            const Failure failed = attempt_housekeeping(address, record);
            return Sample{failed, record.valid != 0};
        });
    return take_series(report, report_text::housekeeping, address, std::move(source));
}

/// Sets one thing of the ranges and tells what came of it.
bool report_range(Report& report, const char* what, const char* wanted, bool is_so)
{
    if (is_so)
        report.result(std::string{what} + report_text::range_has_been + wanted, Color::label);
    else
        report.result(std::string{what} + " range could not be set to " + wanted, Color::bad);
    return is_so;
}

/// The currents and voltages that an HV-supply measures while it is off.
bool measure_idle_supply(Report& report, unsigned address)
{
    const auto set = [&](bool negative, bool high) {
        return set_ranges_and_check(report, address, {.negative = negative, .high = high},
                                    SpaceKey::ignored);
    };
    const auto measure = [&](const char* title, const char* label, SampleSource source) {
        source.channels.front().label = label;
        return take_series(report, title, address, std::move(source));
    };
    return set(false, false) &&
           measure(report_text::low_range_output, report_text::current, current_source(address)) &&
           set(false, true) &&
           measure(report_text::high_range_output, report_text::current, current_source(address)) &&
           measure(report_text::positive_output, report_text::voltage, voltage_source(address)) &&
           set(true, true) &&
           measure(report_text::negative_output, report_text::voltage, voltage_source(address));
}

/// The one value of a measurement at an output.
Sample fetch_output(Failure (*attempt_measurement)(unsigned, OutputMeasurement&), unsigned address,
                    std::span<double> values)
{
    OutputMeasurement measured;
    const Failure failed = attempt_measurement(address, measured);
    values[0] = measured.value;
    return {failed, measured.valid != 0};
}

bool measure_slot(Report& report, unsigned slot)
{
    if (!measure_cpu_load(report, slot) || !measure_housekeeping(report, slot) ||
        !activate_and_check(report, slot, false))
        return false;
    return slot == heat_controller ? measure_heater(report, report_text::monitoring, false)
                                   : measure_idle_supply(report, slot);
}

} // namespace

bool run_idle_slot_steps(Report& report, const ProductData& data, unsigned slot)
{
    report_slot_heading(report, slot);
    report.indent(true);
    bool passed = true;
    if (slot >= data.presence.slots() || !data.presence.has_slot(slot))
        report.text(report_text::no_module, Color::warning);
    else if (!data.fits(slot))
        report.text(report_text::wrong_module, Color::warning);
    else
        passed = measure_slot(report, slot);
    report.indent(false);
    return passed && may_go_on(report);
}

void report_slot_heading(Report& report, unsigned slot)
{
    const std::string heading = slot_text(slot) + ':';
    report.heading(heading, heading);
}

bool activate_and_check(Report& report, unsigned address, bool on)
{
    report.text(on ? report_text::activating : report_text::deactivating);
    if (!call(LIB(SetModuleActivationState), address, static_cast<std::uint8_t>(on)))
        return false;
    std::uint8_t state = 0;
    if (!call(LIB(GetModuleActivationState), address, &state))
        return false;
    const std::string wanted = enabled_or_disabled(on).text;
    if ((state != 0) != on) {
        // Kept: with the exclamation mark that the same line on the device has not.
        report.result("Module could not be " + wanted + '!', Color::bad);
        return false;
    }
    report.result(report_text::module_has_been + wanted, Color::label);
    return may_go_on(report);
}

bool set_ranges_and_check(Report& report, unsigned address, MeasurementRanges ranges,
                          SpaceKey space)
{
    report.text(report_text::setting_channels);
    if (!succeeded(attempt_to_set_ranges(address, ranges)) ||
        !wait(report, settling_ms::ranges, space))
        return false;
    MeasurementRanges read_back;
    if (!succeeded(attempt_ranges(address, read_back)))
        return false;
    const bool current_is_set =
        report_range(report, report_text::current_channel, ranges.current_range(),
                     (read_back.high != 0) == (ranges.high != 0));
    const bool voltage_is_set =
        report_range(report, report_text::voltage_channel, ranges.polarity(),
                     (read_back.negative != 0) == (ranges.negative != 0));
    return current_is_set && voltage_is_set && may_go_on(report);
}

bool measure_heater(Report& report, const char* title, bool with_power)
{
    SampleSource source{.what = "monitoring data",
                        .channels = {{"output voltage", &quantity::volts},
                                     {"heater voltage", &quantity::volts},
                                     {report_text::current, &quantity::amperes}},
                        .count = series::monitoring.count,
                        .ready_bit = ready_bit::monitoring,
                        .fetch = {}};
    if (with_power)
        source.channels.push_back({report_text::power, &quantity::watts});
    source.channels.push_back({.label = "heater temperature",
                               .quantity = &quantity::fine_degrees,
                               .as_range = with_power});
    source.fetch = [with_power](std::span<double> values) {
        HeaterMonitoring monitoring;
        const Failure failed = attempt_monitoring(monitoring);
        values[0] = monitoring.output_voltage;
        values[1] = monitoring.heater_voltage;
        values[2] = monitoring.current;
        if (with_power)
            values[3] = monitoring.heater_power();
        values.back() = monitoring.temperature;
        return Sample{failed, monitoring.ready != 0};
    };
    return take_series(report, title, heat_controller, std::move(source));
}

SampleSource voltage_source(unsigned address)
{
    return {.what = "output voltage",
            .channels = {{"", &quantity::volts}},
            .count = series::voltage.count,
            .ready_bit = ready_bit::output_voltage,
            .fetch = [address](std::span<double> values) {
                return fetch_output(attempt_output_voltage, address, values);
            }};
}

SampleSource current_source(unsigned address)
{
    return {.what = "output current",
            .channels = {{"", &quantity::picoamperes}},
            .count = series::current.count,
            .ready_bit = ready_bit::output_current,
            .fetch = [address](std::span<double> values) {
                return fetch_output(attempt_output_current, address, values);
            }};
}

bool run_base_unit_steps(Report& report, const ProductData& data)
{
    report.heading("Base unit:", "Base unit:");
    report.indent(true);
    bool passed = true;
    if (!data.presence.has_base_unit())
        report.text(report_text::base_unit_missing, Color::warning);
    else if (!data.has_base_unit_of_its_kind())
        report.text(report_text::no_base_unit, Color::warning);
    else
        passed = measure_cpu_load(report, base_unit) && measure_housekeeping(report, base_unit);
    report.indent(false);
    return passed && may_go_on(report);
}
