/// Module addresses: their numbers, how they are typed, and their names.
#pragma once

#include <string>
#include <string_view>

inline constexpr unsigned heat_controller = 0; ///< its slot
inline constexpr unsigned highest_slot = 3;    ///< from 1 on: HV-supplies
inline constexpr unsigned base_unit = 128;     ///< the controller's own base unit
inline constexpr unsigned all_modules = 255;
inline constexpr char base_unit_character = '_';
inline constexpr char all_modules_character = '*';
inline constexpr int invalid_address = -1;

/// A module address: "*" alone is all modules, "_" alone the base unit, else the number of a slot.
[[nodiscard]] int read_address(std::string_view text);

/// Display name of an address: "heat-controller", "HV-supply 2", "base module", "all modules".
/// Empty for an address that nobody has.
[[nodiscard]] std::string module_name(unsigned address);
