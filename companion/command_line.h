/// The companion's command line.
#pragma once

#include "companion/output.h"

#include <string>
#include <vector>

namespace companion
{

/// Runs a command line, without the program's name. Returns the exit status.
[[nodiscard]] int run(std::vector<std::string> arguments, const Surroundings& outside);

} // namespace companion
