#include "instrument/addresses.h"

#include "frame/text/numbers.h"

#include <cstdint>

int read_address(std::string_view text)
{
    if (text.size() == 1 && text.front() == all_modules_character)
        return static_cast<int>(all_modules);
    if (text.size() == 1 && text.front() == base_unit_character)
        return static_cast<int>(base_unit);
    std::uint32_t number = 0;
    if (!read_unsigned(text, number) || number > highest_slot)
        return invalid_address;
    return static_cast<int>(number);
}

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
