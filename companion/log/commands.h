/// The commands of `kov log`. Each returns the exit status: 0, 1 where the trailer tells errors (of
/// the statistics alone), 2 for a recording that is not whole, 3 for what is none.
#pragma once

#include "companion/output.h"

#include <string>
#include <vector>

namespace companion
{

/// Shows what the quantities of each recording have in common, and what its trailer tells.
[[nodiscard]] int show_statistics(const std::vector<std::string>& files,
                                  const Surroundings& outside);

/// Writes a recording as one table; `out` is a file, standard output when it is empty.
[[nodiscard]] int write_table(const std::string& file, const std::string& out,
                              const Surroundings& outside);

struct PlotRequest {
    std::vector<std::string> files; ///< recordings, or reports
    std::string out;                ///< x.html, x.svg or x.png; empty = the terminal
    std::string from, to;           ///< seconds since the start, or dates
    std::vector<std::string> only;  ///< names of quantities; empty = all
};
/// Draws recordings over their time, and what reports tell of outputs and heater.
[[nodiscard]] int plot(const PlotRequest& asked, const Surroundings& outside);

} // namespace companion
