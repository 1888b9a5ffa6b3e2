/// Shows what was read at its places on the full screen.
#pragma once

#include "interactive/layout.h"
#include "interactive/screen_readings.h"

/// Which interlock inputs act on which modules.
struct InterlockMasks {
    std::uint8_t hv_supply = 0;
    std::uint8_t heat_controller = 0;

    /// True when an input (a bit of the masks) acts on anything.
    [[nodiscard]] bool is_enabled(int bit) const
    {
        return ((hv_supply | heat_controller) >> bit & 1) != 0;
    }
};

/// Shows everything that has been read so far.
void draw_values(const ScreenLayout& layout, const ScreenReadings& readings,
                 const ModulePresence& presence, InterlockMasks masks);
