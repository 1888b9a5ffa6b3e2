/// Numbers as recordings have them, read and shown alike in every locale.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace companion
{

/// The number that the whole text is, nan and inf among them; rounded correctly. False when it is
/// none.
[[nodiscard]] bool parse_number(std::string_view text, double& value);

/// Reads a number without an exponent and with at most 15 digits, as nearly all are, off the begin
/// of a text, and tells how long it is; 0 when there is none. Both numbers of the division that it
/// takes are exact, so its result is the number nearest to the text.
[[nodiscard]] std::size_t take_plain_number(std::string_view text, double& value);

/// With so many significant digits, as "%.*g" has it, with a '+' in front of what is not negative
/// when asked for.
[[nodiscard]] std::string significant(double value, int digits, bool sign = false);

} // namespace companion
