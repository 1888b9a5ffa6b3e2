/// What the controller's status words mean: the tables that every display of them uses.
#pragma once

#include <array>
#include <cstdint>
#include <string_view>
#include <vector>

#include "frame/bit_fields.h"
#include "frame/format.h"

inline constexpr Word ok_word = {"OK  ", Color::good};
inline constexpr Word fail_word = {"fail", Color::bad};

// ---- Overall state: a code ----

namespace overall_state
{
inline constexpr std::uint16_t on = 0x0000;
inline constexpr std::uint16_t stand_by = 0x0001;
inline constexpr std::uint16_t first_error = 0x0010;
inline constexpr std::uint16_t last_error = 0x0015;
} // namespace overall_state

/// The text of an overall state in its colour, padded to 21 characters. An unknown code is shown,
/// not an error.
[[nodiscard]] Word overall_state_word(std::uint16_t code);

// ---- Device state, 8 bits: set = fault ----

inline constexpr std::array device_state_fields = {
    BitField{"Interlock: ", 0, fail_word, ok_word},
    BitField{"Supply voltages: ", 1, fail_word, ok_word},
    BitField{"Temperature: ", 2, fail_word, ok_word},
    BitField{"Fan: ", 3, fail_word, ok_word},
    BitField{"Module configuration: ", 4, fail_word, ok_word},
};
static_assert(well_formed(device_state_fields, 8));

// ---- Voltage state, 8 bits: set = good. PSU is bit 5 and shown before Line, bit 4. ----

inline constexpr std::array voltage_state_fields = {
    BitField{"   +3V3: ", 0, ok_word, fail_word}, BitField{"   +5V0: ", 1, ok_word, fail_word},
    BitField{"   +24V: ", 2, ok_word, fail_word}, BitField{"   PSU: ", 5, ok_word, fail_word},
    BitField{"   Line: ", 4, ok_word, fail_word},
};
static_assert(well_formed(voltage_state_fields, 8));

// ---- Temperature state, 8 bits ----

namespace temperature_bit
{
inline constexpr int cpu_hot = 0;
inline constexpr int psu_hot = 1;
inline constexpr int cpu_cold = 2;
inline constexpr int psu_cold = 3;
} // namespace temperature_bit

/// "hot ", "cold" or "OK  ". Hot wins over cold.
[[nodiscard]] Word temperature_word(std::uint8_t state, int hot_bit, int cold_bit);

// ---- Fan state, 8 bits ----

inline constexpr std::array fan_state_fields = {
    BitField{"   Fan OK: ", 0, ok_word, fail_word},
    BitField{"   Switch Fan current: ", 1, on_word, off_word},
    BitField{"   last: ", 2, on_word, off_word},
    BitField{"   Fan enabled: ", 3, yes_word, no_word},
};
static_assert(well_formed(fan_state_fields, 8));

// ---- Interlock state, 16 bits: set = OK. "Current" is the input now, "last" is latched. ----

inline constexpr std::array heat_controller_interlock_fields = {
    BitField{"Heat controller: Interlock#1 current: ", 8, ok_word, fail_word},
    BitField{"last: ", 10, ok_word, fail_word},
    BitField{"Interlock#2 current: ", 9, ok_word, fail_word},
    BitField{"last: ", 11, ok_word, fail_word},
};
inline constexpr std::array controller_interlock_fields = {
    BitField{"Controller: Interlock front current: ", 12, ok_word, fail_word},
    BitField{"last: ", 14, ok_word, fail_word},
    BitField{"Interlock rear current: ", 13, ok_word, fail_word},
    BitField{"last: ", 15, ok_word, fail_word},
};
/// What the device acts on.
inline constexpr std::array resulting_interlock_fields = {
    BitField{"Resulting values: HTCTR#1: ", 0, ok_word, fail_word},
    BitField{"HTCTR#2: ", 1, ok_word, fail_word},
    BitField{"front: ", 2, ok_word, fail_word},
    BitField{"rear: ", 3, ok_word, fail_word},
};
static_assert(well_formed(heat_controller_interlock_fields, 16) &&
              well_formed(controller_interlock_fields, 16) &&
              well_formed(resulting_interlock_fields, 16));
