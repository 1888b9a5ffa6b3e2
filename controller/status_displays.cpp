#include "controller/status_displays.h"

#include <span>
#include <string>
#include <vector>

#include "controller/status_words.h"
#include "frame/bit_fields.h"
#include "frame/console.h"
#include "frame/device_call.h"
#include "frame/format.h"
#include "frame/live_display.h"

namespace
{

using Labels = std::vector<const char*>;
using Words = std::vector<Word>;

/// What a display of one state byte is made of.
struct ByteDisplay {
    const char* title;
    LibraryFunction<decltype(COM_KOV_CTRL_GetVoltageState)> function;
    Labels labels;
    int gap; ///< columns behind a label
    Words (*words)(std::uint8_t state);
};

/// The state byte on the header line; its fields behind it or, continuously, on the next line.
void show_state_byte(const ByteDisplay& display, const Given& given)
{
    struct Values {
        std::uint8_t state;
    };
    Place word;
    FieldLine fields;
    run_live_display<Values>(
        {.title = display.title, .continuous = given.capital},
        [&](LiveFields& live) {
            word = console.place();
            print_word(0, 8);
            live.place_rates(rates_in_line);
            console.print(given.capital ? "\r\n" : ",");
            fields = FieldLine{display.labels, display.gap};
        },
        [&](Values& values) { return attempt(display.function, &values.state); },
        [&](const Values& values) {
            console.move_to(word);
            print_word(values.state, 8);
            fields.show(display.words(values.state));
        });
}

/// Several one-letter values behind a header without a state word.
template <class Values, class Read, class ToWords>
void show_letters(const char* title, const Labels& labels, int gap, const Given& given, Read read,
                  ToWords words)
{
    FieldLine fields;
    run_live_display<Values>(
        {.title = title, .title_end = ":", .continuous = given.capital},
        [&](LiveFields& live) {
            live.place_rates(rates_in_line);
            console.print(given.capital ? "\r\n" : ",");
            fields = FieldLine{labels, gap};
        },
        read, [&](const Values& values) { fields.show(words(values)); });
}

Word good_letter(const char* good, const char* not_good, std::uint8_t flag)
{
    return flag != 0 ? Word{good, Color::good} : Word{not_good, Color::not_good};
}

} // namespace

void show_overall_state(const Given& given)
{
    struct Values {
        std::uint16_t state;
    };
    Place word;
    progress("Getting overall state:\r\n");
    run_live_display<Values>(
        {.title = "Overall state", .continuous = given.capital},
        [&](LiveFields& live) {
            constexpr int text_columns = 21;
            word = console.place();
            console.print("%04Xh = ", 0);
            console.skip(text_columns);
            live.place_rates(rates_in_line);
        },
        [](Values& values) { return attempt(LIB(GetState), &values.state); },
        [&](const Values& values) {
            console.print_at(word, Color::value, "%04Xh", values.state);
            console.print(" = ");
            console.print(overall_state_word(values.state));
        });
}

void show_device_state(const Given&)
{
    progress("Getting device state:\r\n");
    std::uint8_t state = 0;
    if (const char* failed = attempt(LIB(GetDeviceState), &state)) {
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
    show_state_byte(
        {.title = "Voltage state",
         .function = LIB(GetVoltageState),
         .labels = labels_of(voltage_state_fields),
         .gap = 1,
         .words = [](std::uint8_t state) { return words_of(voltage_state_fields, state); }},
        given);
}

void show_temperature_state(const Given& given)
{
    progress("Getting temperature state:\r\n");
    show_state_byte({.title = "Temperature state",
                     .function = LIB(GetTemperatureState),
                     .labels = {"   CPU: ", "   PSU: "},
                     .gap = 1,
                     .words =
                         [](std::uint8_t state) {
                             using namespace temperature_bit;
                             return Words{temperature_word(state, cpu_hot, cpu_cold),
                                          temperature_word(state, psu_hot, psu_cold)};
                         }},
                    given);
}

void show_fan_state(const Given& given)
{
    progress("Getting fan state:\r\n");
    show_state_byte({.title = "Fan state",
                     .function = LIB(GetFanState),
                     .labels = labels_of(fan_state_fields),
                     .gap = 3,
                     .words = [](std::uint8_t state) { return words_of(fan_state_fields, state); }},
                    given);
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
    struct Values {
        std::uint8_t front, rear, fan_enabled;
    };
    progress("Getting the device input levels:\r\n");
    show_letters<Values>(
        "Device input levels",
        {"   Interlock Front State: ", "   Interlock Rear Level: ", "   Fan Enabled: "}, 1, given,
        [](Values& values) {
            return attempt(LIB(GetInputs), &values.front, &values.rear, &values.fan_enabled);
        },
        [](const Values& values) {
            return Words{good_letter("Y", "N", values.front), good_letter("1", "0", values.rear),
                         good_letter("Y", "N", values.fan_enabled)};
        });
}

void show_power_monitors(const Given& given)
{
    struct Values {
        std::uint8_t ac_input, dc_output;
    };
    progress("Getting the power monitor state:\r\n");
    show_letters<Values>(
        "Power monitor state", {"   AC input: ", "   DC output: "}, 4, given,
        [](Values& values) {
            return attempt(LIB(GetPowerMonitors), &values.ac_input, &values.dc_output);
        },
        [](const Values& values) {
            return Words{values.ac_input != 0 ? ok_word : fail_word,
                         values.dc_output != 0 ? ok_word : fail_word};
        });
}
