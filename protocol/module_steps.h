/// The measurements on each unit with the device off, and what all steps on modules share. What
/// returns false has told the user, and the report, why.
#pragma once

#include "instrument/supply_output.h"
#include "protocol/product_report.h"
#include "protocol/report/report.h"
#include "protocol/sampling.h"

// Of a unit with the device off, as far as it is there and of the right kind.
[[nodiscard]] bool run_base_unit_steps(Report& report, const ProductData& data);
[[nodiscard]] bool run_idle_slot_steps(Report& report, const ProductData& data, unsigned slot);

/// "Activating the module..." or "Deactivating the module...", and what reads back; false when it
/// did not work.
[[nodiscard]] bool activate_and_check(Report& report, unsigned address, bool on);

/// Sets the measurement ranges of an HV-supply, lets them settle for ten seconds, and checks them.
[[nodiscard]] bool set_ranges_and_check(Report& report, unsigned address, MeasurementRanges ranges,
                                        SpaceKey space);

/// The heading of a unit's lines: "Slot #02:".
void report_slot_heading(Report& report, unsigned slot);

/// Measurements of the heat-controller, with the power at the heater or without; the temperature is
/// told as a range then.
[[nodiscard]] bool measure_heater(Report& report, const char* title, bool with_power);

/// What an HV-supply measures; each a source of one channel without a label.
[[nodiscard]] SampleSource voltage_source(unsigned address);
[[nodiscard]] SampleSource current_source(unsigned address);
