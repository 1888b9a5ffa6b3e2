#include "protocol/controller_data.h"

#include "frame/device_call.h"
#include "frame/program.h"
#include "frame/terminal/console.h"
#include "instrument/controller_readings.h"
#include "instrument/status_words.h"
#include "instrument/words.h"
#include "protocol/report/report_items.h"
#include "protocol/unit_data.h"

#include <initializer_list>
#include <span>

namespace
{

bool report_enable_state(Report& report)
{
    progress("Getting enable state of the device:\r\n");
    std::uint8_t enabled = 0;
    if (!call(LIB(GetEnable), &enabled))
        return false;
    // The words are padded to one length: nothing but the colon stands before them.
    const ColoredText& word = yes_no(enabled != 0);
    report.item({.label = report_text::device_enabled,
                 .value = word.text,
                 .color = word.color,
                 .divider = ":",
                 .file_value = bare(word.text)});
    return true;
}

bool report_overall_state(Report& report, std::uint16_t& state)
{
    progress("Getting overall state:\r\n");
    if (!call(LIB(GetState), &state))
        return false;
    const ColoredText word = overall_state_word(state);
    report.item({.label = report_text::overall,
                 .value = hex_text(state, 4) + " = " + bare(word.text),
                 .color = word.color});
    return true;
}

template <class State, class Function>
bool report_state(Report& report, const char* name, const char* label,
                  LibraryFunction<Function> function,
                  std::initializer_list<std::span<const BitField>> tables)
{
    progress("Getting %s:\r\n", name);
    State state = 0;
    if (!call(function, &state))
        return false;
    report_word(report, label, state, sizeof state * 8, tables);
    return true;
}

bool report_power_monitors(Report& report)
{
    progress("Getting the power monitor state:\r\n");
    PowerMonitors monitors;
    if (!succeeded(attempt_power_monitors(monitors)))
        return false;
    BareLabels labels;
    ReportItems items;
    add_fields(items, labels, power_monitor_fields, monitors);
    report.group(report_text::power_monitors, items);
    return true;
}

bool report_temperature_state(Report& report)
{
    progress("Getting temperature state:\r\n");
    std::uint8_t state = 0;
    if (!call(LIB(GetTemperatureState), &state))
        return false;
    BareLabels labels;
    ReportItems items{{.label = report_text::temperature_state, .value = word_text(state, 8)}};
    add_fields(items, labels, temperature_state_fields, state);
    report.items(items);
    return true;
}

bool report_inputs(Report& report)
{
    progress("Getting the device input levels:\r\n");
    InputLevels levels;
    if (!succeeded(attempt_input_levels(levels)))
        return false;
    BareLabels labels;
    ReportItems items;
    add_fields(items, labels, input_level_fields, levels);
    report.group(report_text::inputs, items);
    return true;
}

/// Uptime and operation time: the current value and the total.
bool report_times(Report& report, const char* name, const char* label, const char* divider,
                  Failure (*attempt_times)(RunTimes&))
{
    progress("Getting the device %s:\r\n", name);
    RunTimes times;
    if (!succeeded(attempt_times(times)))
        return false;
    const ReportItem items[] = {{.label = label, .value = times.text(), .divider = divider},
                                {.label = report_text::total, .value = times.total_text()}};
    report.items(items);
    return true;
}

bool report_controller_state(Report& report, std::uint16_t& overall)
{
    using Byte = std::uint8_t;
    return report_enable_state(report) && report_overall_state(report, overall) &&
           report_led_data(report, {}) &&
           report_state<Byte>(report, "device state", report_text::device_state,
                              LIB(GetDeviceState), {device_state_fields}) &&
           report_state<std::uint16_t>(report, "interlock state", report_text::interlock_state,
                                       LIB(GetInterlockState),
                                       {heat_controller_interlock_fields,
                                        controller_interlock_fields, resulting_interlock_fields}) &&
           report_state<Byte>(report, "HV-PSU interlock enable mask",
                              report_text::hv_supply_interlock_mask,
                              LIB(GetHVsupplyInterlockEnable), {interlock_mask_fields}) &&
           report_state<Byte>(report, "heat-controller interlock enable mask",
                              report_text::heat_controller_interlock_mask,
                              LIB(GetHeatCtrlInterlockEnable), {interlock_mask_fields}) &&
           report_state<Byte>(report, "voltage state", report_text::voltage_state,
                              LIB(GetVoltageState), {voltage_state_fields}) &&
           report_power_monitors(report) && report_temperature_state(report) &&
           report_state<Byte>(report, "fan state", report_text::fan_state, LIB(GetFanState),
                              {fan_state_fields}) &&
           report_state<Byte>(report, "function of the slide switch 'Fan'", report_text::fan_switch,
                              LIB(GetFanSwitchOverride), {fan_switch_fields}) &&
           report_inputs(report) &&
           // The second blank lets the two times stand below each other.
           report_times(report, "uptime", report_text::uptime, ":  ", attempt_uptime) &&
           report_times(report, "operation time", report_text::operation_time, ": ",
                        attempt_operation_time);
}

} // namespace

bool report_controller(Report& report, std::uint16_t& overall_state)
{
    UnitKind kind;
    const ReportedUnit controller;
    if (!report_identification(report, controller) || !report_kind(report, controller, kind) ||
        !report_manufacturing_date(report, controller) ||
        !report_controller_state(report, overall_state))
        return false;
    report.end_section();
    return true;
}
