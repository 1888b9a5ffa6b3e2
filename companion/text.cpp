#include "companion/text.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <iterator>

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

/// The sound characters of UTF-8 by their first two bytes. Left out are the longer forms of shorter
/// characters, surrogates, what is beyond Unicode, and the control characters C1.
struct CharacterForm {
    unsigned first_from, first_to, second_from, second_to;
    std::size_t length;
};
constexpr CharacterForm character_forms[] = {
    {0xC2, 0xC2, 0xA0, 0xBF, 2}, {0xC3, 0xDF, 0x80, 0xBF, 2}, {0xE0, 0xE0, 0xA0, 0xBF, 3},
    {0xE1, 0xEC, 0x80, 0xBF, 3}, {0xED, 0xED, 0x80, 0x9F, 3}, {0xEE, 0xEF, 0x80, 0xBF, 3},
    {0xF0, 0xF0, 0x90, 0xBF, 4}, {0xF1, 0xF3, 0x80, 0xBF, 4}, {0xF4, 0xF4, 0x80, 0x8F, 4},
};

/// How many bytes the character at the begin takes; 0 when it is no sound one.
std::size_t character_length(std::string_view text)
{
    const auto byte = [&](std::size_t i) {
        return i < text.size() ? static_cast<unsigned char>(text[i]) : 0U;
    };
    const unsigned first = byte(0);
    if (first < 0x80)
        return first >= ' ' && first != 0x7F ? 1 : 0;
    const auto has_form = [&](const CharacterForm& form) {
        return first >= form.first_from && first <= form.first_to && byte(1) >= form.second_from &&
               byte(1) <= form.second_to;
    };
    const auto* const form =
        std::find_if(std::begin(character_forms), std::end(character_forms), has_form);
    if (form == std::end(character_forms))
        return 0;
    for (std::size_t i = 2; i < form->length; ++i) {
        if ((byte(i) & 0xC0) != 0x80)
            return 0;
    }
    const bool is_noncharacter = first == 0xEF && byte(1) == 0xBF && byte(2) >= 0xBE;
    return is_noncharacter ? 0 : form->length;
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
