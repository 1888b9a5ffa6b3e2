/// Numbers as recordings have them, read and shown alike in every locale.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <iterator>
#include <string>
#include <string_view>

namespace companion
{

/// The number that the whole text is, nan and inf among them; rounded correctly. False when it is
/// none.
[[nodiscard]] bool parse_number(std::string_view text, double& value);

namespace plain_number
{
inline constexpr std::array powers_of_ten = {1e0, 1e1, 1e2,  1e3,  1e4,  1e5,  1e6,  1e7,
                                             1e8, 1e9, 1e10, 1e11, 1e12, 1e13, 1e14, 1e15};

inline constexpr std::ptrdiff_t most_digits = std::ssize(powers_of_ten) - 1;
} // namespace plain_number

/// Reads a number without an exponent and with at most 15 digits, as nearly all are, off the begin
/// of a text, and tells how long it is; 0 when there is none. Both numbers of the division that it
/// takes are exact, so its result is the number nearest to the text.
[[nodiscard]] inline std::size_t take_plain_number(std::string_view text, double& value)
{
    const char* at = text.data();
    const char* const end = at + text.size();
    const bool is_negative = at != end && *at == '-';
    at += is_negative ? 1 : 0;
    std::uint64_t digits = 0; // of too many something else
    const char* const first = at;
    const auto take_digits = [&] {
        for (; at != end && *at >= '0' && *at <= '9'; ++at)
            digits = digits * 10 + static_cast<std::uint64_t>(*at - '0');
    };
    take_digits();
    std::ptrdiff_t count = at - first, decimals = 0;
    if (at != end && *at == '.') {
        const char* const behind_point = ++at;
        take_digits();
        decimals = at - behind_point;
        count += decimals;
    }
    if (count == 0 || count > plain_number::most_digits)
        return 0;
    const double magnitude = static_cast<double>(digits) /
                             plain_number::powers_of_ten[static_cast<std::size_t>(decimals)];
    value = is_negative ? -magnitude : magnitude;
    return static_cast<std::size_t>(at - text.data());
}

/// With so many significant digits, as "%.*g" has it, with a '+' in front of what is not negative
/// when asked for.
[[nodiscard]] std::string significant(double value, int digits, bool sign = false);

} // namespace companion
