/// The output of an HV-supply: its measurement ranges, PWM parameters and measured values, and how
/// the live displays show them.
#pragma once

#include "frame/terminal/console.h"

#include <cstdint>

/// What the measurement is set for.
struct MeasurementRanges {
    std::uint8_t negative = 0; ///< a negative output voltage, else a positive one
    std::uint8_t high = 0;     ///< the high current range, else the low one

    [[nodiscard]] const char* polarity() const { return negative != 0 ? "negative" : "positive"; }
    [[nodiscard]] const char* current_range() const { return high != 0 ? "high" : "low"; }
};

struct PwmParameters {
    double period = 0, width = 0, phase_measured = 0, phase_set = 0; ///< s
    double voltage_set = 0, voltage_measured = 0;                    ///< V
    std::uint8_t active = 0;
    std::uint8_t data_ready = 0; ///< bits: ready_bit
};

/// The latest measured values, each with the range in which it was measured.
struct OutputValues {
    bool has_voltage = false, has_current = false;
    double voltage = 0; ///< V
    double current = 0; ///< A
    MeasurementRanges voltage_ranges, current_ranges;
};

// One call each. Null, or the name of the function that failed.

[[nodiscard]] const char* attempt_ranges(unsigned address, MeasurementRanges& ranges);
[[nodiscard]] const char* attempt_to_set_ranges(unsigned address, MeasurementRanges ranges);
[[nodiscard]] const char* attempt_target_voltage(unsigned address, double& volts);
[[nodiscard]] const char* attempt_pwm_parameters(unsigned address, PwmParameters& parameters);

/// Which values a call of attempt_output() brought.
struct NewOutput {
    bool voltage = false, current = false;
};

/// Fetches what the data-ready flags announce; a value that is not valid is left aside.
[[nodiscard]] const char* attempt_output(unsigned address, std::uint8_t data_ready,
                                         MeasurementRanges ranges, OutputValues& output,
                                         NewOutput& news);

/// Changes the ranges as the keys P, N, H and L (in upper case) ask for; false for another key.
[[nodiscard]] bool change_ranges(int key, MeasurementRanges& ranges);

/// Two keys in bright white and what they are for.
void print_key_pair(const char* first, const char* second, const char* meaning);

/// "P/N for positive/negative voltage, H/L for high/low current range:", the letters in bright
/// white; stands behind the title of a display that has these keys.
void print_range_keys();

// ---- Values at their places ----

/// With its polarity; nothing when none was measured.
void show_measured_voltage(Place place, const OutputValues& output);
/// With its range; nothing when none was measured.
void show_measured_current(Place place, const OutputValues& output, int decimals);
/// "** off ** " when it is negative.
void show_target(Place place, double volts);

/// All of an output: what it is set to, and what comes of it.
struct OutputData {
    double target = 0; ///< V, negative = off
    PwmParameters pwm;
    OutputValues output;
};

/// Where a display shows it, 10000 V or more of either sign as an overflow; a value without a place
/// (row 0) is not shown.
struct OutputDataFields {
    Place period, width, phase_measured, phase_set;
    Place voltage, current;
    Place measured, set, target, active;

    void show(const OutputData& data) const;
};
