#include "companion/report/output_points.h"

#include <algorithm>
#include <cmath>

namespace companion
{

std::vector<OutputPoint> output_points(const Report& report, const std::string& unit)
{
    std::vector<OutputPoint> points;
    constexpr std::string_view ending = "/error";
    constexpr double nano = 1e-3; // of picoamperes
    for (const Fact& fact : report.facts) {
        if (!fact.key.starts_with(unit + "/output/") || !fact.key.ends_with(ending))
            continue;
        const std::string target = fact.key.substr(0, fact.key.size() - ending.size());
        const bool negative = fact.key.find("/negative/") != std::string::npos;
        points.push_back({.target = report.value_of(target + "/set") * (negative ? -1 : 1),
                          .volts = report.value_of(target + "/measured"),
                          .nanoamperes = report.value_of(target + "/current") * nano,
                          .error = &fact,
                          .current_error = report.find(target + "/current-error")});
    }
    std::erase_if(points, [](const OutputPoint& point) {
        return !std::isfinite(point.target) || !std::isfinite(point.volts) ||
               !std::isfinite(point.nanoamperes) || !point.error->value;
    });
    std::sort(points.begin(), points.end(),
              [](const OutputPoint& a, const OutputPoint& b) { return a.target < b.target; });
    return points;
}

} // namespace companion
