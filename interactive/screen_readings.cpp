#include "interactive/screen_readings.h"

#include "frame/device_call.h"
#include "frame/platform/platform.h"
#include "interactive/screen_reports.h"

namespace
{

/// Counts an overflow, reads the group if it is ready, and counts the reading if it is valid.
/// `read` fills `fresh` and returns what failed; `is_valid` looks at it; then it becomes `latest`.
template <class Values, class Read, class IsValid>
Failure read_group(std::uint8_t flags, int bit, ReadingGroup& group, Values& latest, Read read,
                   IsValid is_valid)
{
    if (has_overflowed(flags, bit))
        ++group.overflows;
    if (!is_ready(flags, bit))
        return {};
    Values fresh{};
    set_purge_hold();
    if (const Failure failed = read(fresh)) {
        ++group.errors;
        return failed;
    }
    if (is_valid(fresh)) {
        latest = fresh;
        group.count_reading(platform::tick_ms());
    }
    return {};
}

} // namespace

double ReadingGroup::mean_duration_ms() const
{
    return readings > 1 ? static_cast<double>(last_ms - first_ms) / (readings - 1) : 0.0;
}

void ReadingGroup::count_reading(std::int64_t now_ms)
{
    if (readings == 0)
        first_ms = now_ms;
    last_ms = now_ms;
    ++readings;
}

/// What overflowed before the screen began was nobody's fault.
void ScreenReadings::forget_old_overflows(CompleteState& first) const
{
    const auto forget = [](std::uint8_t& flags, std::initializer_list<int> bits) {
        flags = without_overflows(flags, bits);
    };
    forget(first.data_ready, {controller_ready_bit::housekeeping, controller_ready_bit::fan});
    forget(first.module_data_ready[0], {ready_bit::monitoring, ready_bit::housekeeping});
    for (unsigned slot = 1; slot < screen_slots; ++slot)
        forget(first.module_data_ready[slot],
               {ready_bit::housekeeping, ready_bit::output_voltage, ready_bit::output_current});
    forget(first.module_data_ready[base_index], {ready_bit::housekeeping});
}

Failure ScreenReadings::read_state()
{
    CompleteState fresh;
    set_purge_hold();
    const Failure failed = attempt(LIB(GetCompleteState), &fresh.data_ready, &fresh.device,
                                   &fresh.voltage, &fresh.temperature, &fresh.fan, &fresh.interlock,
                                   &fresh.overall, &fresh.module_data_ready, &fresh.module);
    if (failed) {
        ++state_errors;
        return failed;
    }
    if (cycles.cycles == 0)
        forget_old_overflows(fresh);
    state = fresh;
    ++cycles.cycles;
    shown_ms = platform::tick_ms();
    return {};
}

Failure ScreenReadings::read_controller()
{
    return read_group(state.data_ready, controller_ready_bit::housekeeping, controller_group,
                      controller, attempt_controller_housekeeping,
                      [](const ControllerHousekeeping&) { return true; });
}

void ScreenReadings::read_housekeeping(const Report& report)
{
    constexpr PerUnit<std::size_t> order = {0, base_index, 1, 2, 3};
    for (const std::size_t index : order) {
        if (presence_.flags[index] != presence_flag::present)
            continue;
        const unsigned address = index == base_index ? base_unit : static_cast<unsigned>(index);
        report(read_group(
            state.module_data_ready[index], ready_bit::housekeeping, housekeeping_groups[index],
            housekeeping[index],
            [address](ModuleHousekeeping& record) { return attempt_housekeeping(address, record); },
            [](const ModuleHousekeeping& record) { return record.valid != 0; }));
    }
}

Failure ScreenReadings::read_monitoring()
{
    if (!presence_.has_slot(0))
        return {};
    return read_group(state.module_data_ready[0], ready_bit::monitoring, monitoring_group,
                      monitoring, attempt_monitoring,
                      [](const HeaterMonitoring& record) { return record.ready != 0; });
}

namespace
{

/// The output voltages, or the output currents, of the HV-supplies.
template <class Report>
void read_outputs(const ModulePresence& presence, const CompleteState& state, int bit,
                  std::array<ReadingGroup, screen_slots>& groups,
                  std::array<double, screen_slots>& values,
                  Failure (*attempt_measurement)(unsigned, OutputMeasurement&),
                  const Report& report)
{
    for (unsigned slot = 1; slot < screen_slots; ++slot) {
        if (!presence.has_slot(slot))
            continue;
        OutputMeasurement latest{.valid = 1, .value = values[slot]};
        const Failure failed = read_group(
            state.module_data_ready[slot], bit, groups[slot], latest,
            [&](OutputMeasurement& fresh) { return attempt_measurement(slot, fresh); },
            [](const OutputMeasurement& fresh) { return fresh.valid != 0; });
        values[slot] = latest.value;
        report(failed);
    }
}

} // namespace

void ScreenReadings::read_cycle(const std::function<void()>& before_report)
{
    bool failed_before = false;
    const Report report = [&](Failure failed) {
        if (!failed)
            return;
        failed_before = true;
        before_report();
        report_on_screen_and_purge(failed);
    };
    // Without the state nothing is known to be ready; a controller that does not answer will not
    // answer for its modules either.
    report(read_state());
    if (!failed_before)
        report(read_controller());
    if (failed_before)
        return;
    words = state;
    has_words = true;
    // A module that fails does not keep the next one from its turn.
    read_housekeeping(report);
    report(read_monitoring());
    read_outputs(presence_, state, ready_bit::output_voltage, voltage_groups, voltage,
                 attempt_output_voltage, report);
    read_outputs(presence_, state, ready_bit::output_current, current_groups, current,
                 attempt_output_current, report);
}
