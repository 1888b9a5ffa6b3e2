#include "companion/report/reading/layout.h"
#include "frame/text/format.h"
#include "instrument/module_hardware.h"
#include "instrument/supply_output.h"
#include "instrument/words.h"
#include "protocol/report/report_items.h"
#include "protocol/report/report_texts.h"
#include "protocol/report/series.h"

namespace companion
{

using namespace report_text;

namespace
{

constexpr Shape transfer_times = {parse_transfer, "ms", nullptr, timed_transfers};

Shape statistics(const QuantityFormat& quantity, std::size_t samples)
{
    return {parse_statistics, "", &quantity, samples};
}

// ---- The controller ----

void switching(LineReader& reader, bool on, const char* key)
{
    reader.heading(on ? enabling : disabling);
    const ColoredText& word = enabled_or_disabled(on);
    reader.choice({device_has_been + std::string{word.text}}, key, 1);
}

template <class Channels>
void series_of(LineReader& reader, const char* title, const std::string& key,
               const Channels& channels, std::size_t samples, bool has_period)
{
    reader.line(std::string{title} + ':');
    for (const auto& channel : channels)
        reader.item(channel.label, key + key_of_label(channel.label),
                    statistics(*channel.quantity, samples), 1);
    if (has_period)
        reader.item(period, key + period, shape::period, 1);
}

void fan(LineReader& reader)
{
    const auto rpm = statistics(quantity::rpm, series::fan.count);
    reader.line(std::string{fan_data} + ':');
    reader.word(state, "fan/state", {fan_good, fan_failed}, 1);
    reader.item("speed set", "fan/speed-set", rpm, 1);
    reader.item("measured", "fan/measured", rpm, 1);
    reader.item("PWM control", "fan/PWM-control",
                statistics(quantity::percent_of_one, series::fan.count), 1);
    reader.item(period, "fan/period", shape::period, 1);
}

void controller_steps(LineReader& reader)
{
    reader.prefix = "controller/";
    reader.choice(
        {device_is + std::string{enabled_word.text}, device_is + std::string{disabled_word.text}},
        "switching/before");
    switching(reader, true, "switching/on");
    switching(reader, false, "switching/off");
    reader.blank();
    reader.item(response_time, "communication/response-time", transfer_times);
    reader.item(transfer_time, "communication/transfer-time", transfer_times);
    reader.blank();
    series_of(reader, cpu_data, "CPU/", channels::cpu, series::cpu.count, false);
    reader.blank();
    series_of(reader, housekeeping, "housekeeping/", channels::controller_housekeeping,
              series::housekeeping.count, true);
    reader.blank();
    fan(reader);
}

// ---- Base unit and modules, switched off ----

void unit_series(LineReader& reader, unsigned address)
{
    reader.line(std::string{cpu_data} + ':');
    reader.item("load", "CPU/load", statistics(quantity::percent, series::cpu.count), 1);
    series_of(reader, housekeeping, "housekeeping/", channels::module_housekeeping(address),
              series::housekeeping.count, true);
}

void activation(LineReader& reader, bool on, const std::string& key)
{
    reader.line(on ? activating : deactivating);
    reader.choice({module_has_been + std::string{enabled_or_disabled(on).text}}, key, 1);
}

void heater_series(LineReader& reader, const std::string& title, const std::string& key,
                   bool with_power)
{
    const auto item = [&](const char* label, const QuantityFormat& quantity) {
        reader.item(label, key + key_of_label(label),
                    statistics(quantity, series::monitoring.count), 1);
    };
    reader.line(title + ':');
    item("output voltage", quantity::volts);
    item("heater voltage", quantity::volts);
    item("current", quantity::amperes);
    if (with_power) {
        item("power", quantity::watts);
        reader.item("heater temperature", key + "heater-temperature",
                    {parse_range, "", &quantity::fine_degrees, series::monitoring.count}, 1);
    } else {
        item("heater temperature", quantity::fine_degrees);
    }
    reader.item(period, key + period, shape::period, 1);
}

void channels_setting(LineReader& reader, MeasurementRanges ranges, const std::string& key)
{
    reader.line(setting_channels);
    reader.choice({std::string{current_channel} + range_has_been + ranges.current_range()},
                  key + "current-range", 1);
    reader.choice({std::string{voltage_channel} + range_has_been + ranges.polarity()},
                  key + "voltage-range", 1);
}

void idle_series(LineReader& reader, const char* title, const char* label,
                 const QuantityFormat& quantity, std::size_t samples, const std::string& key)
{
    reader.line(std::string{title} + ':');
    reader.item(label, key + label, statistics(quantity, samples), 1);
    reader.item(period, key + period, shape::period, 1);
}

void idle_supply(LineReader& reader)
{
    channels_setting(reader, {.negative = 0, .high = 0}, "idle/low-range/");
    idle_series(reader, low_range_output, current, quantity::picoamperes, series::current.count,
                "idle/low-range/");
    channels_setting(reader, {.negative = 0, .high = 1}, "idle/high-range/");
    idle_series(reader, high_range_output, current, quantity::picoamperes, series::current.count,
                "idle/high-range/");
    idle_series(reader, positive_output, voltage, quantity::volts, series::voltage.count,
                "idle/positive/");
    channels_setting(reader, {.negative = 1, .high = 1}, "idle/negative/");
    idle_series(reader, negative_output, voltage, quantity::volts, series::voltage.count,
                "idle/negative/");
}

void slot_steps(LineReader& reader, unsigned slot, const UnitsFound& found)
{
    reader.indent = 0;
    reader.prefix = unit_key(slot) + '/';
    reader.heading(slot_text(slot) + ':');
    reader.indent = 1;
    if (!found.slots[slot].is_present) {
        reader.choice({no_module}, "steps");
        return;
    }
    if (!found.fits(slot)) {
        reader.choice({wrong_module}, "steps");
        return;
    }
    unit_series(reader, slot);
    activation(reader, false, "switching/off");
    if (slot == heat_controller)
        heater_series(reader, monitoring, "heater/off/", false);
    else
        idle_supply(reader);
}

void module_steps(LineReader& reader, const UnitsFound& found)
{
    reader.prefix = "base/";
    reader.heading(std::string{report_text::base_unit_name} + ':');
    reader.indent = 1;
    if (!found.base.is_present)
        reader.choice({base_unit_missing}, "steps");
    else if (found.base.device_type != module_type::base_unit)
        reader.choice({no_base_unit}, "steps");
    else
        unit_series(reader, base_unit);
    for (unsigned slot = 0; slot <= highest_slot; ++slot)
        slot_steps(reader, slot, found);
    reader.indent = 0;
}

// ---- The heater ----

void setting(LineReader& reader, const char* label, const char* unit, double value,
             const std::string& key)
{
    const std::string told = formatted("%.3lf%s", value, unit);
    const Fact* fact = reader.begins(label + std::string{is_set_to}, key, shape::property);
    if (fact != nullptr && fact->text != told)
        reader.problem("this setting contradicts the limits of the hardware: it should be \"" +
                       told + '"');
}

void heater_run(LineReader& reader, const char* name)
{
    heater_series(reader, std::string{monitoring} + " (" + name + ')',
                  std::string{"heater/"} + name + '/', true);
}

void heater_steps(LineReader& reader, const UnitsFound& found)
{
    const HeaterLimits& maxima = found.heater_maxima;
    const auto& [by_voltage, by_current, by_power, unlimited] = heater_runs;
    reader.prefix = unit_key(heat_controller) + '/';
    reader.heading(slot_text(heat_controller) + ':');
    reader.indent = 1;
    setting(reader, target_temperature, "", maxima.temperature, "heater/target-temperature");
    setting(reader, power_limit, "W", maxima.power, "heater/power-limit");
    setting(reader, current_limit, "A", maxima.current, "heater/current-limit");
    setting(reader, voltage_limit, "V", limited_part * maxima.voltage,
            "heater/voltage-limited/limit");
    activation(reader, true, "switching/on");
    heater_run(reader, by_voltage);
    setting(reader, voltage_limit, "V", maxima.voltage, "heater/voltage-limit");
    setting(reader, current_limit, "A", limited_part * maxima.current,
            "heater/current-limited/limit");
    heater_run(reader, by_current);
    setting(reader, current_limit, "A", maxima.current, "heater/current-limit-again");
    setting(reader, power_limit, "W", limited_part * maxima.power, "heater/power-limited/limit");
    heater_run(reader, by_power);
    setting(reader, power_limit, "W", maxima.power, "heater/power-limit-again");
    heater_run(reader, unlimited);
    activation(reader, false, "switching/off-again");
    reader.indent = 0;
}

// ---- The outputs of an HV-supply ----

void target(LineReader& reader, unsigned volts, const std::string& key)
{
    const std::string name = formatted("%uV", volts);
    const std::vector<std::string_view> cells = reader.row(name, 5);
    if (cells.empty())
        return;
    const Shape shapes[] = {shape::volts, shape::volts,
                            statistics(quantity::volts, series::voltage.count), shape::period,
                            statistics(quantity::picoamperes, series::current.count)};
    const char* const names[] = {"set", "get", "measured", "period", "current"};
    for (std::size_t i = 0; i < cells.size(); ++i) {
        Fact& fact = reader.add(key + name + '/' + names[i], cells[i]);
        if (!shapes[i].parse(cells[i], shapes[i], fact))
            reader.problem("this cannot be understood: \"" + std::string{cells[i]} + '"');
    }
}

void polarity(LineReader& reader, unsigned slot, unsigned range, bool negative)
{
    const MeasurementRanges ranges = {.negative = negative, .high = 0};
    const std::string key = std::string{"output/"} + ranges.polarity() + '/';
    channels_setting(reader, ranges, key);
    activation(reader, true, key + "switching-on");
    reader.line(formatted(testing_output, slot, range));
    reader.line(formatted(output_table, ranges.polarity()));
    reader.line(target_set + std::string{'\t'} + target_get + '\t' + measured_voltage + '\t' +
                measured_period + '\t' + measured_current);
    const TargetSteps targets{range};
    for (unsigned number = 1; number <= targets.count && !reader.has_stopped(); ++number)
        target(reader, number * targets.step, key);
    reader.item_with(target_voltage, key + "target-at-the-end", zero_volts);
}

void supply_steps(LineReader& reader, const UnitsFound& found)
{
    for (unsigned slot = 1; slot <= highest_slot; ++slot) {
        if (!found.fits(slot))
            continue;
        const unsigned range =
            hv_supply_hardware::voltage_range.of(found.slots[slot].hardware_type);
        reader.prefix = unit_key(slot) + '/';
        reader.heading(slot_text(slot) + ':');
        reader.indent = 1;
        polarity(reader, slot, range, false);
        polarity(reader, slot, range, true);
        reader.indent = 0;
    }
}

// ---- Begin and end ----

/// The wait for the uptime that the test needs. It is told when there was one: then the uptime is
/// just the one that was waited for.
void uptime_wait(LineReader& reader, double uptime_before)
{
    constexpr double longest_step = 0.5; // between two readings
    const std::string waiting = waiting_for_uptime + formatted("%us...", needed_uptime_seconds);
    reader.prefix = "run/";
    reader.blank();
    const bool is_told = reader.is_next(waiting_for_uptime) && reader.line(waiting);
    const Fact* fact = reader.item(uptime, "uptime-at-start", shape::time);
    const double reached = fact != nullptr ? *fact->value : 0.0;
    if (!is_told && uptime_before < needed_uptime_seconds &&
        reached < needed_uptime_seconds + longest_step)
        reader.problem('"' + waiting + "\" is missing before this line");
    reader.line(settings_saved);
    reader.item(uptime, "uptime-of-settings", shape::time);
    reader.blank();
}

/// "893.0s (14:53.0s)"
bool parse_duration(std::string_view text, const Shape&, Fact& fact)
{
    const std::optional<double> seconds = take_number(text);
    if (!seconds || !take(text, "s ("))
        return false;
    const std::optional<double> minutes = take_number(text);
    if (!minutes || !take(text, ":") || !take_number(text) || text != "s)")
        return false;
    fact.value = seconds;
    fact.unit = "s";
    return true;
}

} // namespace

void read_steps(LineReader& reader, const UnitsFound& found)
{
    uptime_wait(reader, found.uptime);
    controller_steps(reader);
    module_steps(reader, found);
    reader.prefix = "controller/";
    switching(reader, true, "switching/on-again");
    if (found.fits(heat_controller))
        heater_steps(reader, found);
    supply_steps(reader, found);
    reader.prefix = "run/";
    reader.heading(settings_restored);
    reader.item(uptime, "uptime-at-end", shape::time);
    reader.blank();
    reader.begins(completed, "duration", {parse_duration});
    reader.end();
}

} // namespace companion
