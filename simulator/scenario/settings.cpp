#include "simulator/scenario/settings.h"

#include "simulator/model/arithmetic.h"
#include "simulator/model/clocks.h"
#include "simulator/model/measurements.h"
#include "simulator/model/status.h"

#include <algorithm>
#include <optional>
#include <span>
#include <string_view>

namespace simulator
{

namespace
{

/// What a setting takes; a forced one also takes the word auto, which gives it back.
enum class Takes : std::uint8_t {
    real,
    positive,
    whole,
    flag,
    contact,
    text,
    forced_real,
    forced_whole
};

/// A value as its setting gets it: which member counts follows from what the setting takes.
struct Given {
    double real = 0;
    std::int64_t whole = 0;
    bool flag = false;
    bool automatic = false;
    Contact contact = Contact::closed;
    std::string text;
};

struct Setting {
    std::string_view name;
    Takes takes;
    std::int64_t highest; ///< of a whole number; bytes of a text
    void (*set)(Instrument& instrument, unsigned unit, const Given& given);
};

template <typename T>
void put(T& place, const Given& given)
{
    if constexpr (std::is_same_v<T, bool>)
        place = given.flag;
    else if constexpr (std::is_same_v<T, std::string>)
        place = given.text;
    else if constexpr (std::is_same_v<T, double>)
        place = given.real;
    else
        place = static_cast<T>(given.whole);
}

template <typename T>
void put(std::optional<T>& place, const Given& given)
{
    place.reset();
    if (!given.automatic)
        put(place.emplace(), given);
}

/// A number of seconds and the like held where whole microseconds can be: 0 to some decades.
double held(double value)
{
    return value > 0 ? std::min(value, 1e9) : 0.0;
}

void put_period(Instrument& instrument, std::int64_t& period, const Given& given)
{
    // Measurements are made at whole steps of the models.
    period = std::max(std::int64_t{1}, nearest(held(given.real) / 10)) * 10'000;
    for (unsigned unit = 0; unit <= unit_count; ++unit)
        restart_measurements(instrument, unit);
}

void put_input(Instrument& instrument, Input input, const Given& given)
{
    instrument.physical.inputs[static_cast<unsigned>(input)] = given.contact;
    if (given.contact != Contact::closed)
        instrument.last_inputs &= static_cast<std::uint8_t>(~bit(input));
}

Identity& identity(Instrument& instrument, unsigned unit)
{
    return unit == controller ? instrument.physical.identity
                              : instrument.physical.units[unit].identity;
}

/// Reaches to a forced HV reading without waiting for the next measurement.
void put_measured(std::optional<double>& forced, double& sample, const Given& given)
{
    put(forced, given);
    if (forced)
        sample = *forced;
}

constexpr std::int64_t byte = 0xFF;
constexpr std::int64_t word = 0xFFFF;
constexpr std::int64_t double_word = 0xFFFF'FFFF;
constexpr std::int64_t number = 0x7FFF'FFFF;

using I = Instrument;
using U = unsigned;
using G = const Given&;

// clang-format off

/// Settings of the instrument as a whole.
constexpr Setting general_settings[] = {
    {"latency", Takes::real, 0, [](I& i, U, G v) { i.physical.answer_time_us = nearest(held(v.real) * 1000); }},
    {"noise", Takes::flag, 0, [](I& i, U, G v) { put(i.physical.noise, v); }},
    {"library_version", Takes::whole, word, [](I& i, U, G v) { put(i.physical.library_version, v); }},
    {"voltage24", Takes::real, 0, [](I& i, U, G v) { put(i.physical.readings.voltage24, v); }},
    {"voltage5", Takes::real, 0, [](I& i, U, G v) { put(i.physical.readings.voltage5, v); }},
    {"voltage33", Takes::real, 0, [](I& i, U, G v) { put(i.physical.readings.voltage33, v); }},
    {"cpu.temperature", Takes::real, 0, [](I& i, U, G v) { put(i.physical.readings.cpu_temperature, v); }},
    {"cpu.load", Takes::real, 0, [](I& i, U, G v) { put(i.physical.cpu_load, v); }},
    {"cpu.frequency", Takes::real, 0, [](I& i, U, G v) { put(i.physical.cpu_frequency, v); }},
    {"psu.temperature", Takes::real, 0, [](I& i, U, G v) { put(i.physical.readings.psu_temperature, v); }},
    {"power.ac_input", Takes::flag, 0, [](I& i, U, G v) { put(i.physical.ac_input, v); }},
    {"power.dc_output", Takes::flag, 0, [](I& i, U, G v) { put(i.physical.dc_output, v); }},
    {"fan.failed", Takes::flag, 0, [](I& i, U, G v) { put(i.physical.fan.failed, v); }},
    {"fan.switch", Takes::flag, 0, [](I& i, U, G v) { put(i.physical.fan.switched_on, v); }},
    {"fan.set", Takes::forced_real, 0, [](I& i, U, G v) { put(i.physical.fan.forced_set, v); }},
    {"fan.measured", Takes::forced_real, 0, [](I& i, U, G v) { put(i.physical.fan.forced_speed, v); }},
    {"fan.pwm", Takes::forced_real, 0, [](I& i, U, G v) { put(i.physical.fan.forced_pwm, v); }},
    {"interlock.1", Takes::contact, 0, [](I& i, U, G v) { put_input(i, Input::heater1, v); }},
    {"interlock.2", Takes::contact, 0, [](I& i, U, G v) { put_input(i, Input::heater2, v); }},
    {"interlock.front", Takes::contact, 0, [](I& i, U, G v) { put_input(i, Input::front, v); }},
    {"interlock.rear", Takes::contact, 0, [](I& i, U, G v) { put_input(i, Input::rear, v); }},
    {"buffer_empty", Takes::flag, 0, [](I& i, U, G v) { put(i.physical.buffer_empty, v); }},
    {"purges", Takes::flag, 0, [](I& i, U, G v) { put(i.physical.purges, v); }},
    {"presence.valid", Takes::flag, 0, [](I& i, U, G v) { put(i.physical.presence_valid, v); }},
    {"presence.slots", Takes::whole, slot_count, [](I& i, U, G v) { put(i.physical.presence_slots, v); }},
    {"state.overall", Takes::forced_whole, word, [](I& i, U, G v) { put(i.physical.forced_state, v); }},
    {"state.device", Takes::forced_whole, byte, [](I& i, U, G v) { put(i.physical.forced_device_state, v); }},
    {"state.voltage", Takes::forced_whole, byte, [](I& i, U, G v) { put(i.physical.forced_voltage_state, v); }},
    {"state.temperature", Takes::forced_whole, byte, [](I& i, U, G v) { put(i.physical.forced_temperature_state, v); }},
    {"state.fan", Takes::forced_whole, byte, [](I& i, U, G v) { put(i.physical.forced_fan_state, v); }},
    {"state.interlock", Takes::forced_whole, word, [](I& i, U, G v) { put(i.physical.forced_interlock_state, v); }},
    {"period.housekeeping", Takes::positive, 0, [](I& i, U, G v) { put_period(i, i.physical.periods.housekeeping, v); }},
    {"period.fan", Takes::positive, 0, [](I& i, U, G v) { put_period(i, i.physical.periods.fan, v); }},
    {"period.monitoring", Takes::positive, 0, [](I& i, U, G v) { put_period(i, i.physical.periods.monitoring, v); }},
    {"period.voltage", Takes::positive, 0, [](I& i, U, G v) { put_period(i, i.physical.periods.voltage, v); }},
    {"period.current", Takes::positive, 0, [](I& i, U, G v) { put_period(i, i.physical.periods.current, v); }},
    {"heater.temperature", Takes::real, 0, [](I& i, U, G v) { i.heater.temperature = i.heater.sample.temperature = v.real; }},
    {"heater.ambient", Takes::real, 0, [](I& i, U, G v) { put(i.physical.heater.ambient, v); }},
    {"heater.resistance", Takes::positive, 0, [](I& i, U, G v) { put(i.physical.heater.resistance, v); }},
    {"heater.resistance_rise", Takes::real, 0, [](I& i, U, G v) { put(i.physical.heater.resistance_rise, v); }},
    {"heater.wires", Takes::positive, 0, [](I& i, U, G v) { put(i.physical.heater.wires, v); }},
    {"heater.thermal_resistance", Takes::positive, 0, [](I& i, U, G v) { put(i.physical.heater.thermal_resistance, v); }},
    {"heater.heat_capacity", Takes::positive, 0, [](I& i, U, G v) { put(i.physical.heater.heat_capacity, v); }},
    {"heater.max_voltage", Takes::real, 0, [](I& i, U, G v) { put(i.physical.heater.voltage_limit, v); }},
    {"heater.max_current", Takes::real, 0, [](I& i, U, G v) { put(i.physical.heater.current_limit, v); }},
    {"heater.max_power", Takes::real, 0, [](I& i, U, G v) { put(i.physical.heater.power_limit, v); }},
    {"heater.max_temperature", Takes::real, 0, [](I& i, U, G v) { put(i.physical.heater.temperature_limit, v); }},
};

/// Settings of the controller, and with "slot0." .. "slot3." or "base." before them of a unit.
constexpr Setting identity_settings[] = {
    {"product_id", Takes::text, 84, [](I& i, U u, G v) { put(identity(i, u).product_id, v); }},
    {"product_number", Takes::whole, number, [](I& i, U u, G v) { put(identity(i, u).product_number, v); }},
    {"manufacturing_year", Takes::whole, word, [](I& i, U u, G v) { put(identity(i, u).year, v); }},
    {"manufacturing_week", Takes::whole, word, [](I& i, U u, G v) { put(identity(i, u).week, v); }},
    {"hardware_version", Takes::whole, word, [](I& i, U u, G v) { put(identity(i, u).hardware_version, v); }},
    {"firmware_version", Takes::whole, word, [](I& i, U u, G v) { put(identity(i, u).firmware_version, v); }},
    {"firmware_date", Takes::text, 12, [](I& i, U u, G v) { put(identity(i, u).firmware_date, v); }},
    {"device_type", Takes::whole, word, [](I& i, U u, G v) { put(identity(i, u).device_type, v); }},
    {"hardware_type", Takes::whole, double_word, [](I& i, U u, G v) { put(identity(i, u).hardware_type, v); }},
    {"uptime", Takes::real, 0, [](I& i, U u, G v) { set_uptime(i, u, nearest(held(v.real) * 1e6)); }},
};

/// Settings of a unit, after "slot0." .. "slot3." or "base.".
constexpr Setting unit_settings[] = {
    {"present", Takes::whole, byte, [](I& i, U u, G v) { put(i.physical.units[u].present, v); }},
    {"fpga_version", Takes::whole, double_word, [](I& i, U u, G v) { put(identity(i, u).fpga_version, v); }},
    {"voltage33", Takes::real, 0, [](I& i, U u, G v) { put(i.physical.units[u].readings.voltage33, v); }},
    {"voltage5", Takes::real, 0, [](I& i, U u, G v) { put(i.physical.units[u].readings.voltage5, v); }},
    {"voltage24", Takes::real, 0, [](I& i, U u, G v) { put(i.physical.units[u].readings.voltage24, v); }},
    {"voltage_minus22", Takes::real, 0, [](I& i, U u, G v) { put(i.physical.units[u].readings.voltage_minus22, v); }},
    {"voltage18", Takes::real, 0, [](I& i, U u, G v) { put(i.physical.units[u].readings.voltage18, v); }},
    {"voltage_minus18", Takes::real, 0, [](I& i, U u, G v) { put(i.physical.units[u].readings.voltage_minus18, v); }},
    {"voltage_vc", Takes::real, 0, [](I& i, U u, G v) { put(i.physical.units[u].readings.voltage_vc, v); }},
    {"analog_ground", Takes::real, 0, [](I& i, U u, G v) { put(i.physical.units[u].readings.analog_ground, v); }},
    {"cpu_temperature", Takes::real, 0, [](I& i, U u, G v) { put(i.physical.units[u].readings.cpu_temperature, v); }},
    {"psu_temperature", Takes::real, 0, [](I& i, U u, G v) { put(i.physical.units[u].readings.psu_temperature, v); }},
    {"cpu_load", Takes::real, 0, [](I& i, U u, G v) { put(i.physical.units[u].readings.cpu_load, v); }},
    {"state", Takes::forced_whole, word, [](I& i, U u, G v) { put(i.physical.units[u].forced_state, v); }},
    {"buffer_empty", Takes::flag, 0, [](I& i, U u, G v) { put(i.physical.units[u].buffer_empty, v); }},
    {"purges", Takes::flag, 0, [](I& i, U u, G v) { put(i.physical.units[u].purges, v); }},
};

/// Settings of an HV-supply, after "slot1." .. "slot3.".
constexpr Setting supply_settings[] = {
    {"load", Takes::positive, 0, [](I& i, U u, G v) { put(i.physical.supplies[u - 1].load, v); }},
    {"voltage", Takes::forced_real, 0, [](I& i, U u, G v) { put_measured(i.physical.supplies[u - 1].forced_voltage, i.supplies[u - 1].voltage_sample, v); }},
    {"current", Takes::forced_real, 0, [](I& i, U u, G v) { put_measured(i.physical.supplies[u - 1].forced_current, i.supplies[u - 1].current_sample, v); }},
};
// clang-format on

const Setting* find_in(std::span<const Setting> settings, std::string_view name)
{
    for (const Setting& setting : settings)
        if (setting.name == name)
            return &setting;
    return nullptr;
}

/// Takes a unit's prefix from a name: its position; the controller's without a prefix.
unsigned take_unit(std::string_view& name)
{
    constexpr std::string_view prefixes[unit_count] = {"slot0.", "slot1.", "slot2.", "slot3.",
                                                       "base."};
    for (unsigned unit = 0; unit < unit_count; ++unit)
        if (name.starts_with(prefixes[unit])) {
            name.remove_prefix(prefixes[unit].size());
            return unit;
        }
    return controller;
}

const Setting* find_setting(std::string_view name, unsigned unit)
{
    if (const Setting* const found = find_in(identity_settings, name))
        return found;
    if (unit == controller)
        return find_in(general_settings, name);
    const Setting* const found = find_in(unit_settings, name);
    const bool is_supply = unit >= 1 && unit < slot_count;
    return found == nullptr && is_supply ? find_in(supply_settings, name) : found;
}

bool read_flag(const std::string& text, bool& flag)
{
    flag = text == "on" || text == "yes" || text == "1";
    return flag || text == "off" || text == "no" || text == "0";
}

bool read_contact(const std::string& text, Contact& contact)
{
    contact = text == "open" ? Contact::open : text == "noisy" ? Contact::noisy : Contact::closed;
    return text == "open" || text == "noisy" || text == "closed";
}

/// What a setting takes, in words.
const char* expected_by(Takes takes)
{
    switch (takes) {
    case Takes::flag:
        return "'on' or 'off'";
    case Takes::contact:
        return "'open', 'closed' or 'noisy'";
    case Takes::text:
        return "a shorter text";
    case Takes::positive:
        return "a number above 0";
    case Takes::forced_real:
        return "a number or 'auto'";
    case Takes::real:
        return "a number";
    case Takes::forced_whole:
    case Takes::whole:
        break;
    }
    return "a whole number in range";
}

bool read_for(const Setting& setting, const std::string& text, Given& given)
{
    switch (setting.takes) {
    case Takes::flag:
        return read_flag(text, given.flag);
    case Takes::contact:
        return read_contact(text, given.contact);
    case Takes::text:
        given.text = text;
        return text.size() <= static_cast<std::size_t>(setting.highest);
    case Takes::positive:
        return read_real(text, given.real) && given.real > 0;
    case Takes::forced_real:
    case Takes::forced_whole:
        given.automatic = text == "auto";
        break;
    case Takes::real:
    case Takes::whole:
        break;
    }
    if (given.automatic)
        return true;
    if (setting.takes == Takes::real || setting.takes == Takes::forced_real)
        return read_real(text, given.real);
    return read_integer(text, given.whole) && given.whole >= 0 && given.whole <= setting.highest;
}

/// Null when the word suits the setting, else what would.
const char* read_given(const Word& given_word, const Setting& setting, Given& given)
{
    if (given_word.quoted != (setting.takes == Takes::text))
        return given_word.quoted ? "a word without quotes" : "a text in quotes";
    return read_for(setting, given_word.text, given) ? nullptr : expected_by(setting.takes);
}

} // namespace

bool change_setting(const Words& words, bool really, Instrument& instrument, std::string& problem)
{
    std::string_view name = words[0].text;
    const unsigned unit = take_unit(name);
    const Setting* const setting = words[0].quoted ? nullptr : find_setting(name, unit);
    if (setting == nullptr) {
        problem = "there is no setting '" + words[0].text + "'";
        return false;
    }
    if (words.size() != 2) {
        problem = words.size() < 2 ? "a value is missing after '" : "there is too much after '";
        problem += words[0].text + "'";
        return false;
    }
    Given given;
    if (const char* const expected = read_given(words[1], *setting, given)) {
        problem = "'" + words[0].text + "' takes " + expected + ", not '" + words[1].text + "'";
        return false;
    }
    if (really) {
        setting->set(instrument, unit, given);
        instrument.interfered = true;
        refresh(instrument);
    }
    return true;
}

} // namespace simulator
