#include "companion/log/numbers.h"

#include <array>
#include <charconv>
#include <cstdint>
#include <iterator>

namespace companion
{

namespace
{

constexpr std::array powers_of_ten = {1e0, 1e1, 1e2,  1e3,  1e4,  1e5,  1e6,  1e7,
                                      1e8, 1e9, 1e10, 1e11, 1e12, 1e13, 1e14, 1e15};

constexpr std::ptrdiff_t most_digits = std::ssize(powers_of_ten) - 1;

} // namespace

std::size_t take_plain_number(std::string_view text, double& value)
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
    if (count == 0 || count > most_digits)
        return 0;
    const double magnitude =
        static_cast<double>(digits) / powers_of_ten[static_cast<std::size_t>(decimals)];
    value = is_negative ? -magnitude : magnitude;
    return static_cast<std::size_t>(at - text.data());
}

bool parse_number(std::string_view text, double& value)
{
    if (!text.empty() && take_plain_number(text, value) == text.size())
        return true;
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
