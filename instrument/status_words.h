/// What the controller's status words mean, and the words that it is set with: the tables that
/// every display of them uses. A table is in the order of the single displays; another order takes
/// the fields by their names.
#pragma once

#include "frame/text/bit_table.h"
#include "instrument/controller_readings.h"
#include "instrument/words.h"

#include <array>
#include <cstdint>

// ---- Overall state: a code ----

namespace overall_state
{
inline constexpr std::uint16_t on = 0x0000;
inline constexpr std::uint16_t stand_by = 0x0001;
inline constexpr std::uint16_t general_fault = 0x0010;
inline constexpr std::uint16_t modules = 0x0011;
inline constexpr std::uint16_t supply_voltage = 0x0012;
inline constexpr std::uint16_t too_cold = 0x0013;
inline constexpr std::uint16_t overheating = 0x0014;
inline constexpr std::uint16_t interlock = 0x0015;
inline constexpr std::uint16_t first_error = general_fault;
} // namespace overall_state

/// The text of an overall state in its colour, padded to 21 characters. An unknown code is shown,
/// not an error.
[[nodiscard]] ColoredText overall_state_word(std::uint16_t code);

// ---- Device state, 8 bits: set = fault ----

namespace device_state_field
{
inline constexpr BitField interlock = {"Interlock: ", 0, fail_word, ok_word};
inline constexpr BitField supply_voltages = {"Supply voltages: ", 1, fail_word, ok_word};
inline constexpr BitField temperature = {"Temperature: ", 2, fail_word, ok_word};
inline constexpr BitField fan = {"Fan: ", 3, fail_word, ok_word};
inline constexpr BitField modules = {"Module configuration: ", 4, fail_word, ok_word};
} // namespace device_state_field

inline constexpr std::array device_state_fields = {
    device_state_field::interlock, device_state_field::supply_voltages,
    device_state_field::temperature, device_state_field::fan, device_state_field::modules};
static_assert(well_formed(device_state_fields, 8));

// ---- Voltage state, 8 bits: set = good. PSU is bit 5 and shown before Line, bit 4. ----

namespace voltage_state_field
{
inline constexpr BitField plus_3_3 = {"   +3V3: ", 0, ok_word, fail_word};
inline constexpr BitField plus_5 = {"   +5V0: ", 1, ok_word, fail_word};
inline constexpr BitField plus_24 = {"   +24V: ", 2, ok_word, fail_word};
inline constexpr BitField psu = {"   PSU: ", 5, ok_word, fail_word};
inline constexpr BitField line = {"   Line: ", 4, ok_word, fail_word};
} // namespace voltage_state_field

inline constexpr std::array voltage_state_fields = {
    voltage_state_field::plus_3_3, voltage_state_field::plus_5, voltage_state_field::plus_24,
    voltage_state_field::psu, voltage_state_field::line};
static_assert(well_formed(voltage_state_fields, 8));

// ---- Temperature state, 8 bits ----

namespace temperature_bit
{
inline constexpr int cpu_hot = 0;
inline constexpr int psu_hot = 1;
inline constexpr int cpu_cold = 2;
inline constexpr int psu_cold = 3;
} // namespace temperature_bit

/// What is too hot or too cold by a bit each.
struct TemperatureField {
    const char* label;
    int hot_bit;
    int cold_bit;

    /// "hot ", "cold" or "OK  ". Hot wins over cold.
    [[nodiscard]] ColoredText word(std::uint8_t state) const;
};

inline constexpr std::array temperature_state_fields = {
    TemperatureField{"   CPU: ", temperature_bit::cpu_hot, temperature_bit::cpu_cold},
    TemperatureField{"   PSU: ", temperature_bit::psu_hot, temperature_bit::psu_cold},
};

// ---- Fan state, 8 bits ----

namespace fan_state_field
{
inline constexpr BitField good = {"   Fan OK: ", 0, ok_word, fail_word};
inline constexpr BitField switch_current = {"   Switch Fan current: ", 1, on_word, off_word};
inline constexpr BitField switch_last = {"   last: ", 2, on_word, off_word};
inline constexpr BitField enabled = {"   Fan enabled: ", 3, yes_word, no_word};
} // namespace fan_state_field

inline constexpr std::array fan_state_fields = {
    fan_state_field::good, fan_state_field::switch_current, fan_state_field::switch_last,
    fan_state_field::enabled};
static_assert(well_formed(fan_state_fields, 8));

// ---- Interlocks ----

/// The interlock inputs: their bits in the interlock enable masks and among the resulting values.
namespace interlock_bit
{
inline constexpr int heat_controller_1 = 0;
inline constexpr int heat_controller_2 = 1;
inline constexpr int front = 2;
inline constexpr int rear = 3;
} // namespace interlock_bit

/// Interlock state, 16 bits: set = OK. "Current" is the input now, "last" is latched.
namespace interlock_field
{
inline constexpr BitField current_1 = {"Heat controller: Interlock#1 current: ", 8, ok_word,
                                       fail_word};
inline constexpr BitField last_1 = {"last: ", 10, ok_word, fail_word};
inline constexpr BitField current_2 = {"Interlock#2 current: ", 9, ok_word, fail_word};
inline constexpr BitField last_2 = {"last: ", 11, ok_word, fail_word};

inline constexpr BitField current_front = {"Controller: Interlock front current: ", 12, ok_word,
                                           fail_word};
inline constexpr BitField last_front = {"last: ", 14, ok_word, fail_word};
inline constexpr BitField current_rear = {"Interlock rear current: ", 13, ok_word, fail_word};
inline constexpr BitField last_rear = {"last: ", 15, ok_word, fail_word};

inline constexpr BitField resulting_1 = {
    "Resulting values: HTCTR#1: ", interlock_bit::heat_controller_1, ok_word, fail_word};
inline constexpr BitField resulting_2 = {"HTCTR#2: ", interlock_bit::heat_controller_2, ok_word,
                                         fail_word};
inline constexpr BitField resulting_front = {"front: ", interlock_bit::front, ok_word, fail_word};
inline constexpr BitField resulting_rear = {"rear: ", interlock_bit::rear, ok_word, fail_word};
} // namespace interlock_field

inline constexpr std::array heat_controller_interlock_fields = {
    interlock_field::current_1, interlock_field::last_1, interlock_field::current_2,
    interlock_field::last_2};
inline constexpr std::array controller_interlock_fields = {
    interlock_field::current_front, interlock_field::last_front, interlock_field::current_rear,
    interlock_field::last_rear};
/// What the device acts on.
inline constexpr std::array resulting_interlock_fields = {
    interlock_field::resulting_1, interlock_field::resulting_2, interlock_field::resulting_front,
    interlock_field::resulting_rear};
static_assert(well_formed(heat_controller_interlock_fields, 16) &&
              well_formed(controller_interlock_fields, 16) &&
              well_formed(resulting_interlock_fields, 16));

// ---- What is set ----

/// An interlock enable mask, 8 bits, the same for the HV-supplies and the heat-controller: set =
/// the input acts on the modules of that kind.
inline constexpr std::array interlock_mask_fields = {
    BitField{"  HTCTR#1: ", interlock_bit::heat_controller_1, on_word, off_word},
    BitField{"  HTCTR#2: ", interlock_bit::heat_controller_2, on_word, off_word},
    BitField{"  front: ", interlock_bit::front, on_word, off_word},
    BitField{"  rear: ", interlock_bit::rear, on_word, off_word},
};

/// Function of the slide switch 'Fan', 8 bits: whether the software overrides it, and with what.
inline constexpr std::array fan_switch_fields = {
    BitField{", override: ", 0, on_word, off_word},
    BitField{", software control: ", 1, on_word, off_word},
};
static_assert(well_formed(interlock_mask_fields, 8) && well_formed(fan_switch_fields, 8));

// ---- Flags that are no bits of a word ----

/// How a flag of a record is shown.
template <class Record>
struct FlagField {
    const char* label;
    std::uint8_t Record::*flag;
    ColoredText set;
    ColoredText clear;

    [[nodiscard]] constexpr const ColoredText& word(const Record& record) const
    {
        return record.*flag != 0 ? set : clear;
    }
};

inline constexpr std::array input_level_fields = {
    FlagField<InputLevels>{"   Interlock Front State: ",
                           &InputLevels::interlock_front,
                           {"Y", Color::good},
                           {"N", Color::not_good}},
    FlagField<InputLevels>{"   Interlock Rear Level: ",
                           &InputLevels::interlock_rear,
                           {"1", Color::good},
                           {"0", Color::not_good}},
    FlagField<InputLevels>{
        "   Fan Enabled: ", &InputLevels::fan_enabled, {"Y", Color::good}, {"N", Color::not_good}},
};

inline constexpr std::array power_monitor_fields = {
    FlagField<PowerMonitors>{"   AC input: ", &PowerMonitors::ac_input, ok_word, fail_word},
    FlagField<PowerMonitors>{"   DC output: ", &PowerMonitors::dc_output, ok_word, fail_word},
};
