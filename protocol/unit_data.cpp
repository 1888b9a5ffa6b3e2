#include "protocol/unit_data.h"

#include "frame/format.h"
#include "instrument/addresses.h"
#include "instrument/controller_hardware.h"
#include "instrument/controller_readings.h"
#include "instrument/device_types.h"
#include "instrument/module_hardware.h"
#include "instrument/presence.h"
#include "instrument/words.h"
#include "protocol/report_items.h"

namespace
{

const char* device_type_name(const ReportedUnit& unit, std::uint16_t code)
{
    if (!unit.address)
        return code == controller_device_type ? controller_type_name : nullptr;
    const ModuleType* type = find_module_type(code);
    return type != nullptr ? type->name : nullptr;
}

ReportItems decoded_controller(std::uint32_t word, BareLabels& labels)
{
    ReportItems items{
        {.label = "NVM size", .value = formatted("%uKiB", controller_hardware::memory_size(word))}};
    add_fields(items, labels, controller_hardware::fields, word);
    return items;
}

ReportItems decoded_base_unit(std::uint32_t word)
{
    using namespace base_unit_hardware;
    return {{.label = "supply voltage", .value = formatted("%uV", supply_voltage.of(word))},
            {.label = "maximum power", .value = formatted("%uW", maximum_power.of(word))},
            {.label = "slot number", .value = formatted("%u", slots.of(word))},
            {.label = "fan number", .value = formatted("%u", fans.of(word))}};
}

ReportItems decoded_heat_controller(std::uint32_t word)
{
    using namespace heat_controller_hardware;
    return {
        {.label = "supply voltage", .value = formatted("%.4lfV", supply_voltage(word))},
        {.label = "maximum supply current", .value = formatted("%.4lfA", maximum_current(word))},
        {.label = "interlock number", .value = formatted("%u", interlocks.of(word))},
        {.label = "channel number", .value = formatted("%u", channels.of(word))}};
}

ReportItems decoded_hv_supply(std::uint32_t word)
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
        // Kept: both numbers come from one field of the word, see unipolar_outputs.
        {.label = "positive outputs", .value = formatted("%u", unipolar)},
        {.label = "negative outputs", .value = formatted("%u", unipolar)}};
}

/// The hardware type with the name that is made of it and its properties, as far as the device
/// type tells what it means.
void report_hardware_type(Report& report, const ReportedUnit& unit, const UnitKind& kind)
{
    const std::uint32_t word = kind.hardware_type;
    std::string name;
    ReportItems properties;
    BareLabels labels;
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

} // namespace

bool report_identification(Report& report, const ReportedUnit& unit)
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

bool report_kind(Report& report, const ReportedUnit& unit, UnitKind& kind)
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

bool report_manufacturing_date(Report& report, const ReportedUnit& unit)
{
    unit.announce("manufacturing date");
    std::uint16_t year = 0;
    std::uint16_t week = 0;
    if (!unit.ask(LIB(GetManufDate), LIB(GetModuleManufDate), &year, &week))
        return false;
    report.item(
        {.label = "Product manufacturing date", .value = manufacturing_date_text(year, week)});
    return true;
}

bool report_led_data(Report& report, const ReportedUnit& unit)
{
    unit.announce("LED data");
    LedData led;
    const Failure failed = unit.address ? attempt(LIB(GetModuleLEDData), *unit.address, &led.red,
                                                  &led.green, &led.blue)
                                        : attempt_led_data(led);
    if (!succeeded(failed))
        return false;
    const bool red = led.red != 0;
    const bool green = led.green != 0;
    const bool blue = led.blue != 0;
    const ReportItem items[] = {
        word_item("Red", on_off(red)), word_item("Green", on_off(green)),
        word_item("Blue", on_off(blue)),
        ReportItem{.label = "Color", .value = led_color_name(red, green, blue)}};
    report.group(unit.address ? "LED data" : "LED data of the base device", items);
    return true;
}
