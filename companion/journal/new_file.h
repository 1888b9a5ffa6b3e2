/// Journals take nobody's place.
#pragma once

#include "companion/journal/host.h"

namespace journal
{

/// Creates a file of this name or, where there is one already, with the process's number before its
/// last dot; `name` is what it got. False, with the reason in `problem()`, when it cannot be
/// created.
[[nodiscard]] bool open_new(host::OutputFile& file, std::string& name, std::uint64_t process);

} // namespace journal
