/// What a whole report holds, part by part.
#pragma once

#include "companion/report/reading/line_reader.h"
#include "instrument/addresses.h"
#include "instrument/device_types.h"
#include "instrument/module_readings.h"
#include "instrument/presence.h"

#include <array>
#include <cstdint>

namespace companion
{

/// What the product data of a report say of the units.
struct UnitsFound {
    struct Slot {
        bool is_present = false;
        std::uint16_t device_type = 0;
        std::uint32_t hardware_type = 0;
    };
    std::array<Slot, ModulePresence::most_slots> slots{};
    Slot base;
    HeaterLimits heater_maxima;
    double uptime = 0; ///< s

    [[nodiscard]] bool fits(unsigned slot) const;
};

/// "slot1"
[[nodiscard]] std::string unit_key(unsigned address);

/// From the first line to the number of configurations.
void read_product_data(LineReader& reader, UnitsFound& found);
/// The measurements.
void read_steps(LineReader& reader, const UnitsFound& found);

} // namespace companion
