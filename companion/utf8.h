/// The characters of UTF-8.
#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <string_view>

namespace companion
{

/// Sound sequences of several bytes by their first two. Left out are longer forms of shorter
/// characters, surrogates, and what is beyond Unicode.
struct Utf8Form {
    unsigned first_from, first_to, second_from, second_to;
    std::size_t length;
};
inline constexpr std::array<Utf8Form, 8> utf8_forms = {{
    {0xC2, 0xDF, 0x80, 0xBF, 2},
    {0xE0, 0xE0, 0xA0, 0xBF, 3},
    {0xE1, 0xEC, 0x80, 0xBF, 3},
    {0xED, 0xED, 0x80, 0x9F, 3},
    {0xEE, 0xEF, 0x80, 0xBF, 3},
    {0xF0, 0xF0, 0x90, 0xBF, 4},
    {0xF1, 0xF3, 0x80, 0xBF, 4},
    {0xF4, 0xF4, 0x80, 0x8F, 4},
}};

/// How many bytes the character at the beginning takes; 0 when there is none, or no sound one.
[[nodiscard]] inline std::size_t character_length(std::string_view text)
{
    const auto byte = [text](std::size_t i) {
        return i < text.size() ? static_cast<unsigned char>(text[i]) : 0U;
    };
    const unsigned first = byte(0);
    if (first < 0x80)
        return text.empty() ? 0 : 1;
    const auto form = std::find_if(utf8_forms.begin(), utf8_forms.end(), [&](const Utf8Form& f) {
        return first >= f.first_from && first <= f.first_to && byte(1) >= f.second_from &&
               byte(1) <= f.second_to;
    });
    if (form == utf8_forms.end())
        return 0;
    for (std::size_t i = 2; i < form->length; ++i) {
        if ((byte(i) & 0xC0) != 0x80)
            return 0;
    }
    return form->length;
}

[[nodiscard]] inline bool is_utf8(std::string_view text)
{
    while (!text.empty()) {
        const std::size_t length = character_length(text);
        if (length == 0)
            return false;
        text.remove_prefix(length);
    }
    return true;
}

} // namespace companion
