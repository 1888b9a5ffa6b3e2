/// The table that stands at the end of a run.
#pragma once

#include <string>
#include <vector>

namespace bench
{

struct Goal {
    enum class Kind { none, at_least, at_most };
    Kind kind = Kind::none;
    double limit = 0.0;
};

[[nodiscard]] constexpr Goal at_least(double limit)
{
    return {Goal::Kind::at_least, limit};
}

[[nodiscard]] constexpr Goal at_most(double limit)
{
    return {Goal::Kind::at_most, limit};
}

inline constexpr Goal no_goal{};

/// Notes a result; a name that was noted before gets the new value.
void note_result(const std::string& name, double measured, Goal goal);

/// Name, measured value, goal, met or missed: a line each.
void print_results();

/// The middle one of some measurements.
[[nodiscard]] double median(std::vector<double> values);

} // namespace bench
