/// Where everything stands on the full screen: its frame of labels, and the places of the values.
#pragma once

#include "frame/live_display.h"
#include "frame/terminal/console.h"
#include "frame/text/quantity_fields.h"
#include "instrument/quantities.h"
#include "interactive/screen_readings.h"

#include <array>

inline constexpr int screen_columns = 132; ///< needed at least
inline constexpr int screen_rows = 60;     ///< needed at least

/// Row 3: the port and how the reading goes.
struct PortLine {
    RateFields rates;
    Field errors;
    Place key, spinner;
};

/// A group's mean measurement duration and its error counters.
struct GroupPlaces {
    Field duration;
    Place counters;
};

/// Fields of a module's housekeeping; nowhere what it does not have.
struct HousekeepingPlaces {
    Field plus_24, plus_5, plus_3_3, cpu, psu;
    Field minus_22, plus_18, minus_18, vc, analog_ground;
    GroupPlaces group;
};

struct MonitoringPlaces {
    QuantityFields<Quantity<HeaterMonitoring>> values;
    GroupPlaces group;
};

/// One measured value with its group.
struct OutputPlaces {
    Field value;
    GroupPlaces group;
};

struct StateWordPlaces {
    Place device, voltage, temperature, fan, interlock;
};

struct ScreenLayout {
    PortLine port;
    HousekeepingPlaces controller;
    PerUnit<HousekeepingPlaces> modules; ///< nowhere when absent
    MonitoringPlaces monitoring;
    std::array<OutputPlaces, screen_slots> voltage, current;
    Place overall_state;
    std::array<Place, screen_slots> module_state;
    StateWordPlaces words;
};

/// The title in row 1.
void draw_title();

/// Row 3, and where its values go.
[[nodiscard]] PortLine draw_port_line();

/// All that stands below the identification, from the cursor's row on. A window that is wide enough
/// has the controller's housekeeping in one row.
void draw_frame(const ModulePresence& presence, int window_columns, ScreenLayout& layout);

/// How to leave the screen, in a row that nothing else needs; nothing in quiet mode.
void draw_quit_prompt();
