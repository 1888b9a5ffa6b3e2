#include "companion/log/numbers.h"

#include <array>
#include <charconv>
#include <cstdint>
#include <iterator>

namespace companion
{

bool parse_number(std::string_view text, double& value)
{
    const char* const end = text.data() + text.size();
    const auto read = std::from_chars(text.data(), end, value);
    return read.ec == std::errc{} && read.ptr == end;
}

std::string significant(double value, int digits, bool sign)
{
    std::array<char, 40> text{};
    const auto result = std::to_chars(text.data(), text.data() + text.size(), value,
                                      std::chars_format::general, digits);
    return (sign && !(value < 0) ? "+" : "") + std::string{text.data(), result.ptr};
}

} // namespace companion
