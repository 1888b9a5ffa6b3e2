/// The commands `kov tap`, `kov replay` and `kov journal`. Each returns the exit status.
#pragma once

#include "companion/output.h"

#include <string>
#include <vector>

namespace companion
{

struct TapRequest {
    std::string file;                 ///< empty = a name of port and time
    std::vector<std::string> program; ///< and its arguments
};
/// Runs a program and writes a journal of its library calls.
[[nodiscard]] int tap_program(const TapRequest& request, const Surroundings& outside);

struct ReplayRequest {
    std::string file;
    bool in_real_time = false;
    std::vector<std::string> program; ///< and its arguments
};
/// Runs a program whose library calls a journal answers.
[[nodiscard]] int replay_journal(const ReplayRequest& request, const Surroundings& outside);

struct ShowRequest {
    std::string file;
    bool only_failures = false;
};
[[nodiscard]] int show_journal(const ShowRequest& request, const Surroundings& outside);

[[nodiscard]] int count_journal(const std::string& file, const Surroundings& outside);

} // namespace companion
