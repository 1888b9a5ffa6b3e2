#include "companion/report/reading/layout.h"
#include "frame/text/format.h"
#include "instrument/module_state.h"
#include "instrument/presence.h"
#include "instrument/status_words.h"
#include "instrument/supply_output.h"
#include "instrument/words.h"
#include "protocol/report/hardware_text.h"
#include "protocol/report/report_items.h"
#include "protocol/report/report_texts.h"

#include <algorithm>
#include <initializer_list>
#include <iterator>
#include <limits>

namespace companion
{

using namespace report_text;

namespace
{

constexpr Shape bytes = {parse_number, " bytes"};
constexpr Shape baud = {parse_number, " baud"};
constexpr Shape degrees = {parse_number, DEGREES_C_IN_FILE};
constexpr Shape degrees_or_off = {parse_number_or_off, DEGREES_C_IN_FILE};
constexpr Shape watts = {parse_number, "W"};
constexpr Shape watts_or_off = {parse_number_or_off, "W"};
constexpr Shape volts_or_off = {parse_number_or_off, "V"};
constexpr Shape amperes = {parse_number, "A"};

/// "COM3"
bool parse_port(std::string_view text, const Shape&, Fact&)
{
    return companion::take(text, "COM") && take_number(text) && text.empty();
}

/// "CW07 2024"
bool parse_week(std::string_view text, const Shape&, Fact&)
{
    return companion::take(text, "CW") && take_number(text) && companion::take(text, " ") &&
           take_number(text) && text.empty();
}

/// The value of a fact; 0 where there is none, or none that fits.
template <class Number>
Number number_of(const Fact* fact)
{
    constexpr double largest{std::numeric_limits<Number>::max()};
    const double value = fact != nullptr ? fact->value.value_or(0.0) : 0.0;
    return value <= largest ? static_cast<Number>(value) : Number{};
}

// ---- Status words and flags ----

/// Makes keys of the labels of a display's tables, in which a heading stands before its first
/// label ("Controller: Interlock front current"), and "last" means the same as the label before.
class FieldKeys
{
public:
    explicit FieldKeys(std::string parent) : parent_{std::move(parent)} {}

    std::string next(std::string_view label)
    {
        if (const std::size_t colon = label.find(": "); colon != std::string_view::npos) {
            heading_ = key_of_label(label.substr(0, colon)) + '/';
            label.remove_prefix(colon + 2);
        }
        constexpr std::string_view current = "current";
        const bool is_last = label == "last" && before_.ends_with(current);
        before_ = is_last ? before_.substr(0, before_.size() - current.size()) + "last"
                          : key_of_label(label);
        return parent_ + '/' + heading_ + before_;
    }

private:
    std::string parent_, heading_, before_;
};

template <class Fields, class Value>
void fields(LineReader& reader, FieldKeys& keys, const Fields& table, const Value& value)
{
    for (const auto& field : table) {
        const std::string_view label = bare_label(field.label);
        reader.item_with(label, keys.next(label), bare(field.word(value).text), 1);
    }
}

void check_bits(LineReader& reader, const Fact* fact, std::uint32_t value, int bits)
{
    if (fact != nullptr && fact->text != word_text(value, bits))
        reader.problem("the bits of this word contradict its number");
}

/// A status word in full, and what its bits say.
void status_word(LineReader& reader, const char* label, int bits,
                 std::initializer_list<std::span<const BitField>> tables)
{
    const std::string key = key_of_label(label);
    const Fact* fact = reader.item(label, key, shape::code);
    const auto value = number_of<std::uint32_t>(fact);
    check_bits(reader, fact, value, bits);
    FieldKeys keys{key};
    for (const std::span<const BitField> table : tables)
        fields(reader, keys, table, value);
}

/// Flags without a number: what each may say is known, what it says is not.
template <class Record, std::size_t count>
void flags(LineReader& reader, const char* title, const std::array<FlagField<Record>, count>& table)
{
    reader.line(std::string{title} + ':');
    FieldKeys keys{key_of_label(title)};
    for (const FlagField<Record>& field : table) {
        const std::string_view label = bare_label(field.label);
        reader.word(label, keys.next(label), {bare(field.set.text), bare(field.clear.text)}, 1);
    }
}

void temperature_state(LineReader& reader)
{
    const std::string key = key_of_label(report_text::temperature_state);
    const Fact* fact = reader.item(report_text::temperature_state, key, shape::code);
    const auto value = number_of<std::uint8_t>(fact);
    check_bits(reader, fact, value, 8);
    FieldKeys keys{key};
    fields(reader, keys, temperature_state_fields, value);
}

void leds(LineReader& reader, const char* title)
{
    reader.line(std::string{title} + ':');
    bool on[3] = {};
    const char* const labels[] = {red, green, blue};
    for (std::size_t i = 0; i < std::size(labels); ++i) {
        const std::string on_text = bare(on_word.text);
        const Fact* fact = reader.word(labels[i], std::string{"LED/"} + key_of_label(labels[i]),
                                       {on_text, bare(off_word.text)}, 1);
        on[i] = fact != nullptr && fact->text == on_text;
    }
    reader.item_with(color, "LED/color", led_color_name(on[0], on[1], on[2]), 1);
}

/// Returns the time since the last start.
double times(LineReader& reader, const char* label)
{
    const auto seconds = number_of<double>(reader.item(label, shape::time));
    reader.item(total, key_of_label(label) + "-total", shape::time, 1);
    return seconds;
}

// ---- Units ----

void identification(LineReader& reader)
{
    reader.item(product_identification, shape::text);
    reader.item(product_number, shape::integer);
    reader.item(firmware_version, shape::version);
    reader.item(firmware_date, shape::text);
}

UnitsFound::Slot kind(LineReader& reader, bool is_controller)
{
    UnitsFound::Slot slot{.is_present = true};
    const Fact* type = reader.item(device_type, shape::code);
    slot.device_type = number_of<std::uint16_t>(type);
    if (type != nullptr && type->text != device_type_text(slot.device_type, is_controller))
        reader.problem("the name of this device type contradicts its number");
    const Fact* fact = reader.item(hardware_type, shape::code);
    slot.hardware_type = number_of<std::uint32_t>(fact);
    const HardwareText expected = is_controller
                                      ? controller_hardware_text(slot.hardware_type)
                                      : module_hardware_text(slot.device_type, slot.hardware_type);
    if (fact != nullptr && fact->text != expected.word)
        reader.problem("the name of this hardware type contradicts its number");
    for (const HardwareProperty& property : expected.properties)
        reader.item_with(property.label, "hardware/" + key_of_label(property.label), property.value,
                         1);
    reader.item(hardware_version, shape::version);
    return slot;
}

void controller(LineReader& reader, UnitsFound& found)
{
    reader.prefix = "controller/";
    identification(reader);
    kind(reader, true);
    reader.item(manufacturing_date, {parse_week});
    reader.word(device_enabled, key_of_label(device_enabled),
                {bare(yes_word.text), bare(no_word.text)});
    const Fact* word = reader.item(report_text::overall, shape::code);
    if (word != nullptr) {
        const auto state = number_of<std::uint16_t>(word);
        if (word->text != hex_text(state, 4) + " = " + bare(overall_state_word(state).text))
            reader.problem("the text of this state contradicts its number");
    }
    leds(reader, base_leds);
    status_word(reader, device_state, 8, {device_state_fields});
    status_word(reader, interlock_state, 16,
                {heat_controller_interlock_fields, controller_interlock_fields,
                 resulting_interlock_fields});
    status_word(reader, hv_supply_interlock_mask, 8, {interlock_mask_fields});
    status_word(reader, heat_controller_interlock_mask, 8, {interlock_mask_fields});
    status_word(reader, voltage_state, 8, {voltage_state_fields});
    flags(reader, power_monitors, power_monitor_fields);
    temperature_state(reader);
    status_word(reader, fan_state, 8, {fan_state_fields});
    status_word(reader, fan_switch, 8, {fan_switch_fields});
    flags(reader, inputs, input_level_fields);
    found.uptime = times(reader, uptime);
    times(reader, operation_time);
}

// ---- The scan ----

/// One of the two comparisons of a row: what was scanned, what is saved, whether they are the same.
bool comparison(LineReader& reader, std::string_view& rest, const std::string& key)
{
    const auto word = [&rest](char end) {
        while (rest.starts_with(' '))
            rest.remove_prefix(1);
        const std::string_view found = rest.substr(0, rest.find(end));
        rest.remove_prefix(found.size());
        return found;
    };
    const std::string_view scanned = word(',');
    if (!companion::take(rest, ", saved:"))
        return false;
    const std::string_view saved = word(',');
    if (!companion::take(rest, ", "))
        return false;
    const std::string_view verdict = word(' ');
    reader.add(key + "-scanned", scanned);
    reader.add(key + "-saved", saved);
    reader.add(key, verdict);
    return verdict == (scanned == saved ? bare(ok_word.text) : bare(fail_word.text));
}

bool is_presence(std::string_view word)
{
    constexpr std::uint8_t any_other = 0xFF;
    constexpr std::uint8_t all[] = {presence_flag::absent, presence_flag::present,
                                    presence_flag::invalid, any_other};
    return std::any_of(std::begin(all), std::end(all),
                       [word](std::uint8_t flag) { return word == presence_text(flag); });
}

bool scan_row(LineReader& reader, unsigned address, const std::string& label)
{
    reader.prefix = unit_key(address) + '/';
    Fact* fact = reader.item(label, "scan/presence", shape::text);
    if (fact == nullptr)
        return false;
    std::string_view rest = fact->text;
    const std::string_view presence = rest.substr(0, rest.find(','));
    fact->text = presence;
    rest.remove_prefix(presence.size());
    const bool is_good = is_presence(presence) && companion::take(rest, ", P/N scanned:") &&
                         comparison(reader, rest, "scan/product-number") &&
                         companion::take(rest, "   HW type scanned:") &&
                         comparison(reader, rest, "scan/hardware-type") && rest.empty();
    if (!is_good)
        reader.problem("this row of the module scan cannot be understood");
    return presence == presence_text(presence_flag::present);
}

void scan(LineReader& reader, UnitsFound& found)
{
    reader.prefix = "controller/";
    reader.word(module_state, "module-scan",
                {bare(scan_state_word(true).text), bare(scan_state_word(false).text)});
    for (unsigned slot = 0; slot < found.slots.size(); ++slot) {
        const std::string label = slot_text(slot);
        if (slot <= highest_slot || reader.is_next(label))
            found.slots[slot].is_present = scan_row(reader, slot, label);
    }
    found.base.is_present = scan_row(reader, base_unit, report_text::base_unit_name);
}

// ---- Modules ----

void heat_controller_data(LineReader& reader, HeaterLimits& maxima)
{
    reader.line(std::string{hardware_limits} + ':');
    maxima.voltage = number_of<double>(reader.item(voltage, "limits/voltage", shape::volts, 1));
    maxima.current = number_of<double>(reader.item(current, "limits/current", amperes, 1));
    maxima.power = number_of<double>(reader.item(power, "limits/power", watts, 1));
    maxima.temperature =
        number_of<double>(reader.item(temperature, "limits/temperature", degrees, 1));
    reader.item(target_power, watts_or_off);
    reader.item(target_temperature, degrees_or_off);
}

void hv_supply_data(LineReader& reader)
{
    reader.item(target_voltage, volts_or_off);
    reader.line(std::string{channels} + ':');
    constexpr MeasurementRanges one{.negative = 0, .high = 0}, other{.negative = 1, .high = 1};
    reader.word(voltage_channel, "channels/voltage", {one.polarity(), other.polarity()}, 1);
    reader.word(current_channel, "channels/current", {one.current_range(), other.current_range()},
                1);
}

void unit(LineReader& reader, unsigned address, UnitsFound::Slot& slot, UnitsFound& found)
{
    const bool is_base = address == base_unit;
    reader.indent = 0;
    reader.heading((is_base ? std::string{report_text::base_unit_name} : slot_text(address)) + ':');
    reader.indent = 1;
    reader.prefix = unit_key(address) + '/';
    identification(reader);
    slot = kind(reader, false);
    const bool is_supply =
        !is_base && address != heat_controller && slot.device_type == module_type::hv_supply;
    if (is_supply)
        reader.item(fpga_version, shape::version);
    reader.item(manufacturing_date, {parse_week});
    reader.word(activation_state, key_of_label(activation_state),
                {bare(on_word.text), bare(off_word.text)});
    leds(reader, report_text::leds);
    status_word(reader, module_state, 16, {module_state_fields_of(address)});
    if (address == heat_controller && slot.device_type == module_type::heat_controller)
        heat_controller_data(reader, found.heater_maxima);
    else if (is_supply)
        hv_supply_data(reader);
    reader.indent = 0;
}

} // namespace

bool UnitsFound::fits(unsigned slot) const
{
    return slots[slot].is_present &&
           slots[slot].device_type ==
               (slot == heat_controller ? module_type::heat_controller : module_type::hv_supply);
}

std::string unit_key(unsigned address)
{
    return address == base_unit ? "base" : "slot" + std::to_string(address);
}

void read_product_data(LineReader& reader, UnitsFound& found)
{
    reader.prefix = "run/";
    reader.begins(created_on, "created", shape::created);
    reader.blank();
    reader.item(dll_version, "library-version", shape::version);
    reader.blank();
    reader.item(communication_port, "port", {parse_port});
    reader.item(data_rate, "data-rate", baud, 1);
    reader.blank();
    controller(reader, found);
    reader.blank();
    scan(reader, found);
    if (found.base.is_present)
        unit(reader, base_unit, found.base, found);
    for (unsigned slot = 0; slot < found.slots.size(); ++slot) {
        if (found.slots[slot].is_present)
            unit(reader, slot, found.slots[slot], found);
    }
    reader.blank();
    reader.prefix = "controller/configurations/";
    reader.line(configurations);
    reader.item(data_size, "data-size", bytes, 1);
    reader.item(name_size, "name-size", bytes, 1);
    reader.item(active_sets, "active", shape::integer, 1);
    reader.item(deleted_sets, "deleted", shape::integer, 1);
}

} // namespace companion
