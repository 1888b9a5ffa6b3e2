#include "protocol/heater_steps.h"

#include "frame/device_call.h"
#include "instrument/addresses.h"
#include "protocol/module_steps.h"
#include "protocol/report/schedule.h"
#include "protocol/report/series.h"

namespace
{

/// A setting of the heat-controller that the test changes, in the report's own words.
struct TestSetting {
    const char* label;
    const char* unit; ///< Kept: none for the temperature.
    LibraryFunction<std::int32_t(const double*)> set;
};

constexpr TestSetting target_temperature = {report_text::target_temperature, "",
                                            LIB(SetHeatCtrlHeaterTemperature)};
constexpr TestSetting power_limit = {report_text::power_limit, "W", LIB(SetHeatCtrlPowerLimit)};
constexpr TestSetting current_limit = {report_text::current_limit, "A",
                                       LIB(SetHeatCtrlCurrentLimit)};
constexpr TestSetting voltage_limit = {report_text::voltage_limit, "V",
                                       LIB(SetHeatCtrlVoltageLimit)};

bool set(Report& report, const TestSetting& setting, double value)
{
    const double* const sent = &value;
    if (!call(setting.set, sent))
        return false;
    report.text(
        formatted("%s%s%.3lf%s", setting.label, report_text::is_set_to, value, setting.unit));
    return may_go_on(report);
}

/// Lets the heater settle under its limits, then measures it.
bool measure_run(Report& report, const char* run)
{
    const std::string title = formatted("%s (%s)", report_text::monitoring, run);
    return wait(report, settling_ms::heater, SpaceKey::stops) &&
           measure_heater(report, title.c_str(), true);
}

bool run_under_limits(Report& report, const ProductData& data)
{
    const auto& [by_voltage, by_current, by_power, unlimited] = heater_runs;
    const HeaterLimits& maxima = data.heater_maxima;
    return set(report, target_temperature, maxima.temperature) &&
           set(report, power_limit, maxima.power) && set(report, current_limit, maxima.current) &&
           set(report, voltage_limit, limited_part * maxima.voltage) &&
           activate_and_check(report, heat_controller, true) && measure_run(report, by_voltage) &&
           set(report, voltage_limit, maxima.voltage) &&
           set(report, current_limit, limited_part * maxima.current) &&
           measure_run(report, by_current) && set(report, current_limit, maxima.current) &&
           set(report, power_limit, limited_part * maxima.power) && measure_run(report, by_power) &&
           set(report, power_limit, maxima.power) && measure_run(report, unlimited) &&
           activate_and_check(report, heat_controller, false);
}

} // namespace

bool run_heater_steps(Report& report, const ProductData& data)
{
    report_slot_heading(report, heat_controller);
    report.indent(true);
    const bool passed = run_under_limits(report, data);
    report.indent(false);
    return passed;
}
