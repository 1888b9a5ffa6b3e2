#include "simulator/library/units.h"

#include <algorithm>
#include <cstring>

namespace simulator
{

namespace
{

Failure wrong_address(std::uint32_t address)
{
    explain("there is no module with the address " + std::to_string(address));
    return Failure::bad_address;
}

Failure other_kind(std::uint32_t address, const char* kind)
{
    explain("the module with the address " + std::to_string(address) + " is no " + kind);
    return Failure::bad_address;
}

} // namespace

Failure find_place(std::uint32_t address, unsigned& unit)
{
    if (address >= slot_count && address != base_address)
        return wrong_address(address);
    unit = address == base_address ? base_unit : address;
    return Failure::none;
}

Failure find_unit(const Instrument& instrument, std::uint32_t address, unsigned& unit)
{
    const Failure failure = find_place(address, unit);
    if (failure != Failure::none)
        return failure;
    if (instrument.physical.units[unit].present == 1)
        return Failure::none;
    explain(unit == base_unit ? "no answer from the base unit"
                              : "no answer from the module in slot " + std::to_string(unit));
    return Failure::no_answer;
}

Failure find_supply(const Instrument& instrument, std::uint32_t address, unsigned& supply)
{
    if (address == 0 || address == base_address)
        return other_kind(address, "HV-supply");
    unsigned unit = 0;
    const Failure failure = find_unit(instrument, address, unit);
    if (failure != Failure::none)
        return failure;
    supply = unit - 1;
    return works(instrument, unit) ? Failure::none : other_kind(address, "HV-supply");
}

Failure find_heater(const Instrument& instrument)
{
    unsigned unit = 0;
    const Failure failure = find_unit(instrument, 0, unit);
    if (failure != Failure::none)
        return failure;
    return works(instrument, unit) ? Failure::none : other_kind(0, "heat-controller");
}

void copy_text(char* buffer, std::size_t size, const std::string& text)
{
    const std::size_t length = std::min(text.size(), size);
    std::memcpy(buffer, text.data(), length);
    if (length < size)
        buffer[length] = '\0';
}

void copy_product_id(char* buffer, const std::string& text)
{
    constexpr std::size_t size = 84;
    constexpr std::string_view mark = ", simulated";
    copy_text(buffer, size, text.substr(0, size - 1 - mark.size()).append(mark));
}

void split_duration(std::int64_t microseconds, std::uint32_t* seconds, std::uint16_t* milliseconds)
{
    const std::int64_t whole_ms = std::max(microseconds, std::int64_t{0}) / 1000;
    *seconds = static_cast<std::uint32_t>(whole_ms / 1000);
    *milliseconds = static_cast<std::uint16_t>(whole_ms % 1000);
}

} // namespace simulator
