/// What the full-screen display reads from the instrument: the latest good values of everything,
/// and how the reading went.
#pragma once

#include "frame/failure.h"
#include "frame/live_display.h"
#include "instrument/addresses.h"
#include "instrument/controller_readings.h"
#include "instrument/module_readings.h"
#include "instrument/presence.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <functional>

/// Slots that the screen lays out, and the place of the base unit behind them.
inline constexpr unsigned screen_slots = 4;
inline constexpr std::size_t base_index = ModulePresence::base_unit_index;

/// What each slot has, and the base unit behind them.
template <class T>
using PerUnit = std::array<T, base_index + 1>;

/// Values that become ready together, with the record of their readings.
struct ReadingGroup {
    std::uint32_t readings = 0;
    std::uint32_t errors = 0;
    std::uint32_t overflows = 0; ///< readings that the device lost because nobody fetched them
    std::int64_t first_ms = 0;
    std::int64_t last_ms = 0;

    /// Mean time between readings in ms, 0 before the second.
    [[nodiscard]] double mean_duration_ms() const;
    void count_reading(std::int64_t now_ms);
};

/// All status words, as the device delivers them in one transfer.
struct CompleteState {
    std::uint8_t data_ready = 0;
    std::uint8_t device = 0;
    std::uint8_t voltage = 0;
    std::uint8_t temperature = 0;
    std::uint8_t fan = 0;
    std::uint16_t interlock = 0;
    std::uint16_t overall = 0;
    PerUnit<std::uint8_t> module_data_ready{};
    PerUnit<std::uint16_t> module{};
};

class ScreenReadings
{
public:
    explicit ScreenReadings(const ModulePresence& presence) : presence_(presence) {}

    /// One cycle: the complete state, then whatever is ready. `before_report` is called before each
    /// error report, to show what was read until then.
    void read_cycle(const std::function<void()>& before_report);

    CycleRates cycles; ///< counts the complete states
    std::uint32_t state_errors = 0;
    CompleteState state; ///< means something when cycles.cycles > 0

    // What the screen shows of them: the rates at the last complete state, and the words of the
    // last one whose cycle went on.
    std::int64_t shown_ms = 0;
    CompleteState words;
    bool has_words = false;

    ControllerHousekeeping controller;
    ReadingGroup controller_group;
    PerUnit<ModuleHousekeeping> housekeeping;
    PerUnit<ReadingGroup> housekeeping_groups;
    HeaterMonitoring monitoring;
    ReadingGroup monitoring_group;
    std::array<double, screen_slots> voltage{}; ///< V, slots 1..3
    std::array<ReadingGroup, screen_slots> voltage_groups;
    std::array<double, screen_slots> current{}; ///< A
    std::array<ReadingGroup, screen_slots> current_groups;

private:
    /// Reports a failure; does nothing after a success.
    using Report = std::function<void(Failure failed)>;

    [[nodiscard]] Failure read_state();
    [[nodiscard]] Failure read_controller();
    void read_housekeeping(const Report& report);
    [[nodiscard]] Failure read_monitoring();
    void forget_old_overflows(CompleteState& first) const;

    ModulePresence presence_;
};
