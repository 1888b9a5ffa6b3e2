#include "companion/text.h"

#include "companion/utf8.h"

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

/// How many bytes the character at the beginning takes; 0 when it is no sound one, or one that
/// means nothing in a text: a control character or a noncharacter.
std::size_t printable_length(std::string_view text)
{
    const std::size_t length = character_length(text);
    const std::string_view bytes = text.substr(0, length);
    const bool is_control =
        bytes < " " || bytes == "\x7F" || (bytes >= "\xC2\x80" && bytes < "\xC2\xA0");
    return is_control || bytes == "\xEF\xBF\xBE" || bytes == "\xEF\xBF\xBF" ? 0 : length;
}

} // namespace

std::string valid_utf8(std::string_view text)
{
    std::string valid;
    valid.reserve(text.size());
    while (!text.empty()) {
        const std::size_t length = printable_length(text);
        if (length == 0)
            valid += '?';
        else
            valid += text.substr(0, length);
        text.remove_prefix(length == 0 ? 1 : length);
    }
    return valid;
}

std::string plain_signs(std::string_view given)
{
    constexpr struct {
        std::string_view sign, plain;
    } signs[] = {{"\u00B1", "+-"}, {"\u00B0", "deg"}, {"\u03A9", "Ohm"}, {"\u00B5", "u"}};
    std::string text{given};
    for (const auto& [sign, plain] : signs) {
        for (std::size_t at = text.find(sign); at != std::string::npos; at = text.find(sign))
            text.replace(at, sign.size(), plain);
    }
    return text;
}

std::string device_text(std::string_view bytes)
{
    return is_utf8(bytes) ? valid_utf8(bytes) : utf8(bytes);
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

bool take(std::string_view& text, std::string_view expected)
{
    if (!text.starts_with(expected))
        return false;
    text.remove_prefix(expected.size());
    return true;
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
