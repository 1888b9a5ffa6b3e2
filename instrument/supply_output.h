/// The output of an HV-supply: its measurement ranges, PWM parameters and measured values.
#pragma once

#include "frame/failure.h"

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

// One call each.

[[nodiscard]] Failure attempt_ranges(unsigned address, MeasurementRanges& ranges);
[[nodiscard]] Failure attempt_to_set_ranges(unsigned address, MeasurementRanges ranges);
[[nodiscard]] Failure attempt_target_voltage(unsigned address, double& volts);
[[nodiscard]] Failure attempt_pwm_parameters(unsigned address, PwmParameters& parameters);

/// Which values a call of attempt_output() brought, and at which ticks.
struct NewOutput {
    bool voltage = false, current = false;
    std::int64_t voltage_ms = 0, current_ms = 0;
};

/// Fetches what the data-ready flags announce; a value that is not valid is left aside.
[[nodiscard]] Failure attempt_output(unsigned address, std::uint8_t data_ready,
                                     MeasurementRanges ranges, OutputValues& output,
                                     NewOutput& news);
