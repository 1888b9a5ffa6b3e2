/// The commands of `kov report`. Each returns the exit status.
#pragma once

#include "companion/output.h"

#include <string>
#include <vector>

namespace companion
{

struct CheckRequest {
    std::vector<std::string> reports;
    std::string limits; ///< a file; empty = the default ones
    std::string json, junit, html;
    bool all_facts = false;
    bool accept_simulated = false;
};
[[nodiscard]] int check_reports(const CheckRequest& request, const Surroundings& outside);

struct DiffRequest {
    std::string before, now; ///< files
    std::string limits;
};
[[nodiscard]] int compare_reports(const DiffRequest& request, const Surroundings& outside);

struct TrendRequest {
    std::vector<std::string> sources; ///< reports, and folders of them
    std::string key;                  ///< a pattern; empty = all that have a band
    std::string limits;
    std::string html, sql;
};
[[nodiscard]] int follow_reports(const TrendRequest& request, const Surroundings& outside);

/// Prints the limits in force.
[[nodiscard]] int print_limits(const std::string& file, const Surroundings& outside);

} // namespace companion
