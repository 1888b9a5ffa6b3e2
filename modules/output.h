/// How the live displays show the output of an HV-supply, and the keys that they have for it.
#pragma once

#include "frame/text/field.h"
#include "instrument/supply_output.h"

/// Changes the ranges as the keys P, N, H and L (in upper case) ask for; false for another key.
[[nodiscard]] bool change_ranges(int key, MeasurementRanges& ranges);

/// Two keys in bright white and what they are for.
void print_key_pair(const char* first, const char* second, const char* meaning);

/// "P/N for positive/negative voltage, H/L for high/low current range:", the letters in bright
/// white; stands behind the title of a display that has these keys.
void print_range_keys();

// ---- Values in their fields ----

/// Columns of a value that stands alone, and of one with its range.
inline constexpr int output_columns = 12;
inline constexpr int measured_columns = 24;

/// With its polarity; nothing when none was measured.
void show_measured_voltage(const Field& field, const OutputValues& output);
/// With its range; nothing when none was measured.
void show_measured_current(const Field& field, const OutputValues& output, int decimals);
/// "** off ** " when it is negative.
void show_target(const Field& field, double volts);

/// All of an output: what it is set to, and what comes of it.
struct OutputData {
    double target = 0; ///< V, negative = off
    PwmParameters pwm;
    OutputValues output;
};

/// Where a display shows it, 10000 V or more of either sign as an overflow. What has no field is
/// not shown.
struct OutputDataFields {
    Field period, width, phase_measured, phase_set;
    Field voltage, current;
    Field measured, set, target, active;

    void show(const OutputData& data) const;
};
