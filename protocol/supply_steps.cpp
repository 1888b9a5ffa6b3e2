#include "protocol/supply_steps.h"

#include "frame/device_call.h"
#include "instrument/supply_output.h"
#include "protocol/module_steps.h"
#include "protocol/report/schedule.h"

#include <array>

namespace
{

bool set_target(unsigned address, double volts)
{
    return call(LIB(SetHVsupplyTargetOutputVoltage), address, volts);
}

/// One target: set, read back, settled, measured; a row of that table.
bool measure_target(Report& report, unsigned address, unsigned volts)
{
    if (!set_target(address, volts))
        return false;
    double read_back = 0.0;
    if (!succeeded(attempt_target_voltage(address, read_back)))
        return false;
    // Told before the wait; the file has it in the row below.
    console.print("  Target output voltage: ");
    console.print(Color::value, "%uV", volts);
    console.print(" set, ");
    console.print(Color::value, "%s", value_text(quantity::volts, read_back).c_str());
    console.print(" get\n");
    std::array<SampleSource, 2> sources = {voltage_source(address), current_source(address)};
    const auto& [voltage, current] = sources;
    if (!wait(report, settling_ms::target, SpaceKey::stops) ||
        !collect(report, "Output data", address, sources))
        return false;
    const auto measured = [](const char* label, const QuantityFormat& quantity,
                             const SampleSource& source) {
        const Statistics& statistics = source.channels.front().statistics;
        return ReportItem{.label = label,
                          .value = value_text(quantity, statistics.mean()),
                          .file_value = statistics_text(quantity, statistics)};
    };
    const ReportItem items[] = {
        {.label = report_text::target_set, .value = formatted("%uV", volts)},
        {.label = report_text::target_get, .value = value_text(quantity::volts, read_back)},
        measured(report_text::measured_voltage, quantity::volts, voltage),
        {.label = report_text::measured_period, .value = formatted("%.0lfms", voltage.period_ms())},
        measured(report_text::measured_current, quantity::picoamperes, current)};
    constexpr std::size_t told_before = 2;
    report.row(items, told_before);
    report.flush();
    return may_go_on(report);
}

bool measure_polarity(Report& report, unsigned address, std::uint32_t range, bool negative)
{
    const MeasurementRanges ranges = {.negative = negative, .high = false};
    // The target that was set before the test must not reach the output.
    if (!set_target(address, 0.0) ||
        !set_ranges_and_check(report, address, ranges, SpaceKey::stops) ||
        !activate_and_check(report, address, true))
        return false;
    report.text(formatted(report_text::testing_output, address, range));
    // Kept: "Data" with a capital letter, unlike everywhere else.
    report.file_only(formatted(report_text::output_table, ranges.polarity()));
    report.columns(std::array{report_text::target_set, report_text::target_get,
                              report_text::measured_voltage, report_text::measured_period,
                              report_text::measured_current});
    const TargetSteps targets{range};
    for (unsigned number = 1; number <= targets.count; ++number) {
        if (!measure_target(report, address, number * targets.step))
            return false;
    }
    if (!set_target(address, 0.0))
        return false;
    report.item({.label = report_text::target_voltage, .value = report_text::zero_volts});
    return may_go_on(report);
}

} // namespace

bool run_supply_steps(Report& report, const ProductData& data, unsigned slot)
{
    const std::uint32_t range = data.voltage_range(slot);
    report_slot_heading(report, slot);
    report.indent(true);
    const bool passed =
        measure_polarity(report, slot, range, false) && measure_polarity(report, slot, range, true);
    report.indent(false);
    return passed;
}
