/// Reports and limits from files. What cannot be read is told.
#pragma once

#include "companion/output.h"
#include "companion/report/limits.h"

namespace companion
{

/// The limits of a file; the default ones without a name.
[[nodiscard]] bool load_limits(const std::string& file, const Surroundings& outside,
                               Limits& limits);

[[nodiscard]] bool load_report(const std::string& name, const Surroundings& outside,
                               Report& report);

} // namespace companion
