/// The displays whose cost is measured: the program's own, the same written with ncurses, and the
/// loop without any display. All of them but the full screen call the library once a cycle; the
/// displays run until Esc.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

namespace bench
{

/// The five values of the housekeeping display.
struct Housekeeping {
    double voltage_24, voltage_5, voltage_33, temperature_cpu, temperature_psu;
};

/// Calls the library; false when it fails.
[[nodiscard]] bool read_values(Housekeeping& values);

/// A display that fills a screen.
inline constexpr std::size_t wide_fields = 130;
inline constexpr int wide_fields_in_row = 10;
struct Wide {
    std::array<double, wide_fields> values;
};

/// Calls the library once and makes all values of its answer.
[[nodiscard]] bool read_values(Wide& wide);

/// Nominal values and limits, for the colours.
inline constexpr double supply_tolerance_percent = 2.0;
[[nodiscard]] constexpr double wide_nominal(std::size_t field)
{
    return 24.0 + static_cast<double>(field);
}

using Display = void (*)();

void show_housekeeping();
void show_wide();
void show_full_screen();
void show_housekeeping_with_ncurses();
void show_wide_with_ncurses();

/// The library calls alone.
using BareLoop = void (*)(std::uint32_t calls);

void read_housekeeping(std::uint32_t calls);
void read_wide(std::uint32_t calls);
/// The library calls of so many cycles in which every group of values is ready.
void read_full_screen(std::uint32_t cycles);

} // namespace bench
