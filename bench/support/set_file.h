/// A configuration file to measure with.
#pragma once

#include <string>

namespace bench
{

/// A file of the sets 1 to `count`.
[[nodiscard]] std::string file_of_sets(unsigned count);

} // namespace bench
