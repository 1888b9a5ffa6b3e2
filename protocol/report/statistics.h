/// A series of measurements and what is told of it.
#pragma once

#include "instrument/words.h"
#include "protocol/report/report.h"

#include <cstddef>
#include <string>
#include <vector>

class Statistics
{
public:
    void add(double value) { values_.push_back(value); }

    [[nodiscard]] std::size_t count() const { return values_.size(); }
    [[nodiscard]] double last() const { return values_.empty() ? 0.0 : values_.back(); }
    // All of them are 0 before the first value, and NaN as soon as one value is.
    [[nodiscard]] double mean() const;
    /// Of the sample (n - 1); 0 for a single value, NaN with an infinite one.
    [[nodiscard]] double standard_deviation() const;
    [[nodiscard]] double smallest() const;
    [[nodiscard]] double largest() const;

private:
    std::vector<double> values_;
};

/// How a quantity is told: the value in one unit, the deviations from it in a finer one.
struct QuantityFormat {
    int decimals;
    const char* unit;
    double per_unit = 1.0;      ///< what the measured number is multiplied with
    const char* deviation_unit; ///< in the file
    double deviation_per_unit = 1.0;
    bool with_sign = false;
    const char* file_unit = nullptr; ///< where it differs from the one on the console

    /// Decimals of a deviation: as many as it takes to show what the value shows, and no less than
    /// `at_least`.
    [[nodiscard]] int deviation_decimals(int at_least) const;
};

/// "3.300V"; never "-0.000V".
[[nodiscard]] std::string value_text(const QuantityFormat& quantity, double value);

/// Mean, standard deviation, and the largest deviations from the mean in both directions, for the
/// file: "3.300V +- 1.20mV (+2.0mV, -2.1mV)" with the sign of its encoding. A series with a value
/// that is no finite number has deviations that are none: "nan" or "inf".
[[nodiscard]] std::string statistics_text(const QuantityFormat& quantity,
                                          const Statistics& statistics);

/// Smallest and largest value and what lies between them, for the file: "80.250..81.500 (1.250)"
/// with units.
[[nodiscard]] std::string range_text(const QuantityFormat& quantity, const Statistics& statistics);

namespace quantity
{
inline constexpr QuantityFormat volts = {3, "V", 1.0, "mV", 1e3};
inline constexpr QuantityFormat amperes = {3, "A", 1.0, "mA", 1e3};
inline constexpr QuantityFormat watts = {3, "W", 1.0, "mW", 1e3};
inline constexpr QuantityFormat picoamperes = {0, "pA", 1e12, "pA", 1e12, true};
inline constexpr QuantityFormat degrees = {.decimals = 1,
                                           .unit = DEGREES_C,
                                           .deviation_unit = DEGREES_C_IN_FILE,
                                           .file_unit = DEGREES_C_IN_FILE};
inline constexpr QuantityFormat fine_degrees = {.decimals = 3,
                                                .unit = DEGREES_C,
                                                .deviation_unit = DEGREES_C_IN_FILE,
                                                .file_unit = DEGREES_C_IN_FILE};
inline constexpr QuantityFormat rpm = {0, "rpm", 1.0, "rpm", 1.0};
inline constexpr QuantityFormat percent = {1, "%", 1.0, "%", 1.0};
inline constexpr QuantityFormat percent_of_one = {1, "%", 100.0, "%", 100.0}; ///< of a fraction
inline constexpr QuantityFormat megahertz = {2, "MHz", 1e-6, "kHz", 1e-3};
} // namespace quantity
