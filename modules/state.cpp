#include "modules/state.h"

#include "frame/device_call.h"
#include "frame/live_display.h"
#include "frame/program.h"
#include "frame/terminal/console.h"
#include "frame/text/bit_fields.h"
#include "instrument/module_state.h"
#include "instrument/words.h"
#include "modules/addressing.h"

#include <cstdint>

namespace
{

void print_state(unsigned address, std::uint16_t state)
{
    print_word(state, 16);
    print_fields(module_state_fields_of(address), state);
}

} // namespace

void show_module_state(const Given& given)
{
    if (given.address == base_unit) {
        show_base_unit_state(given);
        return;
    }
    for_one_or_all({.progress = "Getting state of ", .label = "State of ", .heading = "States:"},
                   given.address, [](const Module& module) {
                       std::uint16_t state = 0;
                       if (!call_twice(LIB(GetModuleState), module.address, &state))
                           return false;
                       module.print_label();
                       print_state(module.address, state);
                       return true;
                   });
}

void show_base_unit_state(const Given& given)
{
    struct Values {
        std::uint16_t state;
    };
    constexpr RateLayout rates = {"Polling rate:", "cycles/s     ",
                                  "Mean response time:", mean_in_tenths_ms, 10};
    constexpr int word_columns = 26;
    constexpr int columns_before_rates = 30;
    Field word, active;
    progress("Getting state of the base device:\r\n");
    run_live_display<Values>(
        {.title = "Base-device state",
         .title_end = ":",
         .continuous = given.capital,
         .tidy_after_failure = false},
        [&](LiveFields& fields) {
            console.skip(1);
            word = place_field("", word_columns, columns_before_rates - word_columns - 1);
            fields.place_rates(rates);
            console.print("\r\n");
            console.skip(2);
            active = place_field("Device active: ", 3);
        },
        // Made once, unlike the other calls to a module.
        [](Values& values) { return attempt(LIB(GetModuleState), base_unit, &values.state); },
        [&](const Values& values) {
            show_status_word(word, values.state, 16);
            active.show(module_state_fields[0].word(values.state));
        });
}

void set_module_activation(const Given& given)
{
    for_one_or_all({.progress = "Setting activation state of ",
                    .label = "Activation state of ",
                    .label_end = " set to ",
                    .heading = "Activation state:"},
                   given.address, [&](const Module& module) {
                       const bool on = given.yes;
                       if (!call_twice(LIB(SetModuleActivationState), module.address,
                                       static_cast<std::uint8_t>(on)))
                           return false;
                       module.print_label();
                       if (module.in_list)
                           console.print("activation state set to ");
                       console.print(on_off(on));
                       return true;
                   });
}

void show_module_activation(const Given& given)
{
    for_one_or_all({.progress = "Getting activation state of ",
                    .label = "Activation state of ",
                    .heading = "Activation state:"},
                   given.address, [](const Module& module) {
                       std::uint8_t on = 0;
                       if (!call_twice(LIB(GetModuleActivationState), module.address, &on))
                           return false;
                       module.print_label();
                       console.print(on_off(on != 0));
                       return true;
                   });
}
