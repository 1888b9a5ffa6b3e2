#include "interactive/drawing.h"

#include "frame/text/bit_fields.h"
#include "instrument/module_state.h"
#include "instrument/status_words.h"
#include "instrument/supplies.h"
#include "instrument/words.h"

namespace
{

constexpr const char* word_separator = " = ";

constexpr NumberFormat volts = {.width = 8, .decimals = 3, .unit = "V", .sign = true};
constexpr NumberFormat fine_volts = {.width = 7, .decimals = 3, .unit = "V", .sign = true};

void show_supply(const Field& field, const Supply& supply, double value,
                 const NumberFormat& format = volts)
{
    field.show(supply.color(value), value, format);
}

void show_temperature(const Field& field, double celsius)
{
    field.show(temperature_color(celsius), celsius,
               {.width = 6, .decimals = 1, .unit = DEGREES_C, .sign = true});
}

void show_group(const GroupPlaces& places, const ReadingGroup& group)
{
    places.duration.show(Color::value, group.mean_duration_ms(), {.width = 6, .decimals = 1});
    console.print_at(places.counters, Color::value, "%u", group.errors);
    console.print("/");
    console.print(Color::value, "%u", group.overflows);
}

/// What the records of the controller and of the modules have in common.
template <class Values>
void show_common_values(const HousekeepingPlaces& places, const Values& values)
{
    show_supply(places.plus_24, supply::plus_24, values.plus_24);
    show_supply(places.plus_5, supply::plus_5, values.plus_5);
    show_supply(places.plus_3_3, supply::plus_3_3, values.plus_3_3);
    show_temperature(places.cpu, values.cpu);
    show_temperature(places.psu, values.psu);
}

void show_controller(const HousekeepingPlaces& places, const ScreenReadings& readings)
{
    show_group(places.group, readings.controller_group);
    if (readings.controller_group.readings > 0)
        show_common_values(places, readings.controller);
}

void show_module(const HousekeepingPlaces& places, const ModuleHousekeeping& values,
                 const ReadingGroup& group)
{
    show_group(places.group, group);
    if (group.readings == 0)
        return;
    show_common_values(places, values);
    show_supply(places.minus_22, supply::minus_22, values.minus_22);
    show_supply(places.plus_18, supply::plus_18, values.plus_18);
    show_supply(places.minus_18, supply::minus_18, values.minus_18);
    show_supply(places.vc, supply::vc, values.vc, fine_volts);
    show_supply(places.analog_ground, supply::analog_ground, values.analog_ground, fine_volts);
}

void show_monitoring(const MonitoringPlaces& places, const HeaterMonitoring& values,
                     const ReadingGroup& group)
{
    show_group(places.group, group);
    if (group.readings > 0)
        places.values.show(values);
}

// ---- Status words ----

void show_word(Place place, std::uint32_t value, int bits)
{
    console.move_to(place);
    print_word(value, bits, word_separator);
}

void show_field(const char* label, const ColoredText& word)
{
    console.print("%s", label);
    console.print(word);
}

/// The short texts of this screen.
const char* overall_state_text(std::uint16_t code)
{
    switch (code) {
    case overall_state::on:
        return "OK";
    case overall_state::stand_by:
        return "Stand-by";
    case overall_state::general_fault:
        return "General error";
    case overall_state::modules:
        return "Module error";
    case overall_state::supply_voltage:
        return "Supply-voltage error";
    case overall_state::too_cold:
        return "Low-temperature error";
    case overall_state::overheating:
        return "Overheating error";
    case overall_state::interlock:
        return "Interlock error";
    default:
        return "Unknown error";
    }
}

void show_overall_state(Place place, std::uint16_t code)
{
    constexpr int longest_text = 21;
    // Kept: the code alone decides, so an unknown one below the errors is an "Unknown error" in the
    // colour of what is good.
    const Color color = code < overall_state::first_error ? Color::good : Color::bad;
    show_word(place, code, 16);
    console.print("  ");
    console.print(color, "%-*s", longest_text, overall_state_text(code));
}

void show_module_state(Place place, unsigned slot, std::uint16_t state)
{
    const auto active = [state](int bit) { return active_or_off((state >> bit & 1) != 0); };
    show_word(place, state, 16);
    show_field("  Device: ", active(module_state_bit::device_active));
    show_field("  Module: ", active(module_state_bit::module_active));
    show_field(slot == 0 ? "  Temperature control: " : "  Voltage control: ",
               active(module_state_bit::control_active));
}

/// A field under this screen's own label, its bit and words from the one table.
struct ShortField {
    const char* label;
    const BitField& field;
};

constexpr std::array device_fields = {
    ShortField{"  Interlock: ", device_state_field::interlock},
    ShortField{"  Supply voltages: ", device_state_field::supply_voltages},
    ShortField{"  Temperature: ", device_state_field::temperature},
    ShortField{"  Fan : ", device_state_field::fan}, // Kept: a blank before this colon alone.
    ShortField{"  Module configuration: ", device_state_field::modules},
};

// The other way round than in the single display.
constexpr std::array voltage_fields = {
    ShortField{"  Line: ", voltage_state_field::line},
    ShortField{"  PSU: ", voltage_state_field::psu},
    ShortField{"  24V: ", voltage_state_field::plus_24},
    ShortField{"  5V0: ", voltage_state_field::plus_5},
    ShortField{"  3V3: ", voltage_state_field::plus_3_3},
};

constexpr std::array fan_fields = {ShortField{"  Fan: ", fan_state_field::good}};

void show_short_fields(Place place, std::uint8_t state, std::span<const ShortField> fields)
{
    show_word(place, state, 8);
    for (const ShortField& shown : fields)
        show_field(shown.label, shown.field.word(state));
}

void show_temperature_state(Place place, std::uint8_t state)
{
    using namespace temperature_bit;
    const auto fault = [state](int bit) {
        return (state >> bit & 1) != 0 ? ColoredText{"yes", Color::bad}
                                       : ColoredText{" no", Color::good};
    };
    show_word(place, state, 8);
    show_field("  overheated CPU: ", fault(cpu_hot));
    show_field(", PSU: ", fault(psu_hot));
    show_field("  undercooled CPU: ", fault(cpu_cold));
    show_field(", PSU: ", fault(psu_cold));
}

/// One interlock input: its bit in the masks, its resulting value, and its levels now and last.
struct InterlockInput {
    const char* label;
    const char* enabled_label;
    int mask_bit;
    const BitField& resulting;
    const BitField& current;
    const BitField& last;
};

constexpr std::array interlock_inputs = {
    InterlockInput{"  HTCTR#1: ", "  HTCTR#1 enabled: ", interlock_bit::heat_controller_1,
                   interlock_field::resulting_1, interlock_field::current_1,
                   interlock_field::last_1},
    InterlockInput{"  HTCTR#2: ", "  HTCTR#2 enabled: ", interlock_bit::heat_controller_2,
                   interlock_field::resulting_2, interlock_field::current_2,
                   interlock_field::last_2},
    InterlockInput{"  front: ", "    front enabled: ", interlock_bit::front,
                   interlock_field::resulting_front, interlock_field::current_front,
                   interlock_field::last_front},
    InterlockInput{"  rear: ", "     rear enabled: ", interlock_bit::rear,
                   interlock_field::resulting_rear, interlock_field::current_rear,
                   interlock_field::last_rear},
};

void show_interlock_state(Place place, std::uint16_t state, InterlockMasks masks)
{
    show_word(place, state, 16);
    for (const InterlockInput& input : interlock_inputs) {
        const bool enabled = masks.is_enabled(input.mask_bit);
        show_field(input.label,
                   enabled ? input.resulting.word(state) : ok_fail_or_disabled(false, false));
    }
    constexpr std::size_t inputs_per_row = 2;
    for (std::size_t i = 0; i < interlock_inputs.size(); ++i) {
        const InterlockInput& input = interlock_inputs[i];
        if (i % inputs_per_row == 0)
            console.move_to({place.row + 1 + static_cast<int>(i / inputs_per_row), 1});
        show_field(input.enabled_label, masks.is_enabled(input.mask_bit)
                                            ? yes_word
                                            : ColoredText{" no", Color::disabled});
        show_field("  current: ", input.current.word(state));
        show_field("  last: ", input.last.word(state));
    }
}

void show_output(const ScreenLayout& layout, const ScreenReadings& readings, unsigned slot)
{
    const OutputPlaces& voltage = layout.voltage[slot];
    show_group(voltage.group, readings.voltage_groups[slot]);
    if (readings.voltage_groups[slot].readings > 0)
        voltage.value.show(Color::value, readings.voltage[slot],
                           {.width = 9, .decimals = 3, .unit = "V", .sign = true});
    const OutputPlaces& current = layout.current[slot];
    show_group(current.group, readings.current_groups[slot]);
    if (readings.current_groups[slot].readings > 0)
        current.value.show(
            Color::value, readings.current[slot],
            {.width = 10, .decimals = 3, .unit = "A", .sign = true, .exponent = true});
}

void show_status_words(const ScreenLayout& layout, const CompleteState& state,
                       const ModulePresence& presence, InterlockMasks masks)
{
    show_overall_state(layout.overall_state, state.overall);
    for (unsigned slot = 0; slot < screen_slots; ++slot) {
        if (presence.has_slot(slot))
            show_module_state(layout.module_state[slot], slot, state.module[slot]);
    }
    show_short_fields(layout.words.device, state.device, device_fields);
    show_short_fields(layout.words.voltage, state.voltage, voltage_fields);
    show_temperature_state(layout.words.temperature, state.temperature);
    show_short_fields(layout.words.fan, state.fan, fan_fields);
    show_interlock_state(layout.words.interlock, state.interlock, masks);
}

} // namespace

void draw_values(const ScreenLayout& layout, const ScreenReadings& readings,
                 const ModulePresence& presence, InterlockMasks masks)
{
    const PortLine& port = layout.port;
    port.errors.show(readings.state_errors != 0 ? Color::bad : Color::value, readings.state_errors,
                     {});
    if (readings.cycles.cycles == 0)
        return;
    port.rates.show(readings.cycles, readings.shown_ms);

    show_controller(layout.controller, readings);
    for (std::size_t index = 0; index < layout.modules.size(); ++index) {
        if (presence.flags[index] == presence_flag::present)
            show_module(layout.modules[index], readings.housekeeping[index],
                        readings.housekeeping_groups[index]);
    }
    if (presence.has_slot(0))
        show_monitoring(layout.monitoring, readings.monitoring, readings.monitoring_group);
    for (unsigned slot = 1; slot < screen_slots; ++slot) {
        if (presence.has_slot(slot))
            show_output(layout, readings, slot);
    }
    if (readings.has_words)
        show_status_words(layout, readings.words, presence, masks);
}
