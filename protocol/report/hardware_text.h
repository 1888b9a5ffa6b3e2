/// What a unit's device type and hardware-type word mean, in the words of the acceptance test's
/// report.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

/// "DB1Ch (HTCTRL)"; without a name when none is known.
[[nodiscard]] std::string device_type_text(std::uint16_t code, bool is_controller);

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
