#include "protocol/supply_steps.h"

#include "frame/device_call.h"
#include "instrument/addresses.h"
#include "instrument/module_hardware.h"
#include "instrument/supply_output.h"
#include "protocol/module_steps.h"

#include <array>

namespace
{

bool set_target(unsigned address, double volts)
{
    return call(LIB(SetHVsupplyTargetOutputVoltage), address, volts);
}

/// The columns of the table in the file.
namespace column
{
constexpr const char* target_set = "Target voltage set";
constexpr const char* target_get = "Target voltage get";
constexpr const char* voltage = "Measured voltage";
constexpr const char* period = "Period";
constexpr const char* current = "Measured current";
} // namespace column

/// One target: set, read back, settled, measured; a row of that table.
bool measure_target(Report& report, unsigned address, unsigned volts)
{
    constexpr std::int64_t settling_ms = 20'000;
    if (!set_target(address, volts))
        return false;
    double read_back = 0.0;
    if (!succeeded(attempt_target_voltage(address, read_back)))
        return false;
    // Told before the wait; the file has it in the row below.
    console.print("  Target output voltage: ");
    console.print(Color::value, "%uV", volts);
    console.print(" set, ");
    console.print(Color::value, "%.3lfV", read_back);
    console.print(" get\n");
    std::array<SampleSource, 2> sources = {voltage_source(address), current_source(address)};
    const auto& [voltage, current] = sources;
    if (!wait(report, settling_ms, SpaceKey::stops) ||
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
        {.label = column::target_set, .value = formatted("%uV", volts)},
        {.label = column::target_get, .value = formatted("%.3lfV", read_back)},
        measured(column::voltage, quantity::volts, voltage),
        {.label = column::period, .value = formatted("%.0lfms", voltage.period_ms())},
        measured(column::current, quantity::picoamperes, current)};
    report.row(items);
    report.flush();
    return may_go_on(report);
}

bool measure_polarity(Report& report, unsigned address, std::uint32_t range, bool negative)
{
    constexpr unsigned targets = 10;
    const MeasurementRanges ranges = {.negative = negative, .high = false};
    // The target that was set before the test must not reach the output.
    if (!set_target(address, 0.0) ||
        !set_ranges_and_check(report, address, ranges, SpaceKey::stops) ||
        !activate_and_check(report, address, true))
        return false;
    report.text(formatted("Testing module %u output voltage, range %uV:", address, range));
    // Kept: "Data" with a capital letter, unlike everywhere else.
    report.file_only(formatted("Output Data (%s):", ranges.polarity()));
    report.columns(std::array{column::target_set, column::target_get, column::voltage,
                              column::period, column::current});
    // Whole volts: a range that is no multiple of ten has more targets, or ends below its top; one
    // below ten has none.
    const unsigned step = range / targets;
    for (unsigned volts = step; step > 0 && volts <= range; volts += step) {
        if (!measure_target(report, address, volts))
            return false;
    }
    if (!set_target(address, 0.0))
        return false;
    report.item({.label = "Target output voltage", .value = "0V"});
    return may_go_on(report);
}

} // namespace

bool run_supply_steps(Report& report, const ProductData& data)
{
    for (unsigned slot = 1; slot <= highest_slot; ++slot) {
        if (!data.fits(slot))
            continue;
        const std::uint32_t range = hv_supply_hardware::voltage_range.of(data.hardware_types[slot]);
        report_slot_heading(report, slot);
        report.indent(true);
        const bool passed = measure_polarity(report, slot, range, false) &&
                            measure_polarity(report, slot, range, true);
        report.indent(false);
        if (!passed)
            return false;
    }
    return true;
}
