/// Pictures of recordings, and of reports.
#pragma once

#include "companion/log/picture.h"

namespace companion
{

struct PictureRequest {
    std::vector<std::string> files; ///< all recordings, or all reports
    std::vector<std::string> only;  ///< names of quantities; empty = all
    std::string from, to;           ///< seconds since the start, or dates; empty = all of it
    std::size_t columns = 1;        ///< of the picture
    std::size_t most_points = 0;    ///< of all curves together; 0 = as many as the columns need

    [[nodiscard]] bool wants(const std::string& name) const;
    /// False, with a message, when something is wanted that is not among the known names.
    [[nodiscard]] bool finds_all(const std::vector<std::string>& known,
                                 const Surroundings& outside) const;
};

/// Reads the recordings and thins them. Returns the exit status, with a message when it is not 0;
/// at 2 there is a drawing nevertheless.
[[nodiscard]] int load_recordings(const PictureRequest& request, const Surroundings& outside,
                                  Drawing& drawing);

/// The same of reports: outputs over their targets, and the heater's runs.
[[nodiscard]] int load_reports(const PictureRequest& request, const Surroundings& outside,
                               Drawing& drawing);

} // namespace companion
