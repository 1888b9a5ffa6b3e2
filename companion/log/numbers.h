/// Numbers as recordings have them, read and shown alike in every locale.
#pragma once

#include <string>
#include <string_view>

namespace companion
{

/// The number that the whole text is, nan and inf among them; rounded correctly. False when it is
/// none.
[[nodiscard]] bool parse_number(std::string_view text, double& value);

/// With so many significant digits, as "%.*g" has it, with a '+' in front of what is not negative
/// when asked for.
[[nodiscard]] std::string significant(double value, int digits, bool sign = false);

} // namespace companion
