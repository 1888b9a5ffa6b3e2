/// Pictures of a report as SVG, to stand within a page: colours are classes of its style sheet.
#pragma once

#include "companion/report/judge.h"

#include <string>

namespace companion
{

/// Where in its band a value lies, with its largest deviations.
[[nodiscard]] std::string band_picture(const Judgement& judgement);

/// The errors of a supply's output voltage over the target, within their band, for both polarities;
/// empty when there are none.
[[nodiscard]] std::string output_error_picture(const Judged& judged, const std::string& unit);

/// The current over the voltage that were measured; empty when there are none.
[[nodiscard]] std::string output_current_picture(const Judged& judged, const std::string& unit);

/// What the heater took in its runs, of what its hardware allows; empty when there were none.
[[nodiscard]] std::string heater_picture(const Judged& judged);

/// A series of values from the oldest to the newest, with a band or without. For trends.
[[nodiscard]] std::string trend_picture(const std::vector<double>& values,
                                        const std::optional<Band>& band);

} // namespace companion
