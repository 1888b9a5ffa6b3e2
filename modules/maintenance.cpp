#include "modules/maintenance.h"

#include "frame/device_call.h"
#include "frame/platform/platform.h"
#include "frame/program.h"
#include "frame/terminal/console.h"
#include "frame/terminal/keys.h"
#include "frame/terminal/questions.h"
#include "instrument/addresses.h"
#include "instrument/device_types.h"
#include "modules/addressing.h"
#include "modules/presence.h"

namespace
{

// ---- Listing ----

ColoredText listed_type(std::uint16_t code)
{
    const ModuleType* type = find_module_type(code);
    return type != nullptr ? ColoredText{type->list_name, Color::value}
                           : ColoredText{"unknown", Color::bad};
}

/// What stands in a line of the list behind the unit. A failure ends the line, not the list.
void print_identification(unsigned address, std::uint8_t flag)
{
    if (flag != presence_flag::present) {
        console.print("%s", presence_text(flag));
        return;
    }
    const std::string name = module_name(address);
    progress("Getting product number of %s:\r\n", name.c_str());
    std::int32_t number = 0;
    if (const Failure failed = attempt_twice(LIB(GetModuleProductNo), address, &number)) {
        report_error_below(failed);
        return;
    }
    console.print("P/N: ");
    console.print(Color::value, "%d", number);
    progress("Getting device type of %s:\r\n", name.c_str());
    std::uint16_t type = 0;
    if (const Failure failed = attempt_twice(LIB(GetModuleDevType), address, &type)) {
        report_error_below(failed);
        return;
    }
    console.print(", dev.type: ");
    console.print(listed_type(type));
}

// ---- Checking ----

void print_scanned_module(const ScannedModule& module)
{
    const auto color = [](auto scanned, auto saved) {
        return scanned == saved ? Color::value : Color::not_good;
    };
    const Color number_color = color(module.product_number, module.saved_product_number);
    const Color type_color = color(module.hardware_type, module.saved_hardware_type);
    console.print(", P/N scanned: ");
    console.print(number_color, "%6d", module.product_number);
    console.print(", saved: ");
    console.print(number_color, "%6d", module.saved_product_number);
    console.print(", HW type scanned: ");
    console.print(type_color, "%08Xh", module.hardware_type);
    console.print(", saved: ");
    console.print(type_color, "%08Xh", module.saved_hardware_type);
}

/// The table of all scanned modules; false after a failure, which has been reported.
bool print_scanned_modules(const ModulePresence& presence)
{
    constexpr unsigned entries = 5;
    console.print("Scanned module data:");
    for (unsigned entry = 0; entry < entries; ++entry) {
        // The base unit follows the slots that the controller has, wherever that is.
        const bool is_base = entry == presence.slot_count;
        ScannedModule module;
        if (const Failure failed = with_repeat(
                [&] { return attempt_scanned_module(is_base ? base_unit : entry, module); })) {
            report_error_below(failed);
            return false;
        }
        if (is_base)
            console.print("\r\n  base unit: ");
        else
            console.print("\r\n  slot #%02u:  ", entry);
        console.print(
            "%7s",
            presence_text(presence.flags[is_base ? ModulePresence::base_unit_index : entry]));
        print_scanned_module(module);
    }
    console.print("\r\n");
    return true;
}

/// Asks whether to save the scan. Esc leaves without a trace.
void offer_to_save()
{
    console.print(Color::warning, "Module state changed, it must be saved to enable the device!");
    console.print("\r\nWere all modules found and should the state be saved now? [");
    console.print(Color::value, "Y");
    console.print("/");
    console.print(Color::value, "N");
    console.print("] ");
    const YesNo answer = read_yes_no(); // also one that was typed ahead
    if (answer == YesNo::interrupted)
        return;
    expect_line_end();
    const bool saves = answer == YesNo::yes;
    console.print(saves ? ColoredText{"Y", Color::good} : ColoredText{"N", Color::not_good});
    console.print("\r\n");
    if (saves)
        (void)call_twice(LIB(SetScannedModuleState));
}

// ---- Single modules ----

/// Up to ten tries; false when the last one failed, which has been reported.
bool purge(unsigned address, bool& purged)
{
    constexpr int most_tries = 10;
    constexpr std::int64_t pause_ms = 100;
    Failure failed;
    purged = false;
    for (int tries = 1; tries <= most_tries && !purged; ++tries) {
        std::uint8_t flag = 0;
        failed = attempt(LIB(ModulePurge), address, &flag);
        purged = !failed && flag != 0;
        if (failed && tries < most_tries)
            platform::sleep_ms(pause_ms);
    }
    return succeeded(failed);
}

} // namespace

void list_modules(const Given&)
{
    ModulePresence presence;
    if (!read_presence(presence))
        return;
    console.print("Module presence:");
    if (presence.valid != 0) {
        for (unsigned slot = 0; slot < presence.slots(); ++slot) {
            console.end_line(); // a failed entry has ended it
            console.print("  slot #%02u: ", slot);
            print_identification(slot, presence.flags[slot]);
        }
        console.end_line();
        console.print(" base unit: ");
        print_identification(base_unit, presence.flags[ModulePresence::base_unit_index]);
    } else {
        console.print(" ");
        console.print(Color::bad, "flags invalid!");
    }
    console.end_line();
}

void check_modules(const Given&)
{
    progress("Getting state of the module scan:\r\n");
    std::uint8_t changed = 0;
    if (!call_twice(LIB(GetScannedModuleState), &changed))
        return;
    console.print("Module state: ");
    console.print(scan_state_word(changed != 0));
    console.print("\r\n");
    ModulePresence presence;
    if (read_presence(presence) && print_scanned_modules(presence) && changed != 0)
        offer_to_save();
}

void update_presence(const Given&)
{
    progress("Updating module-presence flags:\r\n");
    if (call_twice(LIB(UpdateModulePresence)))
        console.print("Module-presence flags were updated\r\n");
}

void rescan_all_modules(const Given&)
{
    progress("Rescanning address pins of all modules:\r\n");
    if (call_twice(LIB(RescanModules)))
        console.print("Address pins of all modules were rescanned\r\n");
}

void rescan_module(const Given& given)
{
    for_one_or_all({.progress = "Rescanning address pins of ",
                    .label = "Rescanned address pins of ",
                    .heading = "Rescanned address pins:",
                    .failure_ends_all = true},
                   given.address, [](const Module& module) {
                       // Made once, unlike the other calls to a module.
                       if (!call(LIB(RescanModule), module.address))
                           return false;
                       module.print_label();
                       console.print(Color::value, "%2d", static_cast<int>(module.address));
                       console.print("=");
                       console.print(Color::value, "%02Xh", module.address);
                       return true;
                   });
}

void restart_module(const Given& given)
{
    for_one_or_all({.progress = "Restarting ",
                    .label = "",
                    .label_end = " ",
                    .heading = "Restarting:",
                    .slot_end = ": ",
                    .all_has_base_unit = false},
                   given.address, [](const Module& module) {
                       if (!call_twice(LIB(RestartModule), module.address))
                           return false;
                       module.print_label();
                       console.print(module.in_list ? Color::value : Color::label, "restarted");
                       return true;
                   });
}

void show_module_buffer_state(const Given& given)
{
    for_one_or_all({.progress = "Getting Buffer state of ",
                    .label = "Buffer of ",
                    .label_end = " is ",
                    .heading = "Buffer state:",
                    .slot_end = ": ",
                    .all_has_base_unit = false},
                   given.address, [](const Module& module) {
                       std::uint8_t empty = 0;
                       if (!call_twice(LIB(GetModuleBufferState), module.address, &empty))
                           return false;
                       module.print_label();
                       console.print(empty != 0 ? ColoredText{"empty", Color::value}
                                                : ColoredText{"not empty", Color::not_good});
                       return true;
                   });
}

void purge_module(const Given& given)
{
    for_one_or_all({.progress = "Purging ",
                    .label = "Buffers of ",
                    .label_end = " ",
                    .heading = "Buffer state:",
                    .slot_end = ": ",
                    .all_has_base_unit = false},
                   given.address, [](const Module& module) {
                       bool purged = false;
                       if (!purge(module.address, purged))
                           return false;
                       module.print_label();
                       if (purged)
                           console.print(Color::value, module.in_list ? "purged" : "were purged");
                       else
                           console.print(Color::not_good,
                                         module.in_list ? "not purged" : "could not be purged");
                       return true;
                   });
}
