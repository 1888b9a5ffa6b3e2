#include "protocol/product_data.h"

#include <algorithm>
#include <array>
#include <deque>
#include <optional>
#include <string_view>
#include <vector>

#include "controller/hardware_type.h"
#include "controller/settings.h"
#include "controller/status_words.h"
#include "frame/console.h"
#include "frame/device_call.h"
#include "frame/format.h"
#include "frame/program.h"
#include "frame/session.h"
#include "modules/hardware_types.h"
#include "modules/output.h"
#include "modules/state.h"
#include "protocol/sampling.h"

namespace
{

using Items = std::vector<ReportItem>;

// ---- Texts ----

std::string hex_text(std::uint32_t value, int digits)
{
    return formatted("%0*Xh", digits, value);
}

/// "3Fh=0011 1111b"
std::string word_text(std::uint32_t value, int bits)
{
    return hex_text(value, bits / 4) + '=' + bits_text(value, bits);
}

/// Without the blanks that pad it on the live displays.
std::string bare(std::string_view text)
{
    const std::size_t first = text.find_first_not_of(' ');
    const std::size_t last = text.find_last_not_of(' ');
    return first == std::string_view::npos ? std::string{}
                                           : std::string{text.substr(first, last - first + 1)};
}

ReportItem word_item(const char* label, const Word& word)
{
    return {.label = label, .value = bare(word.text), .color = word.color};
}

/// The labels of the bit tables as the report shows them. The tables' own have the blanks, commas
/// and colons of their displays.
class Labels
{
public:
    const char* bare_of(const char* label)
    {
        std::string_view text = label;
        while (!text.empty() && (text.front() == ' ' || text.front() == ','))
            text.remove_prefix(1);
        while (!text.empty() && (text.back() == ' ' || text.back() == ':'))
            text.remove_suffix(1);
        return texts_.emplace_back(text).c_str();
    }

private:
    std::deque<std::string> texts_; // in a deque they stay where they are
};

void add_fields(Items& items, Labels& labels, std::span<const BitField> fields, std::uint32_t value)
{
    for (const BitField& field : fields)
        items.push_back(word_item(labels.bare_of(field.label), field.word(value)));
}

/// A status word in full with its fields.
void report_word(Report& report, const char* label, std::uint32_t value, int bits,
                 std::initializer_list<std::span<const BitField>> tables)
{
    Labels labels;
    Items items{{.label = label, .value = word_text(value, bits)}};
    for (const std::span<const BitField> fields : tables)
        add_fields(items, labels, fields, value);
    report.items(items);
}

// ---- The controller and the modules are asked alike ----

/// Whom the questions go to.
struct Unit {
    std::optional<unsigned> address; ///< none = the controller itself
    std::string of_name;             ///< " of HV-supply 1"; empty for the controller

    template <class ControllerFunction, class ModuleFunction, class... Results>
    [[nodiscard]] bool ask(LibraryFunction<ControllerFunction> of_controller,
                           LibraryFunction<ModuleFunction> of_module, Results... results) const
    {
        return address ? call(of_module, *address, results...) : call(of_controller, results...);
    }

    void announce(const char* what) const { progress("Getting %s%s:\r\n", what, of_name.c_str()); }
};

/// What a unit said about its kind.
struct Kind {
    std::uint16_t device_type = 0;
    std::uint32_t hardware_type = 0;
};

const char* device_type_name(const Unit& unit, std::uint16_t code)
{
    if (!unit.address)
        return code == controller_device_type ? "KOV-CTRL" : nullptr;
    const ModuleType* type = find_module_type(code);
    return type != nullptr ? type->name : nullptr;
}

Items decoded_controller(std::uint32_t word, Labels& labels)
{
    Items items{
        {.label = "NVM size", .value = formatted("%uKiB", controller_hardware::memory_size(word))}};
    add_fields(items, labels, controller_hardware::fields, word);
    return items;
}

Items decoded_base_unit(std::uint32_t word)
{
    using namespace base_unit_hardware;
    return {{.label = "supply voltage", .value = formatted("%uV", supply_voltage.of(word))},
            {.label = "maximum power", .value = formatted("%uW", maximum_power.of(word))},
            {.label = "slot number", .value = formatted("%u", slots.of(word))},
            {.label = "fan number", .value = formatted("%u", fans.of(word))}};
}

Items decoded_heat_controller(std::uint32_t word)
{
    using namespace heat_controller_hardware;
    return {
        {.label = "supply voltage", .value = formatted("%.4lfV", supply_voltage(word))},
        {.label = "maximum supply current", .value = formatted("%.4lfA", maximum_current(word))},
        {.label = "interlock number", .value = formatted("%u", interlocks.of(word))},
        {.label = "channel number", .value = formatted("%u", channels.of(word))}};
}

Items decoded_hv_supply(std::uint32_t word)
{
    using namespace hv_supply_hardware;
    const std::uint32_t unipolar = unipolar_outputs.of(word);
    return {
        {.label = "voltage range", .value = formatted("%uV", voltage_range.of(word))},
        {.label = "output", .value = output_kind(word)},
        {.label = "number of current ranges", .value = formatted("%u", current_ranges.of(word))},
        {.label = "lowest current range",
         .value = formatted("1E%dA", lowest_current_exponent(word))},
        {.label = "highest current range",
         .value = formatted("1E%dA", highest_current_exponent(word))},
        {.label = "bipolar outputs", .value = formatted("%u", bipolar_outputs.of(word))},
        // Kept: one field of the word stands for both.
        {.label = "positive outputs", .value = formatted("%u", unipolar)},
        {.label = "negative outputs", .value = formatted("%u", unipolar)}};
}

/// The hardware type with the name that is made of it and its properties, as far as the device
/// type tells what it means.
void report_hardware_type(Report& report, const Unit& unit, const Kind& kind)
{
    const std::uint32_t word = kind.hardware_type;
    std::string name;
    Items properties;
    Labels labels;
    if (!unit.address) {
        properties = decoded_controller(word, labels);
    } else if (kind.device_type == module_type::base_unit) {
        name = base_unit_hardware::type_name(word) +
               formatted(", %uV", base_unit_hardware::supply_voltage.of(word));
        properties = decoded_base_unit(word);
    } else if (kind.device_type == module_type::heat_controller) {
        name = heat_controller_hardware::type_name(word);
        properties = decoded_heat_controller(word);
    } else if (kind.device_type == module_type::hv_supply) {
        name = hv_supply_hardware::type_name(word);
        properties = decoded_hv_supply(word);
    }
    const std::string shown = hex_text(word, 8) + (name.empty() ? "" : " (" + name + ')');
    properties.insert(properties.begin(), {.label = "Hardware type", .value = shown});
    report.items(properties);
}

bool report_identification(Report& report, const Unit& unit)
{
    unit.announce("product identification");
    ProductIdText identification;
    if (!unit.ask(LIB(GetProductID), LIB(GetModuleProductID), &identification))
        return false;
    report.item({.label = "Product identification",
                 .value = identification.text(),
                 .file_value = latin1_text(identification.text())});
    unit.announce("product number");
    std::int32_t number = 0;
    if (!unit.ask(LIB(GetProductNo), LIB(GetModuleProductNo), &number))
        return false;
    report.item({.label = "Product number", .value = formatted("%d", number)});
    unit.announce("firmware version");
    std::uint16_t version = 0;
    if (!unit.ask(LIB(GetFwVersion), LIB(GetModuleFwVersion), &version))
        return false;
    report.item({.label = "Firmware version", .value = version_text(version)});
    unit.announce("firmware date");
    FirmwareDateText date;
    if (!unit.ask(LIB(GetFwDate), LIB(GetModuleFwDate), &date))
        return false;
    report.item(
        {.label = "Firmware date", .value = date.text(), .file_value = latin1_text(date.text())});
    return true;
}

bool report_kind(Report& report, const Unit& unit, Kind& kind)
{
    unit.announce("device type");
    if (!unit.ask(LIB(GetDevType), LIB(GetModuleDevType), &kind.device_type))
        return false;
    const char* name = device_type_name(unit, kind.device_type);
    report.item({.label = "Device type",
                 .value = hex_text(kind.device_type, 4) +
                          (name != nullptr ? std::string{" ("} + name + ')' : "")});
    unit.announce("hardware type");
    if (!unit.ask(LIB(GetHwType), LIB(GetModuleHwType), &kind.hardware_type))
        return false;
    report_hardware_type(report, unit, kind);
    unit.announce("hardware version");
    std::uint16_t version = 0;
    if (!unit.ask(LIB(GetHwVersion), LIB(GetModuleHwVersion), &version))
        return false;
    report.item({.label = "Hardware version", .value = version_text(version)});
    return true;
}

bool report_manufacturing_date(Report& report, const Unit& unit)
{
    unit.announce("manufacturing date");
    std::uint16_t year = 0;
    std::uint16_t week = 0;
    if (!unit.ask(LIB(GetManufDate), LIB(GetModuleManufDate), &year, &week))
        return false;
    report.item(
        {.label = "Product manufacturing date", .value = formatted("CW%02u %u", week, year)});
    return true;
}

bool report_led_data(Report& report, const Unit& unit)
{
    unit.announce("LED data");
    std::uint8_t red = 0;
    std::uint8_t green = 0;
    std::uint8_t blue = 0;
    if (!unit.ask(LIB(GetLEDData), LIB(GetModuleLEDData), &red, &green, &blue))
        return false;
    const ReportItem items[] = {
        word_item("Red", on_off(red != 0)), word_item("Green", on_off(green != 0)),
        word_item("Blue", on_off(blue != 0)),
        ReportItem{.label = "Color", .value = led_color_name(red != 0, green != 0, blue != 0)}};
    report.group(unit.address ? "LED data" : "LED data of the base device", items);
    return true;
}

// ---- The controller ----

bool report_run(Report& report)
{
    report.text("Test protocol created on " + timestamp());
    report.end_section();
    progress("Getting DLL version:\r\n");
    report.item({.label = "DLL version", .value = version_text(COM_KOV_CTRL_GetSWVersion())});
    report.end_section();
    const ReportItem port[] = {
        {.label = "Used communication port", .value = formatted("COM%u", unsigned{program.port})},
        {.label = "Data transfer rate", .value = formatted("%u baud", program.data_rate)}};
    report.items(port);
    report.end_section();
    return true;
}

bool report_enable_state(Report& report)
{
    progress("Getting enable state of the device:\r\n");
    std::uint8_t enabled = 0;
    if (!call(LIB(GetEnable), &enabled))
        return false;
    // The words are padded to one length: nothing but the colon stands before them.
    const Word& word = yes_no(enabled != 0);
    report.item({.label = "Device enabled",
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
    const Word word = overall_state_word(state);
    report.item({.label = "Overall state",
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
    std::uint8_t ac_input = 0;
    std::uint8_t dc_output = 0;
    if (!call(LIB(GetPowerMonitors), &ac_input, &dc_output))
        return false;
    const ReportItem items[] = {word_item("AC input", ac_input != 0 ? ok_word : fail_word),
                                word_item("DC output", dc_output != 0 ? ok_word : fail_word)};
    report.group("Power monitor state", items);
    return true;
}

bool report_temperature_state(Report& report)
{
    using namespace temperature_bit;
    progress("Getting temperature state:\r\n");
    std::uint8_t state = 0;
    if (!call(LIB(GetTemperatureState), &state))
        return false;
    const ReportItem items[] = {{.label = "Temperature state", .value = word_text(state, 8)},
                                word_item("CPU", temperature_word(state, cpu_hot, cpu_cold)),
                                word_item("PSU", temperature_word(state, psu_hot, psu_cold))};
    report.items(items);
    return true;
}

bool report_inputs(Report& report)
{
    progress("Getting the device input levels:\r\n");
    std::uint8_t front = 0;
    std::uint8_t rear = 0;
    std::uint8_t fan_enabled = 0;
    if (!call(LIB(GetInputs), &front, &rear, &fan_enabled))
        return false;
    const auto item = [](const char* label, std::uint8_t level, const char* set,
                         const char* clear) {
        return ReportItem{.label = label,
                          .value = level != 0 ? set : clear,
                          .color = level != 0 ? Color::good : Color::not_good};
    };
    const ReportItem items[] = {item("Interlock Front State", front, "Y", "N"),
                                item("Interlock Rear Level", rear, "1", "0"),
                                item("Fan Enabled", fan_enabled, "Y", "N")};
    report.group("Device input levels", items);
    return true;
}

/// Uptime and operation time: the current value and the total.
template <class Function>
bool report_times(Report& report, const char* name, const char* label, const char* divider,
                  LibraryFunction<Function> function)
{
    progress("Getting the device %s:\r\n", name);
    std::uint32_t seconds = 0;
    std::uint32_t total_seconds = 0;
    std::uint16_t milliseconds = 0;
    std::uint16_t total_milliseconds = 0;
    if (!call(function, &seconds, &milliseconds, &total_seconds, &total_milliseconds))
        return false;
    const ReportItem items[] = {
        {.label = label, .value = uptime_text(seconds, milliseconds), .divider = divider},
        {.label = "total", .value = uptime_text(total_seconds, total_milliseconds)}};
    report.items(items);
    return true;
}

bool report_controller_state(Report& report, std::uint16_t& overall)
{
    using Byte = std::uint8_t;
    return report_enable_state(report) && report_overall_state(report, overall) &&
           report_led_data(report, {}) &&
           report_state<Byte>(report, "device state", "Device state", LIB(GetDeviceState),
                              {device_state_fields}) &&
           report_state<std::uint16_t>(report, "interlock state", "Interlock state",
                                       LIB(GetInterlockState),
                                       {heat_controller_interlock_fields,
                                        controller_interlock_fields, resulting_interlock_fields}) &&
           report_state<Byte>(report, "HV-PSU interlock enable mask",
                              "HV-PSU interlock enable mask", LIB(GetHVsupplyInterlockEnable),
                              {interlock_mask_fields}) &&
           report_state<Byte>(report, "heat-controller interlock enable mask",
                              "Heat-controller interlock enable mask",
                              LIB(GetHeatCtrlInterlockEnable), {interlock_mask_fields}) &&
           report_state<Byte>(report, "voltage state", "Voltage state", LIB(GetVoltageState),
                              {voltage_state_fields}) &&
           report_power_monitors(report) && report_temperature_state(report) &&
           report_state<Byte>(report, "fan state", "Fan state", LIB(GetFanState),
                              {fan_state_fields}) &&
           report_state<Byte>(report, "function of the slide switch 'Fan'",
                              "Function of the slide switch 'Fan'", LIB(GetFanSwitchOverride),
                              {fan_switch_fields}) &&
           report_inputs(report) &&
           report_times(report, "uptime", "Device uptime", ":  ", LIB(GetUptimeInt)) &&
           report_times(report, "operation time", "Operation time", ": ", LIB(GetOptimeInt));
}

bool report_controller(Report& report, ProductData& data)
{
    Kind kind;
    const Unit controller;
    if (!report_identification(report, controller) || !report_kind(report, controller, kind) ||
        !report_manufacturing_date(report, controller) ||
        !report_controller_state(report, data.overall_state))
        return false;
    report.end_section();
    return true;
}

// ---- The scan of the modules ----

bool report_scanned_module(Report& report, const std::string& place, std::uint8_t flag,
                           unsigned address)
{
    std::int32_t number = 0;
    std::int32_t saved_number = 0;
    std::uint32_t type = 0;
    std::uint32_t saved_type = 0;
    if (!call(LIB(GetScannedModuleParams), address, &number, &saved_number, &type, &saved_type))
        return false;
    const auto verdict = [](bool same) { return same ? "OK" : "fail"; };
    const std::string text =
        formatted("%s, P/N scanned: %6d, saved: %6d, %s   HW type scanned: %08Xh, saved: %08Xh, %s",
                  presence_text(flag), number, saved_number, verdict(number == saved_number), type,
                  saved_type, verdict(type == saved_type));
    const bool good = number == saved_number && type == saved_type;
    report.item(
        {.label = place.c_str(), .value = text, .color = good ? Color::value : Color::not_good});
    return true;
}

bool report_module_scan(Report& report, ModulePresence& presence)
{
    progress("Getting state of the module scan:\r\n");
    std::uint8_t changed = 0;
    if (!call(LIB(GetScannedModuleState), &changed))
        return false;
    report.item(word_item("Module state", changed != 0 ? Word{"changed", Color::not_good}
                                                       : Word{"OK", Color::good}));
    progress("Getting module-presence flags:\r\n");
    if (!succeeded(attempt_presence(presence)))
        return false;
    if (presence.valid == 0) {
        report.text("Module presence flags invalid, continuation not possible!", Color::bad);
        return false;
    }
    for (unsigned slot = 0; slot < presence.slots(); ++slot) {
        if (!report_scanned_module(report, formatted("Slot #%02u", slot), presence.flags[slot],
                                   slot))
            return false;
    }
    return report_scanned_module(report, "Base unit",
                                 presence.flags[ModulePresence::base_unit_index], base_unit);
}

// ---- The modules ----

bool report_fpga_version(Report& report, unsigned address)
{
    progress("Getting FPGA version of %s:\r\n", module_name(address).c_str());
    std::uint32_t version = 0;
    if (!call(LIB(GetHVsupplyFpgaVersion), address, &version))
        return false;
    report.item({.label = "FPGA version", .value = hv_supply_hardware::fpga_version_text(version)});
    return true;
}

bool report_activation(Report& report, const Unit& unit)
{
    unit.announce("activation state");
    std::uint8_t on = 0;
    if (!call(LIB(GetModuleActivationState), *unit.address, &on))
        return false;
    report.item(word_item("Activation state", on_off(on != 0)));
    return true;
}

bool report_module_state(Report& report, const Unit& unit)
{
    unit.announce("state");
    std::uint16_t state = 0;
    if (!call(LIB(GetModuleState), *unit.address, &state))
        return false;
    const std::span<const BitField> fields = module_state_fields;
    report_word(report, "Module state", state, 16,
                {*unit.address == base_unit ? fields.first(1) : fields});
    return true;
}

bool report_heat_controller(Report& report, const Unit& unit, ProductData& data)
{
    unit.announce("hardware limits");
    if (!call(LIB(GetHeatCtrlHwLimits), &data.maximum_voltage, &data.maximum_current,
              &data.maximum_power, &data.maximum_temperature))
        return false;
    const ReportItem limits[] = {
        {.label = "voltage", .value = formatted("%.3lfV", data.maximum_voltage)},
        {.label = "current", .value = formatted("%.3lfA", data.maximum_current)},
        {.label = "power", .value = formatted("%.3lfW", data.maximum_power)},
        {.label = "temperature",
         .value = formatted("%.3lf" DEGREES_C, data.maximum_temperature),
         .file_value = formatted("%.3lf" DEGREES_C_IN_FILE, data.maximum_temperature)}};
    report.group("Hardware limits", limits);
    unit.announce("target heater power");
    double power = 0.0;
    if (!call(LIB(GetHeatCtrlHeaterPower), &power))
        return false;
    report.item({.label = "Target heater power",
                 .value = power < 0.0 ? "off" : formatted("%.3lfW", power)});
    unit.announce("target heater temperature");
    double temperature = 0.0;
    if (!call(LIB(GetHeatCtrlHeaterTemperature), &temperature))
        return false;
    const bool off = temperature < 0.0;
    report.item({.label = "Target heater temperature",
                 .value = off ? "off" : formatted("%.3lf" DEGREES_C, temperature),
                 .color = off ? Color::bad : Color::value,
                 .file_value = off ? "" : formatted("%.3lf" DEGREES_C_IN_FILE, temperature)});
    return true;
}

bool report_hv_supply(Report& report, const Unit& unit)
{
    unit.announce("target output voltage");
    double volts = 0.0;
    if (!succeeded(attempt_target_voltage(*unit.address, volts)))
        return false;
    report.item({.label = "Target output voltage",
                 .value = volts < 0.0 ? "off" : formatted("%.1lfV", volts),
                 .color = volts < 0.0 ? Color::bad : Color::value});
    unit.announce("measurement channels");
    MeasurementRanges ranges;
    if (!succeeded(attempt_ranges(*unit.address, ranges)))
        return false;
    const ReportItem items[] = {{.label = "Voltage", .value = ranges.polarity()},
                                {.label = "Current", .value = ranges.high != 0 ? "high" : "low"}};
    report.group("Measurement channels", items);
    return true;
}

bool report_unit(Report& report, unsigned address, Kind& kind, ProductData& data)
{
    const Unit unit{.address = address, .of_name = " of " + module_name(address)};
    const bool is_hv_slot = address != heat_controller && address != base_unit;
    if (!report_identification(report, unit) || !report_kind(report, unit, kind) ||
        (is_hv_slot && kind.device_type == module_type::hv_supply &&
         !report_fpga_version(report, address)) ||
        !report_manufacturing_date(report, unit) || !report_activation(report, unit) ||
        !report_led_data(report, unit) || !report_module_state(report, unit))
        return false;
    if (address == heat_controller && kind.device_type == module_type::heat_controller)
        return report_heat_controller(report, unit, data);
    if (is_hv_slot && kind.device_type == module_type::hv_supply)
        return report_hv_supply(report, unit);
    return true;
}

bool report_modules(Report& report, ProductData& data)
{
    const auto report_under = [&](const std::string& on_console, const std::string& in_file,
                                  unsigned address, Kind& kind) {
        report.heading(on_console, in_file);
        report.indent(true);
        const bool reported = report_unit(report, address, kind, data);
        report.indent(false);
        return reported && may_go_on(report);
    };
    Kind kind;
    if (data.presence.has_base_unit() && !report_under("Base unit:", "Base unit:", base_unit, kind))
        return false;
    data.base_device_type = kind.device_type;
    for (const unsigned slot : data.presence.present_slots()) {
        kind = {};
        if (!report_under(formatted("Slot #%u:", slot), formatted("Slot #%02u:", slot), slot, kind))
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
    report.text("Configuration properties:");
    report.indent(true);
    report.item({.label = "Size of configuration data", .value = formatted("%u bytes", data_size)});
    report.item({.label = "Size of configuration name", .value = formatted("%u bytes", name_size)});
    progress("Getting list of configurations:\r\n");
    std::array<std::uint8_t, 1024> active{};
    std::array<std::uint8_t, 1024> valid{};
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
        {.label = "Number of active configurations", .value = formatted("%u", active_count)},
        {.label = "Number of deleted configurations", .value = formatted("%u", deleted_count)}};
    report.items(counts);
    report.indent(false);
    return true;
}

} // namespace

bool ProductData::fits(unsigned slot) const
{
    const std::uint16_t expected =
        slot == heat_controller ? module_type::heat_controller : module_type::hv_supply;
    return slot < presence.slots() && presence.has_slot(slot) && device_types[slot] == expected;
}

bool report_product_data(Report& report, ProductData& data)
{
    return report_run(report) && report_controller(report, data) &&
           report_module_scan(report, data.presence) && report_modules(report, data) &&
           report_configurations(report) && may_go_on(report);
}

bool read_uptime(std::uint32_t& seconds, std::uint16_t& milliseconds, std::string& text)
{
    std::uint32_t total_seconds = 0;
    std::uint16_t total_milliseconds = 0;
    if (!call(LIB(GetUptimeInt), &seconds, &milliseconds, &total_seconds, &total_milliseconds))
        return false;
    text = uptime_text(seconds, milliseconds);
    return true;
}
