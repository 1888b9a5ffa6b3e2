/// Programs that are measured from outside.
#pragma once

#include <string>
#include <vector>

namespace bench
{

struct Command {
    std::string program;                ///< its path
    std::vector<std::string> arguments; ///< without the program's name
    const char* input_file = nullptr;   ///< null = our own standard input
    const char* output_file = nullptr;  ///< null = our own standard output
};

inline constexpr const char* nowhere = "/dev/null";

struct Spent {
    double seconds;           ///< from the program's start to its end
    double processor_seconds; ///< the user's and the system's
    double most_memory_kib;   ///< that was in use at a time
};

/// Runs a program. One that cannot be started or fails ends ours, unless `may_fail`.
[[nodiscard]] Spent run(const Command& command, bool may_fail = false);

} // namespace bench
