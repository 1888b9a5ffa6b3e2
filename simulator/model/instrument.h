/// The simulated instrument: everything that it is and holds, and how it moves as time passes.
///
/// Nothing runs between calls. Each call first brings the instrument to the present time
/// (instrument_now() of the_instrument.h), so its state is a function of the settings and of the
/// time that has passed.
#pragma once

#include "simulator/model/memory.h"

#include <array>
#include <cstdint>
#include <optional>
#include <span>
#include <string>

namespace simulator
{

inline constexpr unsigned slot_count = 4;   ///< slot 0 the heat-controller, 1..3 the HV-supplies
inline constexpr unsigned base_unit = 4;    ///< position of the base unit behind the slots
inline constexpr unsigned unit_count = 5;   ///< the slots and the base unit
inline constexpr unsigned controller = 5;   ///< position of the controller in tables of clocks
inline constexpr unsigned supply_count = 3; ///< HV-supplies; supply n sits in slot n + 1

inline constexpr std::uint32_t base_address = 128;

inline constexpr std::uint16_t controller_type = 0x8ED6;
inline constexpr std::uint16_t base_type = 7220;
inline constexpr std::uint16_t heater_type = 56092;
inline constexpr std::uint16_t supply_type = 2573;

/// What is printed on a unit, so to say.
struct Identity {
    std::string product_id;
    std::int32_t product_number = 0;
    std::uint16_t year = 2024;
    std::uint16_t week = 1;
    std::uint16_t hardware_version = 0x0100;
    std::uint16_t firmware_version = 0x0100;
    std::string firmware_date;
    std::uint16_t device_type = 0;
    std::uint32_t hardware_type = 0;
    std::uint32_t fpga_version = 0;
};

/// Mean values of a unit's housekeeping in V, degrees Celsius and per cent; a unit delivers those
/// that its kind has.
struct Readings {
    double voltage33 = 3.3;
    double voltage5 = 5.0;
    double voltage24 = 24.0;
    double voltage_minus22 = -22.0;
    double voltage18 = 18.0;
    double voltage_minus18 = -18.0;
    double voltage_vc = 1.5;
    double analog_ground = 0.0;
    double cpu_temperature = 30.0;
    double psu_temperature = 32.0;
    double cpu_load = 10.0;
};

enum class Contact : std::uint8_t { open, closed, noisy };

/// The interlock inputs, in the order of the bits of the interlock masks.
enum class Input : unsigned { heater1, heater2, front, rear };
inline constexpr unsigned input_count = 4;
[[nodiscard]] constexpr unsigned bit(Input input)
{
    return 1U << static_cast<unsigned>(input);
}

struct Unit {
    Identity identity;
    Readings readings;
    std::uint8_t present = 1; ///< 0 empty, 1 present, 2 invalid, other values unknown
    bool buffer_empty = true;
    bool purges = true;
    std::optional<std::uint16_t> forced_state;
};

struct HeaterModel {
    double ambient = 25.0;           ///< degrees Celsius
    double resistance = 5.0;         ///< ohm at 25 degrees Celsius
    double resistance_rise = 0.001;  ///< of the resistance, per degree
    double wires = 0.15;             ///< ohm, both ways
    double thermal_resistance = 2.2; ///< degrees per watt
    double heat_capacity = 50.0;     ///< joule per degree
    double voltage_limit = 22.0;     ///< hardware limits: V, A, W, degrees Celsius
    double current_limit = 5.0;
    double power_limit = 90.0;
    double temperature_limit = 200.0;
};

struct SupplyModel {
    double load = 1e10; ///< ohm
    std::optional<double> forced_voltage;
    std::optional<double> forced_current;
};

/// How often each kind of measurement is made, in microseconds: whole steps of 10 ms.
struct Periods {
    std::int64_t housekeeping = 1'000'000;
    std::int64_t fan = 1'000'000;
    std::int64_t monitoring = 100'000;
    std::int64_t voltage = 200'000;
    std::int64_t current = 100'000;
};

struct Fan {
    bool failed = false;
    bool switched_on = true;            ///< the slide switch
    std::optional<double> forced_set;   ///< rpm
    std::optional<double> forced_speed; ///< rpm
    std::optional<double> forced_pwm;   ///< fraction
};

/// What a tester can change of the world around and inside the instrument.
struct Physical {
    Identity identity; ///< of the controller
    Readings readings; ///< of the controller
    std::array<Unit, unit_count> units{};
    std::array<Contact, input_count> inputs{Contact::closed, Contact::closed, Contact::closed,
                                            Contact::closed};
    HeaterModel heater;
    std::array<SupplyModel, supply_count> supplies{};
    Periods periods;
    Fan fan;
    double cpu_load = 0.12;      ///< of the controller, as a fraction
    double cpu_frequency = 72e6; ///< Hz
    bool ac_input = true;
    bool dc_output = true;
    bool buffer_empty = true;
    bool purges = true;
    bool presence_valid = true;
    std::uint32_t presence_slots = slot_count;
    bool noise = true;
    std::int64_t answer_time_us = 1000; ///< of each call
    std::uint16_t library_version = 0x0105;
    std::optional<std::uint16_t> forced_state;
    std::optional<std::uint8_t> forced_device_state;
    std::optional<std::uint8_t> forced_voltage_state;
    std::optional<std::uint8_t> forced_temperature_state;
    std::optional<std::uint8_t> forced_fan_state;
    std::optional<std::uint16_t> forced_interlock_state;
};

/// The time a unit has been up, or in operation: since its last start, and summed before it.
struct Clock {
    std::int64_t started_us = 0; ///< up: the last start
    std::int64_t before_us = 0;  ///< up: total of earlier runs
    bool operating = false;
    std::int64_t operating_since_us = 0;
    std::int64_t operated_us = 0;        ///< since the last start, without the running period
    std::int64_t operated_before_us = 0; ///< total of earlier runs
};

/// What a module scan found in a slot.
struct Scanned {
    std::int32_t product_number = 0;
    std::uint32_t hardware_type = 0;
    bool operator==(const Scanned&) const = default;
};

struct Monitoring {
    double output_voltage = 0;
    double heater_voltage = 0;
    double current = 0;
    double temperature = 0;
};

struct Heater {
    double temperature = 25.0;
    bool controlling = false;
    double demand = -1; ///< W that the controller asks for; negative = off
    double heater_voltage = 0;
    double current = 0;
    Monitoring sample = {.temperature = temperature}; ///< the last measurement
};

struct Supply {
    bool controlling = false;
    double set = 0;            ///< V: where the ramp is
    double output = 0;         ///< V at the output
    double voltage_error = 0;  ///< V: of the measurement while a new range settles
    double current_error = 0;  ///< A
    double voltage_sample = 0; ///< the last measurements
    double current_sample = 0;
};

/// The kinds of measurement, in the order of their pairs of data-ready bits.
enum class Measurement : unsigned {
    monitoring,
    housekeeping,
    voltage,
    current,
    controller_housekeeping = 0, ///< those of the controller
    controller_fan = 1,
};
inline constexpr unsigned measurement_count = 4;

/// Colours of an LED: 4 red, 2 green, 1 blue.
enum class Led : std::uint8_t { dark, blue, green, cyan, red, yellow = 6 };

/// The words that follow from everything else.
struct Status {
    std::uint16_t state = 0;
    std::uint8_t device = 0;
    std::uint8_t voltage = 0;
    std::uint8_t temperature = 0;
    std::uint8_t fan = 0;
    bool fan_enabled = false;
    std::uint8_t interlock_results = 0; ///< bits as Input
    bool device_active = false;
    std::array<std::uint16_t, unit_count> modules{};
    std::array<Led, unit_count + 1> leds{}; ///< the last one is the controller's
};

struct Instrument {
    std::int64_t now_us = 0;
    std::int64_t next_step_us = 0;
    std::int64_t origin_us = 0; ///< measurements are made at whole periods from here

    Physical physical;
    Memory memory;
    bool base_activated = true;
    std::array<std::uint8_t, unit_count> presence{1, 1, 1, 1, 1}; ///< as last refreshed
    std::array<Scanned, unit_count> scanned{};
    std::array<Scanned, unit_count> saved{};
    std::array<Clock, unit_count + 1> clocks{}; ///< the units, then the controller
    Heater heater;
    std::array<Supply, supply_count> supplies{};
    std::uint8_t last_inputs = 0x0F; ///< bits as Input: closed ever since the last reading
    bool last_fan_switch = true;
    /// Per unit and kind of measurement, the number of the last one that was read.
    std::array<std::array<std::int64_t, measurement_count>, unit_count + 1> taken{};

    Status status;
    bool changed = false;    ///< something happened that the state file must keep
    bool interfered = false; ///< a scenario changed something by itself
};

/// Looks which modules are there; what they are.
void refresh_presence(Instrument& instrument);
void scan(Instrument& instrument, unsigned unit);

/// The configuration in force.
[[nodiscard]] std::span<std::uint8_t, config_size> current_config(Instrument& instrument);
[[nodiscard]] std::span<const std::uint8_t, config_size>
current_config(const Instrument& instrument);

/// True when that module answers and is of its slot's kind.
[[nodiscard]] bool works(const Instrument& instrument, unsigned unit);

/// The 24 V supply as the controller has it: nothing without the power supply unit's output.
[[nodiscard]] double main_supply(const Instrument& instrument);

} // namespace simulator
