#include "protocol/supply_steps.h"

#include <array>

#include "frame/device_call.h"
#include "frame/numbers.h"
#include "modules/hardware_types.h"
#include "modules/output.h"
#include "protocol/module_steps.h"

namespace
{

bool set_target(unsigned address, double volts)
{
    return call(LIB(SetHVsupplyTargetOutputVoltage), address, volts);
}

/// One target: set, read back, settled, measured; a row of the table in the file.
bool measure_target(Report& report, unsigned address, unsigned volts)
{
    constexpr std::int64_t settling_ms = 20'000;
    if (!set_target(address, volts))
        return false;
    double read_back = 0.0;
    if (!succeeded(attempt_target_voltage(address, read_back)))
        return false;
    console.print("  Target output voltage: ");
    console.print(Color::value, "%uV", volts);
    console.print(" set, ");
    console.print(Color::value, "%.3lfV", read_back);
    console.print(" get\n");
    std::array<Source, 2> sources = {voltage_source(address), current_source(address)};
    if (!wait(report, settling_ms, Space::stops) ||
        !collect(report, "  Output data", address, sources))
        return false;
    const Source& voltage = sources[0];
    const Statistics& volts_measured = voltage.channels.front().statistics;
    const Statistics& amperes_measured = sources[1].channels.front().statistics;
    console.print("  Measured voltage: ");
    console.print(Color::value, "%s", value_text(quantity::volts, volts_measured.mean()).c_str());
    console.print(", period: ");
    console.print(Color::value, "%.0lfms", voltage.period_ms());
    console.print(", measured current: ");
    console.print(Color::value, "%s",
                  value_text(quantity::picoamperes, amperes_measured.mean()).c_str());
    console.print("\n");
    report.file_only(formatted("%uV\t%.3lfV\t%s\t%.0lfms\t%s", volts, read_back,
                               statistics_text(quantity::volts, volts_measured).c_str(),
                               voltage.period_ms(),
                               statistics_text(quantity::picoamperes, amperes_measured).c_str()));
    report.flush();
    return report.is_good();
}

bool measure_polarity(Report& report, unsigned address, std::uint32_t range, bool negative)
{
    constexpr unsigned targets = 10;
    const MeasurementRanges ranges = {.negative = negative, .high = false};
    if (!set_ranges_and_check(report, address, ranges, Space::stops) ||
        !activate_and_check(report, address, true))
        return false;
    console.print("  Testing module %u output voltage, range %uV:\n", address, range);
    report.file_only(formatted("Output Data (%s):", ranges.polarity()));
    report.file_only("Target voltage set\tTarget voltage get\tMeasured voltage\tPeriod\t"
                     "Measured current");
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
    return report.is_good();
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
