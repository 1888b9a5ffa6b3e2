#include "protocol/product_report.h"

#include "frame/device_call.h"
#include "frame/program.h"
#include "frame/terminal/console.h"
#include "frame/text/format.h"
#include "instrument/module_hardware.h"
#include "instrument/module_state.h"
#include "instrument/supply_output.h"
#include "instrument/words.h"
#include "protocol/controller_data.h"
#include "protocol/report/report_items.h"
#include "protocol/sampling.h"
#include "protocol/unit_data.h"

#include <algorithm>

namespace
{

bool report_run(Report& report)
{
    report.text(report_text::created_on + timestamp());
    report.end_section();
    progress("Getting DLL version:\r\n");
    report.item(
        {.label = report_text::dll_version, .value = version_text(device_library().version())});
    report.end_section();
    const ReportItem port[] = {
        {.label = report_text::communication_port,
         .value = formatted("COM%u", unsigned{program.port})},
        {.label = report_text::data_rate, .value = formatted("%u baud", program.data_rate)}};
    report.items(port);
    report.end_section();
    return true;
}

// ---- The scan of the modules ----

bool report_scanned_module(Report& report, const std::string& place, std::uint8_t flag,
                           unsigned address)
{
    ScannedModule module;
    if (!succeeded(attempt_scanned_module(address, module)))
        return false;
    const bool same_number = module.product_number == module.saved_product_number;
    const bool same_type = module.hardware_type == module.saved_hardware_type;
    const auto verdict = [](bool same) { return bare(ok_or_fail(same).text); };
    const std::string text =
        formatted("%s, P/N scanned: %6d, saved: %6d, %s   HW type scanned: %08Xh, saved: %08Xh, %s",
                  presence_text(flag), module.product_number, module.saved_product_number,
                  verdict(same_number).c_str(), module.hardware_type, module.saved_hardware_type,
                  verdict(same_type).c_str());
    report.item({.label = place.c_str(),
                 .value = text,
                 .color = same_number && same_type ? Color::value : Color::not_good});
    return true;
}

bool report_module_scan(Report& report, ModulePresence& presence)
{
    progress("Getting state of the module scan:\r\n");
    std::uint8_t changed = 0;
    if (!call(LIB(GetScannedModuleState), &changed))
        return false;
    report.item(word_item(report_text::module_state, scan_state_word(changed != 0)));
    progress("Getting module-presence flags:\r\n");
    if (!succeeded(attempt_presence(presence)))
        return false;
    if (presence.valid == 0) {
        report.text("Module presence flags invalid, continuation not possible!", Color::bad);
        return false;
    }
    for (unsigned slot = 0; slot < presence.slots(); ++slot) {
        if (!report_scanned_module(report, slot_text(slot), presence.flags[slot], slot))
            return false;
    }
    return report_scanned_module(report, report_text::base_unit_name,
                                 presence.flags[ModulePresence::base_unit_index], base_unit);
}

// ---- The modules ----

bool report_fpga_version(Report& report, unsigned address)
{
    progress("Getting FPGA version of %s:\r\n", module_name(address).c_str());
    std::uint32_t version = 0;
    if (!call(LIB(GetHVsupplyFpgaVersion), address, &version))
        return false;
    report.item({.label = report_text::fpga_version,
                 .value = hv_supply_hardware::fpga_version_text(version)});
    return true;
}

bool report_activation(Report& report, const ReportedUnit& unit)
{
    unit.announce("activation state");
    std::uint8_t on = 0;
    if (!call(LIB(GetModuleActivationState), *unit.address, &on))
        return false;
    report.item(word_item(report_text::activation_state, on_off(on != 0)));
    return true;
}

bool report_module_state(Report& report, const ReportedUnit& unit)
{
    unit.announce("state");
    std::uint16_t state = 0;
    if (!call(LIB(GetModuleState), *unit.address, &state))
        return false;
    report_word(report, report_text::module_state, state, 16,
                {module_state_fields_of(*unit.address)});
    return true;
}

bool report_heat_controller(Report& report, const ReportedUnit& unit, HeaterLimits& maxima)
{
    unit.announce("hardware limits");
    if (!succeeded(attempt_hardware_limits(maxima)))
        return false;
    const ReportItem limits[] = {
        {.label = report_text::voltage, .value = formatted("%.3lfV", maxima.voltage)},
        {.label = report_text::current, .value = formatted("%.3lfA", maxima.current)},
        {.label = report_text::power, .value = formatted("%.3lfW", maxima.power)},
        {.label = report_text::temperature,
         .value = formatted("%.3lf" DEGREES_C, maxima.temperature),
         .file_value = formatted("%.3lf" DEGREES_C_IN_FILE, maxima.temperature)}};
    report.group(report_text::hardware_limits, limits);
    unit.announce("target heater power");
    double power = 0.0;
    if (!call(LIB(GetHeatCtrlHeaterPower), &power))
        return false;
    report.item({.label = report_text::target_power,
                 .value = power < 0.0 ? off_word.text : formatted("%.3lfW", power)});
    unit.announce("target heater temperature");
    double temperature = 0.0;
    if (!call(LIB(GetHeatCtrlHeaterTemperature), &temperature))
        return false;
    const bool off = temperature < 0.0;
    report.item({.label = report_text::target_temperature,
                 .value = off ? off_word.text : formatted("%.3lf" DEGREES_C, temperature),
                 .color = off ? off_word.color : Color::value,
                 .file_value = off ? "" : formatted("%.3lf" DEGREES_C_IN_FILE, temperature)});
    return true;
}

bool report_hv_supply(Report& report, const ReportedUnit& unit)
{
    unit.announce("target output voltage");
    double volts = 0.0;
    if (!succeeded(attempt_target_voltage(*unit.address, volts)))
        return false;
    report.item({.label = report_text::target_voltage,
                 .value = volts < 0.0 ? off_word.text : value_text(quantity::volts, volts),
                 .color = volts < 0.0 ? off_word.color : Color::value});
    unit.announce("measurement channels");
    MeasurementRanges ranges;
    if (!succeeded(attempt_ranges(*unit.address, ranges)))
        return false;
    const ReportItem items[] = {
        {.label = report_text::voltage_channel, .value = ranges.polarity()},
        {.label = report_text::current_channel, .value = ranges.current_range()}};
    report.group(report_text::channels, items);
    return true;
}

bool report_unit(Report& report, unsigned address, UnitKind& kind, ProductData& data)
{
    const ReportedUnit unit{.address = address, .of_name = " of " + module_name(address)};
    const bool is_hv_slot = address != heat_controller && address != base_unit;
    if (!report_identification(report, unit) || !report_kind(report, unit, kind) ||
        (is_hv_slot && kind.device_type == module_type::hv_supply &&
         !report_fpga_version(report, address)) ||
        !report_manufacturing_date(report, unit) || !report_activation(report, unit) ||
        !report_led_data(report, unit) || !report_module_state(report, unit))
        return false;
    if (address == heat_controller && kind.device_type == module_type::heat_controller)
        return report_heat_controller(report, unit, data.heater_maxima);
    if (is_hv_slot && kind.device_type == module_type::hv_supply)
        return report_hv_supply(report, unit);
    return true;
}

bool report_modules(Report& report, ProductData& data)
{
    const auto report_under = [&](const std::string& on_console, const std::string& in_file,
                                  unsigned address, UnitKind& kind) {
        report.heading(on_console, in_file);
        report.indent(true);
        const bool reported = report_unit(report, address, kind, data);
        report.indent(false);
        return reported && may_go_on(report);
    };
    UnitKind kind;
    if (data.presence.has_base_unit() && !report_under("Base unit:", "Base unit:", base_unit, kind))
        return false;
    data.base_device_type = kind.device_type;
    for (const unsigned slot : data.presence.present_slots()) {
        kind = {};
        // Kept: one digit on the console here, two in the file and in all other lines.
        if (!report_under(formatted("Slot #%u:", slot), slot_text(slot) + ':', slot, kind))
            return false;
        data.device_types[slot] = kind.device_type;
        data.hardware_types[slot] = kind.hardware_type;
    }
    report.end_section();
    return true;
}

// ---- The configurations ----

bool report_configurations(Report& report)
{
    progress("Getting configuration properties:\r\n");
    std::uint16_t sets = 0;
    std::uint16_t data_size = 0;
    std::uint16_t name_size = 0;
    if (!call(LIB(GetConfigValues), &sets, &data_size, &name_size))
        return false;
    report.text(report_text::configurations);
    report.indent(true);
    report.item({.label = report_text::data_size, .value = formatted("%u bytes", data_size)});
    report.item({.label = report_text::name_size, .value = formatted("%u bytes", name_size)});
    progress("Getting list of configurations:\r\n");
    ConfigFlagList active{};
    ConfigFlagList valid{};
    if (!call(LIB(GetConfigList), &active, &valid)) {
        report.indent(false);
        return false;
    }
    unsigned active_count = 0;
    unsigned deleted_count = 0;
    for (std::size_t i = 0; i < std::min<std::size_t>(sets, active.size()); ++i) {
        if (valid[i] != 0)
            ++(active[i] != 0 ? active_count : deleted_count);
    }
    const ReportItem counts[] = {
        {.label = report_text::active_sets, .value = formatted("%u", active_count)},
        {.label = report_text::deleted_sets, .value = formatted("%u", deleted_count)}};
    report.equal_items(counts);
    report.indent(false);
    report.end_section();
    return true;
}

} // namespace

bool ProductData::fits(unsigned slot) const
{
    const std::uint16_t expected =
        slot == heat_controller ? module_type::heat_controller : module_type::hv_supply;
    return slot < presence.slots() && presence.has_slot(slot) && device_types[slot] == expected;
}

bool ProductData::has_base_unit_of_its_kind() const
{
    return presence.has_base_unit() && base_device_type == module_type::base_unit;
}

std::uint32_t ProductData::voltage_range(unsigned slot) const
{
    return hv_supply_hardware::voltage_range.of(hardware_types[slot]);
}

bool report_product_data(Report& report, ProductData& data)
{
    return report_run(report) && report_controller(report, data.overall_state) &&
           report_module_scan(report, data.presence) && report_modules(report, data) &&
           report_configurations(report) && may_go_on(report);
}
