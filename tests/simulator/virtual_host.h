/// The computer that the simulator finds in a test: the clock of virtual_time, environment
/// variables and files that exist only here.
#pragma once

#include <cstdint>
#include <map>
#include <string>

namespace virtual_host
{

struct Computer {
    /// No state file and no scenario unless a test names one.
    std::map<std::string, std::string> environment{{"KOV_SIMULATOR_STATE", "none"}};
    std::map<std::string, std::string> files; ///< those of the disk can be read, too
    std::string own_lock;
    bool disk_full = false;
    bool has_home = true;
};

Computer& computer();

/// A fresh computer; the clock is left to virtual_time.
void reset();

} // namespace virtual_host
