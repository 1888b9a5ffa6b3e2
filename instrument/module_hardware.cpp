#include "instrument/module_hardware.h"

#include "frame/text/format.h"

namespace
{

std::string power_and_figure(std::uint32_t word, WordField figure)
{
    return formatted("KOVCT-%uW-%u", base_unit_hardware::maximum_power.of(word), figure.of(word));
}

} // namespace

namespace base_unit_hardware
{

std::string type_name(std::uint32_t word)
{
    return power_and_figure(word, slots);
}

std::string type_name_with_fans(std::uint32_t word)
{
    constexpr WordField slots_and_fans = {20, 8};
    return power_and_figure(word, slots_and_fans);
}

} // namespace base_unit_hardware

namespace heat_controller_hardware
{

namespace
{

/// Voltage and current are told in sixteenths.
double sixteenths(std::uint32_t word, WordField field)
{
    return field.of(word) / 16.0;
}

} // namespace

double supply_voltage(std::uint32_t word)
{
    return sixteenths(word, {0, 12});
}

double maximum_current(std::uint32_t word)
{
    return sixteenths(word, {12, 12});
}

std::string type_name(std::uint32_t word)
{
    return formatted("HEAT-CTRL-%.0f%.0f", supply_voltage(word), maximum_current(word));
}

} // namespace heat_controller_hardware

namespace hv_supply_hardware
{

namespace
{

int current_exponent(std::uint32_t word, WordField field)
{
    return 1 - static_cast<int>(field.of(word));
}

} // namespace

int lowest_current_exponent(std::uint32_t word)
{
    return current_exponent(word, {18, 4});
}

int highest_current_exponent(std::uint32_t word)
{
    return current_exponent(word, {22, 4});
}

const char* output_kind(std::uint32_t word)
{
    if (bipolar_outputs.of(word) != 0)
        return "Bipolar";
    return unipolar_outputs.of(word) != 0 ? "Positive" : "Negative";
}

std::string fpga_version_text(std::uint32_t version)
{
    return formatted("%u-%02u", version >> 16, version >> 8 & 0xFF);
}

std::string type_name(std::uint32_t word)
{
    return formatted("HVPS-%u%c", voltage_range.of(word), output_kind(word)[0]);
}

} // namespace hv_supply_hardware
