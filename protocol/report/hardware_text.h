/// What a unit's hardware-type word means, in the words of the acceptance test's report.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

struct HardwareProperty {
    std::string label, value;
};

struct HardwareText {
    std::string word; ///< "0140C818h (KOVCT-200W-4, 24V)"
    std::vector<HardwareProperty> properties;
};

[[nodiscard]] HardwareText controller_hardware_text(std::uint32_t word);

/// As far as the device type tells what the word means.
[[nodiscard]] HardwareText module_hardware_text(std::uint16_t device_type, std::uint32_t word);
