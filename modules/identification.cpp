#include "modules/identification.h"

#include "frame/device_call.h"
#include "frame/terminal/console.h"
#include "frame/text/format.h"
#include "instrument/addresses.h"
#include "instrument/device_types.h"
#include "instrument/module_hardware.h"
#include "instrument/words.h"
#include "modules/addressing.h"

#include <cstdint>
#include <string>

namespace
{

void print_value(const std::string& text)
{
    console.print(Color::value, "%s", text.c_str());
}

/// The name of a device type. In the list of all, only its own type is expected of the base unit.
ColoredText type_word(const Module& module, std::uint16_t code)
{
    const ModuleType* type = find_module_type(code);
    const bool is_listed_base = module.in_list && module.address == base_unit;
    if (type == nullptr || (is_listed_base && code != module_type::base_unit))
        return {"unknown", Color::bad};
    return {type->name, Color::value};
}

/// What stands in the brackets behind a hardware type: the module must fit its place.
void print_decoded(unsigned address, std::uint16_t type, std::uint32_t word)
{
    const bool is_heater = address == heat_controller && type == module_type::heat_controller;
    const bool is_supply =
        address != heat_controller && address <= highest_slot && type == module_type::hv_supply;
    if (is_heater || is_supply) {
        console.print(Color::value, "%s", find_module_type(type)->name);
    } else if (address == base_unit && type == module_type::base_unit) {
        print_value(base_unit_hardware::type_name_with_fans(word));
        console.print(", ");
        console.print(Color::value, "%uV", base_unit_hardware::supply_voltage.of(word));
    } else {
        console.print(Color::bad, "invalid");
    }
}

/// Uptime and operation time are read and shown the same way.
using TimesFunction = LibraryFunction<decltype(COM_KOV_CTRL_GetModuleUptimeInt)>;

bool show_times(const Module& module, TimesFunction function)
{
    std::uint32_t seconds = 0;
    std::uint32_t total_seconds = 0;
    std::uint16_t milliseconds = 0;
    std::uint16_t total_milliseconds = 0;
    if (!call_twice(function, module.address, &seconds, &milliseconds, &total_seconds,
                    &total_milliseconds))
        return false;
    module.print_label();
    print_value(uptime_text(seconds, milliseconds));
    console.print(", total: ");
    print_value(uptime_text(total_seconds, total_milliseconds));
    return true;
}

} // namespace

void show_module_identification(const Given& given)
{
    for_one_or_all({.progress = "Getting product identification of ",
                    .label = "Product identification of ",
                    .heading = "Product identifications:"},
                   given.address, [](const Module& module) {
                       ProductIdText identification;
                       if (!call_twice(LIB(GetModuleProductID), module.address, &identification))
                           return false;
                       module.print_label();
                       print_value(identification.text());
                       return true;
                   });
}

void show_module_product_number(const Given& given)
{
    for_one_or_all({.progress = "Getting product number of ",
                    .label = "Product number of ",
                    .heading = "Product numbers:"},
                   given.address, [](const Module& module) {
                       std::int32_t number = 0;
                       if (!call_twice(LIB(GetModuleProductNo), module.address, &number))
                           return false;
                       module.print_label();
                       console.print(Color::value, "%d", number);
                       return true;
                   });
}

void show_module_manufacturing_date(const Given& given)
{
    for_one_or_all({.progress = "Getting manufacturing date of ",
                    .label = "Product manufacturing date of ",
                    .heading = "Product manufacturing dates:"},
                   given.address, [](const Module& module) {
                       std::uint16_t year = 0;
                       std::uint16_t week = 0;
                       Failure failed =
                           attempt_twice(LIB(GetModuleManufDate), module.address, &year, &week);
                       // Kept: alone it is reported under the product number's name, in the list
                       // under its own.
                       if (failed && !module.in_list)
                           failed = Failure{LIB(GetModuleProductNo).name()};
                       if (!succeeded(failed))
                           return false;
                       module.print_label();
                       print_value(manufacturing_date_text(year, week));
                       return true;
                   });
}

void show_module_hardware_version(const Given& given)
{
    for_one_or_all({.progress = "Getting hardware version of ",
                    .label = "Hardware version of ",
                    .heading = "Hardware versions:"},
                   given.address, [](const Module& module) {
                       std::uint16_t version = 0;
                       if (!call_twice(LIB(GetModuleHwVersion), module.address, &version))
                           return false;
                       module.print_label();
                       print_value(version_text(version));
                       if (module.address == heat_controller || module.address == base_unit)
                           return true;
                       std::uint32_t fpga_version = 0;
                       const Failure failed = attempt_twice(LIB(GetHVsupplyFpgaVersion),
                                                            module.address, &fpga_version);
                       if (failed) {
                           report_error_below(failed);
                           return false;
                       }
                       console.print(", FPGA: ");
                       print_value(hv_supply_hardware::fpga_version_text(fpga_version));
                       return true;
                   });
}

void show_module_firmware_date(const Given& given)
{
    for_one_or_all({.progress = "Getting firmware date of ",
                    .label = "Firmware date of ",
                    .heading = "Firmware dates:"},
                   given.address, [](const Module& module) {
                       FirmwareDateText date;
                       if (!call_twice(LIB(GetModuleFwDate), module.address, &date))
                           return false;
                       module.print_label();
                       print_value(date.text());
                       return true;
                   });
}

void show_module_firmware_version(const Given& given)
{
    for_one_or_all({.progress = "Getting firmware version of ",
                    .label = "Firmware version of ",
                    .heading = "Firmware versions:",
                    .failure_ends_all = true},
                   given.address, [](const Module& module) {
                       std::uint16_t version = 0;
                       if (!call_twice(LIB(GetModuleFwVersion), module.address, &version))
                           return false;
                       module.print_label();
                       print_value(version_text(version));
                       return true;
                   });
}

void show_module_device_type(const Given& given)
{
    for_one_or_all({.progress = "Getting device type of ",
                    .label = "Device type of ",
                    .heading = "Device types:"},
                   given.address, [](const Module& module) {
                       std::uint16_t type = 0;
                       if (!call_twice(LIB(GetModuleDevType), module.address, &type))
                           return false;
                       module.print_label();
                       console.print(type_word(module, type));
                       return true;
                   });
}

void show_module_hardware_type(const Given& given)
{
    for_one_or_all({.progress = "Getting hardware type of ",
                    .label = "Hardware type of ",
                    .heading = "Hardware types:"},
                   given.address, [](const Module& module) {
                       std::uint32_t word = 0;
                       std::uint16_t type = 0;
                       if (!call_twice(LIB(GetModuleHwType), module.address, &word) ||
                           !call_twice(LIB(GetModuleDevType), module.address, &type))
                           return false;
                       module.print_label();
                       console.print(Color::value, "%08Xh", word);
                       console.print(" (");
                       print_decoded(module.address, type, word);
                       console.print(")");
                       return true;
                   });
}

void show_module_uptime(const Given& given)
{
    // The progress line speaks of the CPU, here and for the operation time.
    for_one_or_all(
        {.progress = "Getting CPU data of ", .label = "Uptime of ", .heading = "Uptime:"},
        given.address,
        [](const Module& module) { return show_times(module, LIB(GetModuleUptimeInt)); });
}

void show_module_operation_time(const Given& given)
{
    for_one_or_all({.progress = "Getting CPU data of ",
                    .label = "Operation time of ",
                    .heading = "Operation times:"},
                   given.address, [](const Module& module) {
                       return show_times(module, LIB(GetModuleOptimeInt));
                   });
}
