#include "protocol/heater_steps.h"

#include "frame/device_call.h"
#include "frame/numbers.h"
#include "protocol/module_steps.h"

namespace
{

/// A setting of the heat-controller that the test changes.
struct Setting {
    const char* label;
    const char* unit;
    LibraryFunction<std::int32_t(const double*)> set;
};

constexpr Setting target_temperature = {"Target heater temperature", "",
                                        LIB(SetHeatCtrlHeaterTemperature)};
constexpr Setting power_limit = {"Power limit", "W", LIB(SetHeatCtrlPowerLimit)};
constexpr Setting current_limit = {"Current limit", "A", LIB(SetHeatCtrlCurrentLimit)};
constexpr Setting voltage_limit = {"Voltage limit", "V", LIB(SetHeatCtrlVoltageLimit)};

bool set(Report& report, const Setting& setting, double value)
{
    const double* const sent = &value;
    if (!call(setting.set, sent))
        return false;
    report.text(formatted("%s set to %.3lf%s", setting.label, value, setting.unit));
    return may_go_on(report);
}

/// Lets the heater settle under its limits, then measures it.
bool measure_run(Report& report, const char* title)
{
    constexpr std::int64_t settling_ms = 10'000;
    return wait(report, settling_ms, SpaceKey::stops) && measure_heater(report, title, true);
}

bool run_under_limits(Report& report, const ProductData& data)
{
    constexpr double part = 0.1; // of what the hardware allows, where a run is limited
    return set(report, target_temperature, data.maximum_temperature) &&
           set(report, power_limit, data.maximum_power) &&
           set(report, current_limit, data.maximum_current) &&
           set(report, voltage_limit, part * data.maximum_voltage) &&
           activate_and_check(report, heat_controller, true) &&
           measure_run(report, "Monitoring data (voltage-limited)") &&
           set(report, voltage_limit, data.maximum_voltage) &&
           set(report, current_limit, part * data.maximum_current) &&
           measure_run(report, "Monitoring data (current-limited)") &&
           set(report, current_limit, data.maximum_current) &&
           set(report, power_limit, part * data.maximum_power) &&
           measure_run(report, "Monitoring data (power-limited)") &&
           set(report, power_limit, data.maximum_power) &&
           measure_run(report, "Monitoring data (unlimited)") &&
           activate_and_check(report, heat_controller, false);
}

} // namespace

bool run_heater_steps(Report& report, const ProductData& data)
{
    if (!data.fits(heat_controller))
        return true;
    report_slot_heading(report, heat_controller);
    report.indent(true);
    const bool passed = run_under_limits(report, data);
    report.indent(false);
    return passed;
}
