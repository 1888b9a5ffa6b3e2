/// The state words of the modules and of the base unit.
#pragma once

#include "frame/text/bit_table.h"
#include "instrument/addresses.h"
#include "instrument/words.h"

#include <array>
#include <span>

/// Bits of a state word.
namespace module_state_bit
{
inline constexpr int device_active = 15;
inline constexpr int module_active = 14; ///< not of the base unit
inline constexpr int control_active = 8; ///< not of the base unit
} // namespace module_state_bit

/// State word of a module, 16 bits, set = active. Of the base unit's only the first field counts.
inline constexpr std::array module_state_fields = {
    BitField{" Device active: ", module_state_bit::device_active, yes_word, no_word},
    BitField{", Module active: ", module_state_bit::module_active, yes_word, no_word},
    BitField{", Control active: ", module_state_bit::control_active, yes_word, no_word},
};
static_assert(well_formed(module_state_fields, 16));

/// Those that the unit at an address has.
[[nodiscard]] constexpr std::span<const BitField> module_state_fields_of(unsigned address)
{
    const std::span<const BitField> fields = module_state_fields;
    return address == base_unit ? fields.first(1) : fields;
}
