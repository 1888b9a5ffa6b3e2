#include "modules/presence.h"

#include "frame/device_call.h"
#include "frame/program.h"

#include <algorithm>

std::string module_name(unsigned address)
{
    switch (address) {
    case heat_controller:
        return "heat-controller";
    case 1:
    case 2:
    case 3:
        return "HV-supply " + std::to_string(address);
    case base_unit:
        return "base module";
    case all_modules:
        return "all modules";
    default:
        return {};
    }
}

const ModuleType* find_module_type(std::uint16_t code)
{
    static constexpr ModuleType types[] = {
        {module_type::base_unit, "KOVCT-BASE", "Base  "},
        {module_type::heat_controller, "HTCTRL", "HTCTRL"},
        {module_type::hv_supply, "HVPS", "HVPS  "},
    };
    for (const ModuleType& type : types) {
        if (type.code == code)
            return &type;
    }
    return nullptr;
}

const char* presence_text(std::uint8_t flag)
{
    switch (flag) {
    case presence_flag::absent:
        return "n/a";
    case presence_flag::present:
        return "present";
    case presence_flag::invalid:
        return "invalid";
    default:
        return "unknown";
    }
}

unsigned ModulePresence::slots() const
{
    return std::min(slot_count, static_cast<std::uint32_t>(flags.size()));
}

std::vector<unsigned> ModulePresence::present_slots() const
{
    std::vector<unsigned> present;
    for (unsigned slot = 0; slot < slots(); ++slot) {
        if (has_slot(slot))
            present.push_back(slot);
    }
    return present;
}

const char* attempt_presence(ModulePresence& presence)
{
    return attempt(LIB(GetModulePresence), &presence.valid, &presence.slot_count, &presence.flags);
}

const char* attempt_scanned_module(unsigned address, ScannedModule& module)
{
    return attempt(LIB(GetScannedModuleParams), address, &module.product_number,
                   &module.saved_product_number, &module.hardware_type,
                   &module.saved_hardware_type);
}

Word scan_state_word(bool changed)
{
    return changed ? Word{"changed", Color::not_good} : Word{"OK", Color::good};
}

bool check_valid(const ModulePresence& presence)
{
    if (presence.valid == 0) {
        console.print(Color::bad, "Module-presence flags invalid!");
        console.print("\r\n");
    }
    return presence.valid != 0;
}

bool read_presence(ModulePresence& presence)
{
    progress("Getting module-presence flags:\r\n");
    return succeeded(with_repeat([&] { return attempt_presence(presence); }));
}

bool read_valid_presence(ModulePresence& presence)
{
    return read_presence(presence) && check_valid(presence);
}
