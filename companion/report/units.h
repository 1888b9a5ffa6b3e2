/// The units in which reports tell quantities and limits files set bounds.
#pragma once

#include <optional>
#include <string_view>

namespace companion
{

/// "mV", "degC", "%"
[[nodiscard]] bool is_unit(std::string_view text);

/// How many of `to` a `from` is: 1000 from "V" to "mV"; nothing when they measure different things.
[[nodiscard]] std::optional<double> unit_ratio(std::string_view from, std::string_view to);

} // namespace companion
