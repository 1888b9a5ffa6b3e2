/// The first part of the acceptance test: what the controller and its modules are, and how they
/// stand. Nothing is changed by it.
#pragma once

#include <array>
#include <cstdint>

#include "modules/presence.h"
#include "protocol/report.h"

/// What the measurements need to know of it.
struct ProductData {
    std::uint16_t overall_state = 0;
    ModulePresence presence;
    std::array<std::uint16_t, 8> device_types{};   ///< of the slots that are present
    std::array<std::uint32_t, 8> hardware_types{}; ///< of the slots that are present
    std::uint16_t base_device_type = 0;

    // What the heat-controller's hardware allows: V, A, W, degrees Celsius.
    double maximum_voltage = 0, maximum_current = 0, maximum_power = 0, maximum_temperature = 0;

    /// The module in a slot is of the kind that belongs there.
    [[nodiscard]] bool fits(unsigned slot) const;
};

/// Reads and reports everything, up to the number of configurations. False after a failure, which
/// has been reported.
[[nodiscard]] bool report_product_data(Report& report, ProductData& data);
