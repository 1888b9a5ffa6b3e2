/// What the frame needs to know of the instrument behind the port; the entry names it.
#pragma once

#include <cstdint>
#include <string_view>

struct DeviceFacts {
    std::uint16_t type;    ///< the device-type code that a session expects
    unsigned highest_slot; ///< of the modules' slots, from 0 on
    /// Typed in place of a slot's number.
    char base_unit_character, all_modules_character;
    /// Reads a module address as it is typed; negative when the text is none.
    int (*read_address)(std::string_view text);
};
