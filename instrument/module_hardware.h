/// The hardware-type words of the modules: what each kind says about itself, and the type names
/// made of it.
#pragma once

#include <cstdint>
#include <string>

/// A number inside a word.
struct WordField {
    int lowest_bit;
    int bits;

    [[nodiscard]] constexpr std::uint32_t of(std::uint32_t word) const
    {
        return word >> lowest_bit & ((1U << bits) - 1U);
    }
};

namespace base_unit_hardware
{
inline constexpr WordField supply_voltage = {0, 8}; ///< V
inline constexpr WordField maximum_power = {8, 12}; ///< W
inline constexpr WordField slots = {20, 4};
inline constexpr WordField fans = {24, 2};

/// "KOVCT-200W-4".
[[nodiscard]] std::string type_name(std::uint32_t word);

/// The same as the console shows it. Kept: the last figure is not the slots alone, it takes in the
/// four bits above them with the number of fans: "KOVCT-200W-20" are four slots and one fan.
[[nodiscard]] std::string type_name_with_fans(std::uint32_t word);
} // namespace base_unit_hardware

namespace heat_controller_hardware
{
inline constexpr WordField interlocks = {24, 2};
inline constexpr WordField channels = {26, 2};

/// V
[[nodiscard]] double supply_voltage(std::uint32_t word);
/// A
[[nodiscard]] double maximum_current(std::uint32_t word);

/// Both, rounded and without anything between them: "HEAT-CTRL-245" is 24 V and 5 A.
[[nodiscard]] std::string type_name(std::uint32_t word);
} // namespace heat_controller_hardware

namespace hv_supply_hardware
{
inline constexpr WordField voltage_range = {0, 14}; ///< V
inline constexpr WordField current_ranges = {14, 4};
inline constexpr WordField bipolar_outputs = {26, 2};
/// Kept: the same two bits are shown as the number of positive outputs and as that of negative
/// ones.
inline constexpr WordField unipolar_outputs = {30, 2};

/// Exponents of the lowest and of the highest current range: -6 is 1E-6 A.
[[nodiscard]] int lowest_current_exponent(std::uint32_t word);
[[nodiscard]] int highest_current_exponent(std::uint32_t word);

/// "Bipolar", "Positive" or "Negative".
[[nodiscard]] const char* output_kind(std::uint32_t word);

/// Version of the FPGA: major in bits 16..31, minor in bits 8..15; the rest is not shown.
[[nodiscard]] std::string fpga_version_text(std::uint32_t version);

/// Voltage range and the first letter of the output kind: "HVPS-3000B".
[[nodiscard]] std::string type_name(std::uint32_t word);
} // namespace hv_supply_hardware
