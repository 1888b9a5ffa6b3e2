#include "instrument/device_types.h"

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
