#include "controller/status_displays.h"

#include "frame/device_call.h"
#include "frame/live_display.h"
#include "frame/program.h"
#include "frame/terminal/console.h"
#include "frame/text/bit_fields.h"
#include "instrument/status_words.h"

#include <array>
#include <span>

namespace
{

/// The state byte on the header line; its fields behind it or, continuously, on the next line.
template <class Fields>
void show_state_byte(const char* title,
                     LibraryFunction<decltype(COM_KOV_CTRL_GetVoltageState)> function,
                     const Fields& fields, int gap, const Given& given)
{
    struct Values {
        std::uint8_t state;
    };
    Field word;
    FieldLine line;
    run_live_display<Values>(
        {.title = title, .continuous = given.capital},
        [&](LiveFields& live) {
            word = place_status_word(8);
            live.place_rates(rates_in_line);
            console.print(given.capital ? "\r\n" : ",");
            line = FieldLine{labels_of(fields), gap};
        },
        [&](Values& values) { return attempt(function, &values.state); },
        [&](const Values& values) {
            show_status_word(word, values.state, 8);
            line.show(words_of(fields, values.state));
        });
}

/// The flags of a record behind a header without a state word.
template <class Record, std::size_t count>
void show_flags(const char* title, const std::array<FlagField<Record>, count>& fields, int gap,
                const Given& given, Failure (*attempt_record)(Record&))
{
    FieldLine line;
    run_live_display<Record>(
        {.title = title, .title_end = ":", .continuous = given.capital},
        [&](LiveFields& live) {
            live.place_rates(rates_in_line);
            console.print(given.capital ? "\r\n" : ",");
            line = FieldLine{labels_of(fields), gap};
        },
        attempt_record, [&](const Record& record) { line.show(words_of(fields, record)); });
}

} // namespace

void show_overall_state(const Given& given)
{
    struct Values {
        std::uint16_t state;
    };
    Field word;
    progress("Getting overall state:\r\n");
    run_live_display<Values>(
        {.title = "Overall state", .continuous = given.capital},
        [&](LiveFields& live) {
            constexpr int columns = 29; // "0000h = " and the text
            word = place_field("", columns);
            console.print_at(word.place(), Color::label, "%04Xh = ", 0);
            console.move_to(word.place().right(columns));
            live.place_rates(rates_in_line);
        },
        [](Values& values) { return attempt(LIB(GetState), &values.state); },
        [&](const Values& values) {
            console.print_at(word.place(), Color::value, "%04Xh", values.state);
            console.print(" = ");
            console.print(overall_state_word(values.state));
        });
}

void show_device_state(const Given&)
{
    progress("Getting device state:\r\n");
    std::uint8_t state = 0;
    if (const Failure failed = attempt(LIB(GetDeviceState), &state)) {
        console.print("\r\n"); // as the other displays of a status word do
        report_error(failed);
        return;
    }
    console.print("Device state: ");
    print_word(state, 8);
    const char* separator = "\n"; // the fields of this one are divided by tabs
    for (const BitField& field : device_state_fields) {
        console.print("%s%s", separator, field.label);
        console.print(field.word(state));
        separator = "\t";
    }
    console.print("\n");
}

void show_voltage_state(const Given& given)
{
    progress("Getting voltage state:\r\n");
    show_state_byte("Voltage state", LIB(GetVoltageState), voltage_state_fields, 1, given);
}

void show_temperature_state(const Given& given)
{
    progress("Getting temperature state:\r\n");
    show_state_byte("Temperature state", LIB(GetTemperatureState), temperature_state_fields, 1,
                    given);
}

void show_fan_state(const Given& given)
{
    progress("Getting fan state:\r\n");
    show_state_byte("Fan state", LIB(GetFanState), fan_state_fields, 3, given);
}

void show_interlock_state(const Given& given)
{
    struct Values {
        std::uint16_t state;
    };
    constexpr std::array<std::span<const BitField>, 3> rows = {
        heat_controller_interlock_fields, controller_interlock_fields, resulting_interlock_fields};
    std::array<FieldLine, rows.size()> lines;
    progress("Getting interlock state:\r\n");
    run_live_display<Values>(
        {.title = "Interlock state", .continuous = given.capital, .key_first = true},
        [&](LiveFields& live) {
            live.place_rates(fine_rates_in_header);
            for (std::size_t row = 0; row < rows.size(); ++row) {
                console.print("\r\n");
                console.skip(2);
                lines[row] = FieldLine{labels_of(rows[row]), {6, 8, 6}};
            }
        },
        [](Values& values) { return attempt_twice(LIB(GetInterlockState), &values.state); },
        [&](const Values& values) {
            for (std::size_t row = 0; row < rows.size(); ++row)
                lines[row].show(words_of(rows[row], values.state));
        });
}

void show_input_levels(const Given& given)
{
    progress("Getting the device input levels:\r\n");
    show_flags("Device input levels", input_level_fields, 1, given, attempt_input_levels);
}

void show_power_monitors(const Given& given)
{
    progress("Getting the power monitor state:\r\n");
    show_flags("Power monitor state", power_monitor_fields, 4, given, attempt_power_monitors);
}
