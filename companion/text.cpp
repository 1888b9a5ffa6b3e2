#include "companion/text.h"

#include <array>
#include <charconv>
#include <cmath>

namespace companion
{

std::string utf8(std::string_view latin1)
{
    std::string text;
    text.reserve(latin1.size());
    for (const char c : latin1) {
        const auto byte = static_cast<unsigned char>(c);
        if (byte < ' ' || (byte >= 0x7F && byte < 0xA0)) {
            text += '?';
        } else if (byte < 0x80) {
            text += c;
        } else {
            text += static_cast<char>(0xC0 | byte >> 6);
            text += static_cast<char>(0x80 | (byte & 0x3F));
        }
    }
    return text;
}

namespace
{

/// How many bytes the character at the begin takes; 0 when it is no sound one.
std::size_t character_length(std::string_view text)
{
    const auto byte = [&](std::size_t i) {
        return i < text.size() ? static_cast<unsigned char>(text[i]) : 0U;
    };
    const unsigned first = byte(0);
    if (first < 0x80)
        return first >= ' ' && first != 0x7F ? 1 : 0;
    const std::size_t length = first >= 0xF0 ? 4 : first >= 0xE0 ? 3 : 2;
    if (first < 0xC2 || first > 0xF4)
        return 0;
    for (std::size_t i = 1; i < length; ++i) {
        if ((byte(i) & 0xC0) != 0x80)
            return 0;
    }
    const unsigned second = byte(1);
    const bool is_odd = (first == 0xE0 && second < 0xA0) || (first == 0xED && second >= 0xA0) ||
                        (first == 0xF0 && second < 0x90) || (first == 0xF4 && second >= 0x90) ||
                        (first == 0xEF && second == 0xBF && byte(2) >= 0xBE) ||
                        (first == 0xC2 && second < 0xA0);
    return is_odd ? 0 : length;
}

} // namespace

std::string valid_utf8(std::string_view text)
{
    std::string valid;
    valid.reserve(text.size());
    while (!text.empty()) {
        const std::size_t length = character_length(text);
        if (length == 0)
            valid += '?';
        else
            valid += text.substr(0, length);
        text.remove_prefix(length == 0 ? 1 : length);
    }
    return valid;
}

std::string escaped_markup(std::string_view text)
{
    std::string escaped;
    for (const char c : valid_utf8(text)) {
        switch (c) {
        case '&':
            escaped += "&amp;";
            break;
        case '<':
            escaped += "&lt;";
            break;
        case '>':
            escaped += "&gt;";
            break;
        case '"':
            escaped += "&quot;";
            break;
        case '\'':
            escaped += "&#39;";
            break;
        default:
            escaped += c;
        }
    }
    return escaped;
}

std::string number_text(double value)
{
    if (!std::isfinite(value))
        return {};
    std::array<char, 32> digits{};
    const auto result = std::to_chars(digits.data(), digits.data() + digits.size(), value);
    return {digits.data(), result.ptr};
}

} // namespace companion
