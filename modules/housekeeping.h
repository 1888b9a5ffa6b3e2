/// What the modules tell of their own well-being: supply voltages, temperatures, CPU and LED.
#pragma once

#include "frame/field.h"
#include "frame/switches.h"
#include "frame/terminal/console.h"
#include "instrument/module_readings.h"
#include "instrument/supplies.h"
#include "instrument/words.h"

#include <span>
#include <vector>

/// Supply voltages and temperatures, one line a module.
void show_module_housekeeping(const Given&);

// As live displays.
void show_heat_controller_housekeeping(const Given&);
void show_hv_supply_housekeeping(const Given&);

void show_module_cpu_data(const Given&);
void show_module_led_data(const Given&);

// ---- Values of the record, for whoever shows them ----

/// A value of the record and how it is shown.
struct HousekeepingQuantity {
    double ModuleHousekeeping::*value;
    const Supply* supply; ///< null = a temperature
    NumberFormat format = {.width = 6, .decimals = 1, .unit = DEGREES_C, .sign = true};

    [[nodiscard]] Color color(const ModuleHousekeeping& record) const;
    /// Prints it at the cursor.
    void print(const ModuleHousekeeping& record) const;
};

namespace housekeeping
{

[[nodiscard]] constexpr NumberFormat volts(int width, bool sign)
{
    return {.width = width, .decimals = 3, .unit = "V", .sign = sign};
}

inline constexpr HousekeepingQuantity plus_3_3 = {&ModuleHousekeeping::plus_3_3, &supply::plus_3_3,
                                                  volts(6, false)};
inline constexpr HousekeepingQuantity plus_5 = {&ModuleHousekeeping::plus_5, &supply::plus_5,
                                                volts(6, false)};
inline constexpr HousekeepingQuantity plus_24 = {&ModuleHousekeeping::plus_24, &supply::plus_24,
                                                 volts(7, false)};
inline constexpr HousekeepingQuantity signed_3_3 = {&ModuleHousekeeping::plus_3_3,
                                                    &supply::plus_3_3, volts(7, true)};
inline constexpr HousekeepingQuantity signed_5 = {&ModuleHousekeeping::plus_5, &supply::plus_5,
                                                  volts(7, true)};
inline constexpr HousekeepingQuantity signed_24 = {&ModuleHousekeeping::plus_24, &supply::plus_24,
                                                   volts(8, true)};
inline constexpr HousekeepingQuantity minus_22 = {&ModuleHousekeeping::minus_22, &supply::minus_22,
                                                  volts(8, true)};
inline constexpr HousekeepingQuantity plus_18 = {&ModuleHousekeeping::plus_18, &supply::plus_18,
                                                 volts(8, true)};
inline constexpr HousekeepingQuantity minus_18 = {&ModuleHousekeeping::minus_18, &supply::minus_18,
                                                  volts(8, true)};
inline constexpr HousekeepingQuantity vc = {&ModuleHousekeeping::vc, &supply::vc, volts(7, true)};
inline constexpr HousekeepingQuantity analog_ground = {&ModuleHousekeeping::analog_ground,
                                                       &supply::analog_ground, volts(7, true)};
inline constexpr HousekeepingQuantity cpu = {&ModuleHousekeeping::cpu, nullptr};
inline constexpr HousekeepingQuantity psu = {&ModuleHousekeeping::psu, nullptr};

} // namespace housekeeping

struct LabelledQuantity {
    const char* label;
    HousekeepingQuantity quantity;
};

/// Labels with their values behind them, 12 columns from the end of a label to the next one.
class HousekeepingFields
{
public:
    /// Prints a row of labels at the cursor. The row is referred to from then on.
    void place(std::span<const LabelledQuantity> row);
    /// Shows the values of all rows; `degrees` stands behind a temperature.
    void show(const ModuleHousekeeping& record, const char* degrees = DEGREES_C) const;

private:
    struct Shown {
        Field field;
        const HousekeepingQuantity* quantity;
    };

    std::vector<Shown> fields_;
};
