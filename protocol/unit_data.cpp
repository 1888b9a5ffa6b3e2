#include "protocol/unit_data.h"

#include "frame/text/format.h"
#include "instrument/addresses.h"
#include "instrument/controller_readings.h"
#include "instrument/presence.h"
#include "instrument/words.h"
#include "protocol/report/hardware_text.h"
#include "protocol/report/report_items.h"
#include "protocol/report/report_texts.h"

namespace
{

/// The hardware type with the name that is made of it and its properties, as far as the device
/// type tells what it means.
void report_hardware_type(Report& report, const ReportedUnit& unit, const UnitKind& kind)
{
    const HardwareText text = unit.address
                                  ? module_hardware_text(kind.device_type, kind.hardware_type)
                                  : controller_hardware_text(kind.hardware_type);
    ReportItems items{{.label = report_text::hardware_type, .value = text.word}};
    for (const HardwareProperty& property : text.properties)
        items.push_back({.label = property.label.c_str(), .value = property.value});
    report.items(items);
}

} // namespace

bool report_identification(Report& report, const ReportedUnit& unit)
{
    unit.announce("product identification");
    ProductIdText identification;
    if (!unit.ask(LIB(GetProductID), LIB(GetModuleProductID), &identification))
        return false;
    report.item({.label = report_text::product_identification,
                 .value = identification.text(),
                 .file_value = latin1_text(identification.text())});
    unit.announce("product number");
    std::int32_t number = 0;
    if (!unit.ask(LIB(GetProductNo), LIB(GetModuleProductNo), &number))
        return false;
    report.item({.label = report_text::product_number, .value = formatted("%d", number)});
    unit.announce("firmware version");
    std::uint16_t version = 0;
    if (!unit.ask(LIB(GetFwVersion), LIB(GetModuleFwVersion), &version))
        return false;
    report.item({.label = report_text::firmware_version, .value = version_text(version)});
    unit.announce("firmware date");
    FirmwareDateText date;
    if (!unit.ask(LIB(GetFwDate), LIB(GetModuleFwDate), &date))
        return false;
    report.item({.label = report_text::firmware_date,
                 .value = date.text(),
                 .file_value = latin1_text(date.text())});
    return true;
}

bool report_kind(Report& report, const ReportedUnit& unit, UnitKind& kind)
{
    unit.announce("device type");
    if (!unit.ask(LIB(GetDevType), LIB(GetModuleDevType), &kind.device_type))
        return false;
    report.item({.label = report_text::device_type,
                 .value = device_type_text(kind.device_type, !unit.address)});
    unit.announce("hardware type");
    if (!unit.ask(LIB(GetHwType), LIB(GetModuleHwType), &kind.hardware_type))
        return false;
    report_hardware_type(report, unit, kind);
    unit.announce("hardware version");
    std::uint16_t version = 0;
    if (!unit.ask(LIB(GetHwVersion), LIB(GetModuleHwVersion), &version))
        return false;
    report.item({.label = report_text::hardware_version, .value = version_text(version)});
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
        {.label = report_text::manufacturing_date, .value = manufacturing_date_text(year, week)});
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
        word_item(report_text::red, on_off(red)), word_item(report_text::green, on_off(green)),
        word_item(report_text::blue, on_off(blue)),
        ReportItem{.label = report_text::color, .value = led_color_name(red, green, blue)}};
    report.group(unit.address ? report_text::leds : report_text::base_leds, items);
    return true;
}
