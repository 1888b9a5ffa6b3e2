/// The controller's hardware-type word: what it is equipped with.
#pragma once

#include "frame/text/bit_table.h"
#include "instrument/words.h"

#include <array>
#include <cstdint>

namespace controller_hardware
{

/// Size of the non-volatile memory in KiB.
[[nodiscard]] constexpr std::uint32_t memory_size(std::uint32_t word)
{
    return word & 0xFFF;
}

/// Bits above the memory's size: set = there is one.
inline constexpr std::array fields = {
    BitField{"RS232: ", 12, yes_word, no_word},
    BitField{"USB: ", 13, yes_word, no_word},
    BitField{"Internal LED: ", 14, yes_word, no_word},
    BitField{"External LED: ", 15, yes_word, no_word},
};
static_assert(well_formed(fields, 32));

} // namespace controller_hardware
