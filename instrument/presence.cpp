#include "instrument/presence.h"

#include "frame/device_call.h"

#include <algorithm>

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

Failure attempt_presence(ModulePresence& presence)
{
    return attempt(LIB(GetModulePresence), &presence.valid, &presence.slot_count, &presence.flags);
}

Failure attempt_scanned_module(unsigned address, ScannedModule& module)
{
    return attempt(LIB(GetScannedModuleParams), address, &module.product_number,
                   &module.saved_product_number, &module.hardware_type,
                   &module.saved_hardware_type);
}

ColoredText scan_state_word(bool changed)
{
    return changed ? ColoredText{"changed", Color::not_good} : ColoredText{"OK", Color::good};
}
