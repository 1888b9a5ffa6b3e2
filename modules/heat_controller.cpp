#include "modules/heat_controller.h"

#include "frame/device_call.h"
#include "frame/live_display.h"
#include "frame/program.h"
#include "frame/text/quantity_fields.h"
#include "instrument/addresses.h"
#include "instrument/quantities.h"
#include "instrument/words.h"

#include <cstdint>
#include <span>
#include <string>

namespace
{

std::string heat_controller_name()
{
    return module_name(heat_controller);
}

// ---- Targets and limits ----

/// A setting: one real number that is read and, most of them, set.
struct Setting {
    const char* subject; ///< in the progress lines
    const char* label;   ///< in front of the value
    const char* unit;
    LibraryFunction<std::int32_t(double*)> get;
    LibraryFunction<std::int32_t(const double*)> set = {};
    bool negative_is_off = false;
};

constexpr Setting target_temperature = {
    .subject = "target heater temperature",
    .label = "Target heater temperature",
    .unit = DEGREES_C,
    .get = LIB(GetHeatCtrlHeaterTemperature),
    .set = LIB(SetHeatCtrlHeaterTemperature),
    .negative_is_off = true,
};
constexpr Setting target_output_voltage = {
    .subject = "target output voltage",
    .label = "Target output voltage",
    .unit = "V",
    .get = LIB(GetHeatCtrlOutputVoltage),
};
constexpr Setting target_heater_power = {
    .subject = "target heater power",
    .label = "Target heater power",
    .unit = "W",
    .get = LIB(GetHeatCtrlHeaterPower),
};
constexpr Setting voltage_limit = {
    .subject = "voltage limit",
    .label = "Maximum heater voltage",
    .unit = "V",
    .get = LIB(GetHeatCtrlVoltageLimit),
    .set = LIB(SetHeatCtrlVoltageLimit),
};
constexpr Setting current_limit = {
    .subject = "current limit",
    .label = "Maximum heater current",
    .unit = "A",
    .get = LIB(GetHeatCtrlCurrentLimit),
    .set = LIB(SetHeatCtrlCurrentLimit),
};
constexpr Setting power_limit = {
    .subject = "power limit",
    .label = "Maximum heater power",
    .unit = "W",
    .get = LIB(GetHeatCtrlPowerLimit),
    .set = LIB(SetHeatCtrlPowerLimit),
};

void print_setting(const Setting& setting, const char* between, double value)
{
    console.print("%s of %s%s", setting.label, heat_controller_name().c_str(), between);
    if (setting.negative_is_off && value < 0.0)
        console.print(off_word);
    else
        console.print(Color::value, "%.3lf%s", value, setting.unit);
    console.print("\r\n");
}

/// False after a failure, which has been reported.
bool get_setting(const Setting& setting, double& value)
{
    progress("Getting %s of %s:\r\n", setting.subject, heat_controller_name().c_str());
    return call_twice(setting.get, &value);
}

void show_setting(const Setting& setting)
{
    double value = 0.0;
    if (get_setting(setting, value))
        print_setting(setting, ": ", value);
}

/// The module decides what it accepts; what was sent is shown.
void set_setting(const Setting& setting, double value)
{
    progress("Setting %s of %s:\r\n", setting.subject, heat_controller_name().c_str());
    const double* const sent = &value;
    if (call_twice(setting.set, sent))
        print_setting(setting, " set to: ", value);
}

/// A target that has words of its own for "off".
void show_target_or_off(const Setting& setting, const char* off_label)
{
    double value = 0.0;
    if (!get_setting(setting, value))
        return;
    if (value < 0.0)
        print_value_line(off_label, "off");
    else
        print_setting(setting, ": ", value);
}

// ---- Interlocks ----

/// Each interlock has two bits of the state.
ColoredText interlock_word(std::uint8_t state, std::uint8_t mask)
{
    if ((state & mask) == mask)
        return {"closed", Color::good};
    if ((state & mask) == 0)
        return {"open  ", Color::bad};
    return {"noisy ", Color::value};
}

} // namespace

void show_target_temperature(const Given&)
{
    show_setting(target_temperature);
}

void set_target_temperature(const Given& given)
{
    set_setting(target_temperature, given.real);
}

void show_target_output_voltage_of_heater(const Given&)
{
    show_target_or_off(target_output_voltage, "Output voltage control: ");
}

void show_target_heater_power(const Given&)
{
    show_target_or_off(target_heater_power, "Heater power control: ");
}

void show_heater_voltage_limit(const Given&)
{
    show_setting(voltage_limit);
}

void set_heater_voltage_limit(const Given& given)
{
    set_setting(voltage_limit, given.real);
}

void show_heater_current_limit(const Given&)
{
    show_setting(current_limit);
}

void set_heater_current_limit(const Given& given)
{
    set_setting(current_limit, given.real);
}

void show_heater_power_limit(const Given&)
{
    show_setting(power_limit);
}

void set_heater_power_limit(const Given& given)
{
    set_setting(power_limit, given.real);
}

void show_heater_hardware_limits(const Given&)
{
    const std::string name = heat_controller_name();
    progress("Getting hardware limits of %s:\r\n", name.c_str());
    if (!program.quiet)
        console.print("Hardware limits of %s:\r\n", name.c_str());
    HeaterLimits limits;
    if (!succeeded(with_repeat([&] { return attempt_hardware_limits(limits); })))
        return;
    print_value_line("  Maximum heater voltage:     ", "%7.3lfV", limits.voltage);
    print_value_line("  Maximum heater current:     ", "%7.3lfA", limits.current);
    print_value_line("  Maximum heater power:       ", "%7.3lfW", limits.power);
    print_value_line("  Maximum heater temperature: ", "%7.3lf" DEGREES_C, limits.temperature);
}

namespace
{

constexpr LabelledQuantity<HeaterMonitoring> monitoring_row_1[] = {
    {"Voltage output:", monitoring::output_voltage},
    {"heater:", monitoring::heater_voltage},
    {"Current:", monitoring::current},
    {"Heater temperature:", monitoring::temperature}};
constexpr LabelledQuantity<HeaterMonitoring> monitoring_row_2[] = {
    {"Power output:  ", monitoring::output_power},
    {"wires: ", monitoring::wire_power},
    {"heater: ", monitoring::heater_power},
    {"Heater resistance: ", monitoring::resistance}};

} // namespace

void show_heater_monitoring(const Given& given)
{
    const std::string name = heat_controller_name();
    QuantityFields<Quantity<HeaterMonitoring>> values;
    progress("Getting monitoring data of %s:\r\n", name.c_str());
    run_live_display<HeaterMonitoring>(
        {.title = "Monitoring of " + name, .continuous = given.capital, .key_first = true},
        [&](LiveFields& fields) {
            fields.place_rates(data_rates_in_header);
            for (const auto& row : {std::span{monitoring_row_1}, std::span{monitoring_row_2}}) {
                console.print("\r\n");
                console.skip(2);
                values.place_row(row);
            }
        },
        [](HeaterMonitoring& record) {
            const Failure failed = attempt_monitoring(record);
            return !failed && record.ready == 0 ? Reading::nothing_new() : Reading{failed};
        },
        [&](const HeaterMonitoring& record) { values.show(record); });
}

void show_heater_interlock_state(const Given& given)
{
    struct Values {
        std::uint8_t state;
    };
    constexpr int columns = 6;
    constexpr int gap = 5;
    constexpr std::uint8_t mask_of_1 = 0x05;
    constexpr std::uint8_t mask_of_2 = 0x0A;
    const std::string name = heat_controller_name();
    Field interlock_1, interlock_2;
    progress("Getting interlock state of %s:\r\n", name.c_str());
    run_live_display<Values>(
        {.title = "Interlock state of " + name, .continuous = given.capital, .key_first = true},
        [&](LiveFields& fields) {
            fields.place_rates(fine_rates_in_header);
            console.print("\r\n");
            console.skip(2);
            interlock_1 = place_field("Interlock #1: ", columns, gap);
            interlock_2 = place_field("Interlock #2: ", columns);
        },
        [](Values& values) { return attempt_twice(LIB(GetHeatCtrlIlockState), &values.state); },
        [&](const Values& values) {
            interlock_1.show(interlock_word(values.state, mask_of_1));
            interlock_2.show(interlock_word(values.state, mask_of_2));
        });
}
