/// `kov library`: which device library the utility would load.
#pragma once

#include "companion/output.h"

namespace companion
{

/// Prints place, path, version, and the functions that are missing. Returns the exit status: 1 when
/// some are, 3 when there is no library.
[[nodiscard]] int show_library(const Surroundings& outside);

} // namespace companion
