/// Reading the module presence for a command on all modules.
#pragma once

#include "instrument/presence.h"

/// Reads it with its progress line and one repeat of a failed call; false when that failed, too,
/// which has been reported.
[[nodiscard]] bool read_presence(ModulePresence& presence);

/// The same; false, with a message, also when the flags are not valid.
[[nodiscard]] bool read_valid_presence(ModulePresence& presence);
