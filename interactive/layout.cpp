#include "interactive/layout.h"

#include "frame/live_display.h"
#include "frame/program.h"

#include <string_view>

namespace
{

// Columns. The rows of the slots line up with each other.
constexpr int first_value_column = 21;
constexpr int second_row_column = 13;
constexpr int group_column = 75;

// Widths of the values.
constexpr int volts = 9;       // "%+8.3lfV"
constexpr int fine_volts = 8;  // "%+7.3lfV"
constexpr int degrees = 8;     // "%+6.1lf" and the unit
constexpr int duration = 6;    // "%6.1lf"
constexpr int heater_unit = 8; // "%7.3lfV", "%7.3lfA", "%7.2lfW"
constexpr int heater_degrees = 10;
constexpr int counters = 21; // "%u/%u"

constexpr std::string_view duration_label = "Measurement duration:";
constexpr std::string_view counters_label = "ms, errors/overflows: ";
constexpr int group_columns =
    static_cast<int>(duration_label.size() + counters_label.size()) + duration + counters;

/// Starts a new line of the frame.
void new_line(const char* label)
{
    console.print("\r\n%s", label);
}

void go_to_column(int column)
{
    console.move_to_column(column);
}

/// A label and the room for its value, with a gap behind it.
Place field(const char* label, int width, int gap)
{
    return place_field(label, width + gap);
}

GroupPlaces draw_group()
{
    GroupPlaces places;
    places.duration = place_field(duration_label.data(), duration);
    places.counters = place_field(counters_label.data());
    return places;
}

GroupPlaces draw_group_at(int column)
{
    go_to_column(column);
    return draw_group();
}

void draw_slot_label(unsigned slot, bool occupied)
{
    const char* kind = !occupied ? "" : slot == 0 ? " (HTCTR)" : " (HVPS)";
    console.print("\r\n  slot #%u%s:", slot, kind);
    if (!occupied)
        console.print("-");
}

/// +24V, +5V0, +3V3 and the CPU's temperature, which all units with a supply of their own have.
void draw_common_supplies(HousekeepingPlaces& places, int gap)
{
    places.plus_24 = field("Voltages:  +24V:", volts, gap);
    places.plus_5 = field("+5V0:", volts, gap);
    places.plus_3_3 = field("+3V3:", volts, gap);
    places.cpu = field("Temperature CPU:", degrees, gap);
}

void draw_controller_housekeeping(int window_columns, HousekeepingPlaces& places)
{
    constexpr int gap = 2;
    new_line("  controller:");
    go_to_column(first_value_column);
    draw_common_supplies(places, gap);
    places.psu = field("PSU:", degrees, gap);
    const int columns_left = window_columns - console.place().column + 1;
    if (columns_left < group_columns) {
        console.print("\r\n");
        go_to_column(group_column);
    }
    places.group = draw_group();
}

void draw_slot_housekeeping(unsigned slot, HousekeepingPlaces& places)
{
    constexpr int gap = 2;
    go_to_column(first_value_column);
    draw_common_supplies(places, gap);
    if (slot == 0)
        places.psu = field("PSU:", degrees, gap);
    else
        places.minus_22 = field("-22V:", volts, gap);
    console.print("\r\n");
    if (slot != 0) {
        go_to_column(second_row_column);
        places.plus_18 = field("+18V:", volts, gap);
        places.minus_18 = field("-18V:", volts, gap);
        places.vc = field("+1V5:", fine_volts, gap);
        places.analog_ground = field("AGnd:", fine_volts, gap);
    }
    places.group = draw_group_at(group_column);
}

void draw_base_housekeeping(bool present, HousekeepingPlaces& places)
{
    new_line("  base unit:");
    if (!present) {
        console.print("  -");
        return;
    }
    go_to_column(first_value_column);
    places.plus_3_3 = field("Voltages:  +3V3:", volts, 2);
    places.cpu = field("Temperature CPU:", degrees, 2);
    places.group = draw_group_at(group_column);
}

void draw_monitoring(MonitoringPlaces& places)
{
    constexpr int gap = 1;
    MonitoringFields& values = places.values;
    values.columns = heater_unit;
    values.own_rows = false; // the counters stand behind them
    go_to_column(first_value_column);
    values.output_voltage = field("Voltage output:", heater_unit, gap);
    values.heater_voltage = field("heater:", heater_unit, gap);
    values.current = field("Current:", heater_unit, gap);
    values.temperature = field("Heater temperature:", heater_degrees, gap);
    values.output_power = field("Power output:  ", heater_unit, gap);
    console.print("\r\n");
    go_to_column(second_row_column - 2); // the resistance needs the room
    values.wire_power = field("wires: ", heater_unit, gap);
    values.heater_power = field("heater: ", heater_unit, gap);
    values.resistance = place_field("Heater resistance: ");
    places.group = draw_group_at(group_column);
}

OutputPlaces draw_output(const char* label)
{
    OutputPlaces places;
    go_to_column(first_value_column);
    places.value = place_field(label);
    places.group = draw_group_at(group_column);
    return places;
}

} // namespace

void draw_title()
{
    console.print_at(console.screen_place(1, 45), Color::below, "K O V   C O N T R O L L E R");
}

PortLine draw_port_line()
{
    PortLine line;
    console.move_to(console.screen_place(3, 1));
    console.print("Port: ");
    console.print(Color::value, "COM%u", program.port);
    console.print(", data rate: ");
    console.print(Color::value, "%lu", static_cast<unsigned long>(program.data_rate));
    console.print(" baud");
    line.rate = place_field(", polling rate:", 8);
    line.mean = place_field("cycles/s, mean response time:", 6);
    line.errors = place_field("ms, errors: ");
    line.key = console.screen_place(3, 127);
    line.spinner = console.screen_place(3, 131);
    return line;
}

void draw_frame(const ModulePresence& presence, int window_columns, ScreenLayout& layout)
{
    const bool has_base = presence.has_base_unit();
    console.print("\r\n\r\nHousekeeping data:");
    draw_controller_housekeeping(window_columns, layout.controller);
    for (unsigned slot = 0; slot < screen_slots; ++slot) {
        draw_slot_label(slot, presence.has_slot(slot));
        if (presence.has_slot(slot))
            draw_slot_housekeeping(slot, layout.modules[slot]);
    }
    draw_base_housekeeping(has_base, layout.modules[base_index]);

    console.print("\r\n\r\nMonitoring data:");
    for (unsigned slot = 0; slot < screen_slots; ++slot) {
        draw_slot_label(slot, presence.has_slot(slot));
        if (!presence.has_slot(slot))
            continue;
        if (slot == 0) {
            draw_monitoring(layout.monitoring);
        } else {
            layout.voltage[slot] = draw_output("Voltage: ");
            console.print("\r\n");
            layout.current[slot] = draw_output("Current: ");
        }
    }

    console.print("\r\n\r\nStatus words:");
    new_line("  controller:");
    go_to_column(first_value_column);
    layout.overall_state = console.place();
    for (unsigned slot = 0; slot < screen_slots; ++slot) {
        draw_slot_label(slot, presence.has_slot(slot));
        go_to_column(first_value_column);
        layout.module_state[slot] = console.place();
    }
    new_line("  base unit:");

    const auto place_word = [](const char* label) {
        new_line(label);
        return console.place();
    };
    console.print("\r\n\r\nController state:");
    layout.words.device = place_word("  Device state:");
    layout.words.voltage = place_word("  Voltage state:");
    layout.words.temperature = place_word("  Temperature state:");
    layout.words.fan = place_word("  Fan state:");
    layout.words.interlock = place_word("  Interlock state:");
}

void draw_quit_prompt()
{
    constexpr int row = 52; // below the longest frame, apart from the message area
    console.move_to(console.screen_place(row, 3));
    print_quit_prompt("", true);
}
