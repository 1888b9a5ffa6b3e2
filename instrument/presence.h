/// What is in the controller's slots: presence flags, and what the scan of the modules found.
#pragma once

#include "frame/failure.h"
#include "frame/terminal/colors.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <vector>

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

/// Reads the presence record once.
[[nodiscard]] Failure attempt_presence(ModulePresence& presence);

/// What the scan found in a slot or of the base unit, and what is saved of it in the controller.
struct ScannedModule {
    std::int32_t product_number = 0, saved_product_number = 0;
    std::uint32_t hardware_type = 0, saved_hardware_type = 0;
};

/// Reads that of the unit at an address once.
[[nodiscard]] Failure attempt_scanned_module(unsigned address, ScannedModule& module);

/// The state of the scan: "changed" when something differs from what is saved, else "OK".
[[nodiscard]] ColoredText scan_state_word(bool changed);

/// What a command says that needs the flags when they are not valid.
inline constexpr ColoredText presence_flags_invalid = {"Module-presence flags invalid!",
                                                       Color::bad};
