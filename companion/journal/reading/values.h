/// The values that stand in a journal.
#pragma once

#include "devlib/functions.h"

#include <nlohmann/json.hpp>
#include <optional>
#include <string>

namespace journal
{

/// A text of the journal as the bytes that it stands for; nothing when the value is none.
[[nodiscard]] std::optional<std::string> text_of(const nlohmann::json& value);

/// A real number, or what one of the texts for no number says.
[[nodiscard]] std::optional<double> real_of(const nlohmann::json& value);

/// Pairs of hexadecimal digits as bytes.
[[nodiscard]] std::optional<std::string> bytes_of(const nlohmann::json& value);

/// Whether it is what a parameter can have: kind, range, number of elements.
[[nodiscard]] bool is_value(const nlohmann::json& value, const devlib::Parameter& parameter);

/// In bytes, what a line of a table shows of a value.
inline constexpr std::size_t usual_length = 64;

/// Fit for a line of a terminal; what is longer is cut.
[[nodiscard]] std::string value_text(const nlohmann::json& value,
                                     std::size_t longest = usual_length);

/// "state=5, ready=1", in the order of the interface.
[[nodiscard]] std::string values_text(const devlib::FunctionInfo& function,
                                      const nlohmann::json& values,
                                      std::size_t longest = usual_length);

/// "GetModuleState(address=1)"
[[nodiscard]] std::string call_text(const devlib::FunctionInfo& function,
                                    const nlohmann::json& inputs,
                                    std::size_t longest = usual_length);

} // namespace journal
