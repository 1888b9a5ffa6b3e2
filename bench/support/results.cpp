#include "bench/support/results.h"

#include <algorithm>
#include <cstddef>
#include <cstdio>

namespace bench
{

namespace
{

struct Result {
    std::string name;
    double measured;
    Goal goal;
};

std::vector<Result> results;

bool is_met(const Result& result)
{
    return result.goal.kind == Goal::Kind::at_least ? result.measured >= result.goal.limit
                                                    : result.measured <= result.goal.limit;
}

} // namespace

void note_result(const std::string& name, double measured, Goal goal)
{
    const auto noted = std::find_if(results.begin(), results.end(),
                                    [&](const Result& result) { return result.name == name; });
    if (noted != results.end())
        *noted = {name, measured, goal};
    else
        results.push_back({name, measured, goal});
}

void print_results()
{
    std::size_t width = 4;
    for (const Result& result : results)
        width = std::max(width, result.name.size());
    const int columns = static_cast<int>(width);
    std::printf("\n%-*s  %9s  %-12s\n", columns, "name", "measured", "goal");
    for (const Result& result : results) {
        std::printf("%-*s  %9.4g", columns, result.name.c_str(), result.measured);
        if (result.goal.kind != Goal::Kind::none)
            std::printf("  %s %-8.4g  %s",
                        result.goal.kind == Goal::Kind::at_least ? ">=" : "<=", result.goal.limit,
                        is_met(result) ? "met" : "missed");
        std::printf("\n");
    }
}

double median(std::vector<double> values)
{
    if (values.empty())
        return 0.0;
    const auto middle = values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2);
    std::nth_element(values.begin(), middle, values.end());
    return *middle;
}

} // namespace bench
