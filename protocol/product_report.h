/// The first part of the acceptance test: what the controller and its modules are, and how they
/// stand. Nothing is changed by it.
#pragma once

#include "instrument/addresses.h"
#include "instrument/device_types.h"
#include "instrument/module_readings.h"
#include "instrument/presence.h"
#include "protocol/report/report.h"

#include <array>
#include <cstdint>

/// What the measurements need to know of it.
struct ProductData {
    std::uint16_t overall_state = 0;
    ModulePresence presence;
    std::array<std::uint16_t, ModulePresence::most_slots> device_types{}; ///< of present slots
    std::array<std::uint32_t, ModulePresence::most_slots> hardware_types{};
    std::uint16_t base_device_type = 0;

    HeaterLimits heater_maxima; ///< what its hardware allows

    /// The module in a slot is of the kind that belongs there.
    [[nodiscard]] bool fits(unsigned slot) const;
    [[nodiscard]] bool has_base_unit_of_its_kind() const;
    /// Of the HV-supply in a slot, in V.
    [[nodiscard]] std::uint32_t voltage_range(unsigned slot) const;
};

/// Reads and reports everything, up to the number of configurations. False after a failure, which
/// has been reported.
[[nodiscard]] bool report_product_data(Report& report, ProductData& data);
