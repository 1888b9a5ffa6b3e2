/// What a report tells of an HV-supply's output at each target.
#pragma once

#include "companion/report/reading/facts.h"

#include <string>
#include <vector>

namespace companion
{

struct OutputPoint {
    double target; ///< V, with the sign of its polarity
    double volts, nanoamperes;
    const Fact* error;         ///< of the voltage, in V
    const Fact* current_error; ///< null = none
};

/// Of a unit, from the lowest target to the highest; points without a number are left out.
[[nodiscard]] std::vector<OutputPoint> output_points(const Report& report, const std::string& unit);

} // namespace companion
