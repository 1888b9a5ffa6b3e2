#include "frame/text/numbers.h"

#include <cmath>
#include <cstddef>
#include <cstdio>
#include <limits>

namespace
{

/// What stands at the start of a text: blanks, a sign, digits.
struct Integer {
    bool negative = false;
    std::uint64_t magnitude = 0; ///< saturates far above 32 bits
    std::uint16_t low_bits = 0;  ///< of the magnitude, whatever its size
    std::size_t digits = 0;
    std::size_t length = 0; ///< characters taken, 0 when there is no digit
};

bool is_blank(char c)
{
    return c == ' ' || (c >= '\t' && c <= '\r');
}

int digit_value(char c)
{
    if (c >= '0' && c <= '9')
        return c - '0';
    if (c >= 'a' && c <= 'f')
        return c - 'a' + 10;
    return c >= 'A' && c <= 'F' ? c - 'A' + 10 : 99;
}

Integer scan_integer(std::string_view text, int radix)
{
    constexpr std::uint64_t enough = std::uint64_t{1} << 40;
    Integer result;
    std::size_t at = 0;
    while (at < text.size() && is_blank(text[at]))
        ++at;
    if (at < text.size() && (text[at] == '+' || text[at] == '-'))
        result.negative = text[at++] == '-';
    const auto is_digit = [text, radix](std::size_t i) {
        return i < text.size() && digit_value(text[i]) < radix;
    };
    if (radix == 16 && at + 1 < text.size() && text[at] == '0' &&
        (text[at + 1] == 'x' || text[at + 1] == 'X') && is_digit(at + 2))
        at += 2;
    for (; is_digit(at); ++at, ++result.digits) {
        const auto base = static_cast<unsigned>(radix);
        const auto digit = static_cast<unsigned>(digit_value(text[at]));
        result.low_bits = static_cast<std::uint16_t>(result.low_bits * base + digit);
        if (result.magnitude < enough)
            result.magnitude = result.magnitude * base + digit;
    }
    result.length = result.digits > 0 ? at : 0;
    return result;
}

} // namespace

bool read_unsigned(std::string_view text, std::uint32_t& value)
{
    if (text.empty())
        return false;
    // The last character tells the radix; it is not part of the digits then.
    const char last = text.back();
    const int radix = last == 'h' ? 16 : last == 'b' ? 2 : 10;
    const std::size_t expected_length = radix == 10 ? text.size() : text.size() - 1;
    const Integer integer = scan_integer(text, radix);
    if (integer.digits == 0 || integer.length != expected_length)
        return false;
    constexpr auto largest = std::numeric_limits<std::uint32_t>::max();
    if (integer.magnitude > largest)
        value = largest;
    else
        value = static_cast<std::uint32_t>(integer.negative ? 0 - integer.magnitude
                                                            : integer.magnitude);
    return true;
}

bool read_real(const char* text, double& value)
{
    double number = 0.0;
    if (std::sscanf(text, "%lf", &number) != 1 || !std::isfinite(number))
        return false;
    value = number;
    return true;
}

bool read_port_number(std::string_view text, std::uint16_t& value)
{
    constexpr int decimal = 10;
    const Integer integer = scan_integer(text, decimal);
    if (integer.digits == 0)
        return false;
    value = static_cast<std::uint16_t>(integer.negative ? 0 - integer.low_bits : integer.low_bits);
    return true;
}
