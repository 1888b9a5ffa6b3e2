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
constexpr int heater_ohms = 11; // "%7.3lfOhm"
constexpr int output = 12;      // "%+9.3lfV", "%+10.3leA"
constexpr int counters = 21;    // "%u/%u"

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

GroupPlaces draw_group()
{
    GroupPlaces places;
    places.duration = place_field(duration_label.data(), duration);
    places.counters = place_field(counters_label.data(), counters).place();
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
    places.plus_24 = place_field("Voltages:  +24V:", volts, gap);
    places.plus_5 = place_field("+5V0:", volts, gap);
    places.plus_3_3 = place_field("+3V3:", volts, gap);
    places.cpu = place_field("Temperature CPU:", degrees, gap);
}

void draw_controller_housekeeping(int window_columns, HousekeepingPlaces& places)
{
    constexpr int gap = 2;
    new_line("  controller:");
    go_to_column(first_value_column);
    draw_common_supplies(places, gap);
    places.psu = place_field("PSU:", degrees, gap);
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
        places.psu = place_field("PSU:", degrees, gap);
    else
        places.minus_22 = place_field("-22V:", volts, gap);
    console.print("\r\n");
    if (slot != 0) {
        go_to_column(second_row_column);
        places.plus_18 = place_field("+18V:", volts, gap);
        places.minus_18 = place_field("-18V:", volts, gap);
        places.vc = place_field("+1V5:", fine_volts, gap);
        places.analog_ground = place_field("AGnd:", fine_volts, gap);
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
    places.plus_3_3 = place_field("Voltages:  +3V3:", volts, 2);
    places.cpu = place_field("Temperature CPU:", degrees, 2);
    places.group = draw_group_at(group_column);
}

void draw_monitoring(MonitoringPlaces& places)
{
    constexpr int gap = 1;
    auto& values = places.values;
    go_to_column(first_value_column);
    values.place("Voltage output:", monitoring::output_voltage, heater_unit, gap);
    values.place("heater:", monitoring::heater_voltage, heater_unit, gap);
    values.place("Current:", monitoring::current, heater_unit, gap);
    values.place("Heater temperature:", monitoring::temperature, heater_degrees, gap);
    values.place("Power output:  ", monitoring::output_power, heater_unit, gap);
    console.print("\r\n");
    go_to_column(second_row_column - 2); // the resistance needs the room
    values.place("wires: ", monitoring::wire_power, heater_unit, gap);
    values.place("heater: ", monitoring::heater_power, heater_unit, gap);
    values.place("Heater resistance: ", monitoring::resistance, heater_ohms);
    places.group = draw_group_at(group_column);
}

OutputPlaces draw_output(const char* label)
{
    OutputPlaces places;
    go_to_column(first_value_column);
    places.value = place_field(label, output);
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
    constexpr int counter = 10;
    static constexpr RateLayout rates_of_screen = {
        ", polling rate:", "cycles/s, ", "mean response time:", mean_in_tenths, 6, "ms, "};
    PortLine line;
    console.move_to(console.screen_place(3, 1));
    console.print("Port: ");
    console.print(Color::value, "COM%u", program.port);
    console.print(", data rate: ");
    console.print(Color::value, "%lu", static_cast<unsigned long>(program.data_rate));
    console.print(" baud");
    line.rates = place_rates(rates_of_screen);
    line.errors = place_field("errors: ", counter);
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
