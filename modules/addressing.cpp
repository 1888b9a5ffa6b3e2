#include "modules/addressing.h"

#include "frame/program.h"
#include "frame/terminal/console.h"
#include "instrument/addresses.h"
#include "modules/presence.h"

namespace
{

/// False when it failed.
bool print_line(const Module& module, const ModuleRoutine& routine)
{
    if (!routine(module))
        return false;
    console.print("\r\n");
    return true;
}

} // namespace

void Module::print_label() const
{
    if (!in_list)
        console.print("%s%s%s", texts.label, name.c_str(), texts.label_end);
    else if (address == base_unit)
        console.print("  base unit: ");
    else
        console.print("  slot #%02u%s", address, texts.slot_end);
}

void for_one_or_all(const ModuleTexts& texts, unsigned address, const ModuleRoutine& routine)
{
    const std::string name = module_name(address);
    progress("%s%s:\r\n", texts.progress, name.c_str());
    if (address != all_modules) {
        (void)print_line({.address = address, .in_list = false, .name = name, .texts = texts},
                         routine);
        return;
    }
    ModulePresence presence;
    if (!read_valid_presence(presence))
        return;
    console.print("%s\r\n", texts.heading);
    Module module{.address = 0, .in_list = true, .name = name, .texts = texts};
    for (const unsigned slot : presence.present_slots()) {
        module.address = slot;
        if (!print_line(module, routine) && texts.failure_ends_all)
            return;
    }
    if (texts.all_has_base_unit && presence.has_base_unit()) {
        module.address = base_unit;
        (void)print_line(module, routine);
    }
}
