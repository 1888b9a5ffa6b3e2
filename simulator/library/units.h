/// How an address becomes a unit, and values that several functions deliver.
#pragma once

#include "simulator/library/errors.h"
#include "simulator/model/instrument.h"

namespace simulator
{

/// The unit at an address when one answers there.
[[nodiscard]] Failure find_unit(const Instrument& instrument, std::uint32_t address,
                                unsigned& unit);

/// The same for an HV-supply / for the heat-controller's slot.
[[nodiscard]] Failure find_supply(const Instrument& instrument, std::uint32_t address,
                                  unsigned& supply);
[[nodiscard]] Failure find_heater(const Instrument& instrument);

/// The unit at an address, whether one answers or not.
[[nodiscard]] Failure find_place(std::uint32_t address, unsigned& unit);

/// Writes a text into a buffer of `size` bytes, with its terminator when there is room.
void copy_text(char* buffer, std::size_t size, const std::string& text);

/// Writes a product identification into a buffer of 84 bytes. Whatever it was set to, it ends in
/// ", simulated", so that nobody takes this instrument for a real one.
void copy_product_id(char* buffer, const std::string& text);

/// Splits a duration into seconds and the milliseconds beyond; a negative one is 0.
void split_duration(std::int64_t microseconds, std::uint32_t* seconds, std::uint16_t* milliseconds);

} // namespace simulator
