/// Module addresses and what stands behind them: names, presence, device types.
#pragma once

#include "frame/numbers.h"
#include "frame/terminal/console.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

/// Display name of an address: "heat-controller", "HV-supply 2", "base module", "all modules".
/// Empty for an address that nobody has.
[[nodiscard]] std::string module_name(unsigned address);

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

/// Presence flags: what the controller knows of a slot.
namespace presence_flag
{
inline constexpr std::uint8_t absent = 0;
inline constexpr std::uint8_t present = 1;
inline constexpr std::uint8_t invalid = 2;
} // namespace presence_flag

/// "n/a", "present", "invalid", or "unknown" for any other flag.
[[nodiscard]] const char* presence_text(std::uint8_t flag);

/// The module-presence record of the device library.
struct ModulePresence {
    static constexpr std::size_t base_unit_index = 4;
    static constexpr std::size_t most_slots = 8;

    std::uint8_t valid = 0;
    std::uint32_t slot_count = 0;
    std::array<std::uint8_t, most_slots>
        flags{}; ///< the slots from 0; the base unit at base_unit_index

    /// Slots that the record has room for.
    [[nodiscard]] unsigned slots() const;
    [[nodiscard]] bool has_slot(unsigned slot) const
    {
        return flags[slot] == presence_flag::present;
    }
    [[nodiscard]] bool has_base_unit() const
    {
        return flags[base_unit_index] == presence_flag::present;
    }
    /// The slots with a module in them, in their order.
    [[nodiscard]] std::vector<unsigned> present_slots() const;
};

/// Reads the presence record once. Null, or the name of what failed.
[[nodiscard]] const char* attempt_presence(ModulePresence& presence);

/// What the scan found in a slot or of the base unit, and what is saved of it in the controller.
struct ScannedModule {
    std::int32_t product_number = 0, saved_product_number = 0;
    std::uint32_t hardware_type = 0, saved_hardware_type = 0;
};

/// Reads that of the unit at an address once. Null, or the name of what failed.
[[nodiscard]] const char* attempt_scanned_module(unsigned address, ScannedModule& module);

/// The state of the scan: "changed" when something differs from what is saved, else "OK".
[[nodiscard]] Word scan_state_word(bool changed);

/// False, with a message, when the flags are not valid.
[[nodiscard]] bool check_valid(const ModulePresence& presence);

/// Reads it with its progress line and one repeat of a failed call; false when that failed, too,
/// which has been reported.
[[nodiscard]] bool read_presence(ModulePresence& presence);

/// Both, for a command on all modules.
[[nodiscard]] bool read_valid_presence(ModulePresence& presence);
