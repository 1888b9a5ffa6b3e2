/// What kind of device answers: its device-type code and name.
#pragma once

#include <cstdint>

/// Device-type code of the controller that this program is made for, and what it is called.
inline constexpr std::uint16_t controller_device_type = 0x8ED6;
inline constexpr const char* controller_type_name = "KOV-CTRL";

/// Device-type codes of the modules.
namespace module_type
{
inline constexpr std::uint16_t base_unit = 7220;
inline constexpr std::uint16_t heat_controller = 56092;
inline constexpr std::uint16_t hv_supply = 2573;
} // namespace module_type

struct ModuleType {
    std::uint16_t code;
    const char* name;
    const char* list_name; ///< padded to one length
};

/// The type of that code; null when there is none.
[[nodiscard]] const ModuleType* find_module_type(std::uint16_t code);
