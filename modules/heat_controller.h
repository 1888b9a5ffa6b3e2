/// The commands of the heat-controller in slot 0.
#pragma once

#include "frame/field.h"
#include "frame/switches.h"
#include "frame/terminal/console.h"
#include "instrument/module_readings.h"
#include "instrument/words.h"

// Targets and limits. A negative target means that this kind of control is off.
void show_target_temperature(const Given&);
void set_target_temperature(const Given&);
void show_target_output_voltage_of_heater(const Given&);
void show_target_heater_power(const Given&);
void show_heater_voltage_limit(const Given&);
void set_heater_voltage_limit(const Given&);
void show_heater_current_limit(const Given&);
void set_heater_current_limit(const Given&);
void show_heater_power_limit(const Given&);
void set_heater_power_limit(const Given&);

/// What the hardware allows.
void show_heater_hardware_limits(const Given&);

// As live displays.
void show_heater_monitoring(const Given&);
void show_heater_interlock_state(const Given&);

/// Where a monitoring record is shown.
struct MonitoringFields {
    Field output_voltage, heater_voltage, current, temperature;
    Field output_power, wire_power, heater_power, resistance;
    int power_width = 7;             ///< of the powers of wires and heater, without their "W"
    const char* degrees = DEGREES_C; ///< unit of the temperature

    void show(const HeaterMonitoring& values) const;
};
