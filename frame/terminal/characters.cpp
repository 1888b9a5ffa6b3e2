#include "frame/terminal/characters.h"

#include "frame/terminal/character_ranges.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <span>

namespace
{

// Shown instead of a character that would change what its neighbours look like, or where they
// stand.
constexpr char32_t replacement = 0xFFFD;

// clang-format off
// Codes 00h..1Fh, shown as the glyphs of a text screen (0 is a blank).
constexpr std::array<char32_t, 32> control_glyphs = {
    0x0020, 0x263A, 0x263B, 0x2665, 0x2666, 0x2663, 0x2660, 0x2022,
    0x25D8, 0x25CB, 0x25D9, 0x2642, 0x2640, 0x266A, 0x266B, 0x263C,
    0x25BA, 0x25C4, 0x2195, 0x203C, 0x00B6, 0x00A7, 0x25AC, 0x21A8,
    0x2191, 0x2193, 0x2192, 0x2190, 0x221F, 0x2194, 0x25B2, 0x25BC,
};

// Codes 7Fh..FFh.
constexpr std::array<char32_t, 129> high_characters = {
    0x2302, 0x00C7, 0x00FC, 0x00E9, 0x00E2, 0x00E4, 0x00E0, 0x00E5,
    0x00E7, 0x00EA, 0x00EB, 0x00E8, 0x00EF, 0x00EE, 0x00EC, 0x00C4,
    0x00C5, 0x00C9, 0x00E6, 0x00C6, 0x00F4, 0x00F6, 0x00F2, 0x00FB,
    0x00F9, 0x00FF, 0x00D6, 0x00DC, 0x00A2, 0x00A3, 0x00A5, 0x20A7,
    0x0192, 0x00E1, 0x00ED, 0x00F3, 0x00FA, 0x00F1, 0x00D1, 0x00AA,
    0x00BA, 0x00BF, 0x2310, 0x00AC, 0x00BD, 0x00BC, 0x00A1, 0x00AB,
    0x00BB, 0x2591, 0x2592, 0x2593, 0x2502, 0x2524, 0x2561, 0x2562,
    0x2556, 0x2555, 0x2563, 0x2551, 0x2557, 0x255D, 0x255C, 0x255B,
    0x2510, 0x2514, 0x2534, 0x252C, 0x251C, 0x2500, 0x253C, 0x255E,
    0x255F, 0x255A, 0x2554, 0x2569, 0x2566, 0x2560, 0x2550, 0x256C,
    0x2567, 0x2568, 0x2564, 0x2565, 0x2559, 0x2558, 0x2552, 0x2553,
    0x256B, 0x256A, 0x2518, 0x250C, 0x2588, 0x2584, 0x258C, 0x2590,
    0x2580, 0x03B1, 0x00DF, 0x0393, 0x03C0, 0x03A3, 0x03C3, 0x00B5,
    0x03C4, 0x03A6, 0x0398, 0x03A9, 0x03B4, 0x221E, 0x03C6, 0x03B5,
    0x2229, 0x2261, 0x00B1, 0x2265, 0x2264, 0x2320, 0x2321, 0x00F7,
    0x2248, 0x00B0, 0x2219, 0x00B7, 0x221A, 0x207F, 0x00B2, 0x25A0,
    0x00A0,
};
// clang-format on

bool contains(std::span<const CharacterRange> ranges, char32_t character)
{
    const auto range = std::partition_point(
        ranges.begin(), ranges.end(),
        [character](const CharacterRange& candidate) { return candidate.last < character; });
    return range != ranges.end() && character >= range->first;
}

/// Length of the valid UTF-8 sequence at the start of `bytes` and its character; 0 when there is
/// none (over-long forms, surrogates and numbers above 10FFFFh are not valid).
std::size_t decode_utf8(std::string_view bytes, char32_t& character)
{
    const auto at = [bytes](std::size_t i) { return static_cast<unsigned char>(bytes[i]); };
    const unsigned char lead = at(0);
    if (lead < 0x80) {
        character = lead;
        return 1;
    }
    const std::size_t length = lead >= 0xF0 ? 4 : lead >= 0xE0 ? 3 : 2;
    if (lead < 0xC2 || lead > 0xF4 || bytes.size() < length)
        return 0;
    character = lead & (0x7Fu >> length);
    for (std::size_t i = 1; i < length; ++i) {
        if ((at(i) & 0xC0) != 0x80)
            return 0;
        character = character << 6 | (at(i) & 0x3Fu);
    }
    constexpr std::array<char32_t, 5> smallest = {0, 0, 0x80, 0x800, 0x10000};
    const bool valid = character >= smallest[length] && character <= 0x10FFFF &&
                       (character < 0xD800 || character > 0xDFFF);
    return valid ? length : 0;
}

} // namespace

char32_t character_of_code_page(unsigned char byte)
{
    if (byte < 0x20)
        return control_glyphs[byte];
    return byte < 0x7F ? byte : high_characters[byte - 0x7Fu];
}

unsigned char code_page_byte_of(char32_t character)
{
    const auto* const found =
        std::find(high_characters.begin() + 1, high_characters.end(), character);
    return found == high_characters.end()
               ? 0
               : static_cast<unsigned char>(0x7F + (found - high_characters.begin()));
}

char32_t take_character(std::string_view& bytes)
{
    char32_t character = 0;
    const std::size_t length = decode_utf8(bytes, character);
    if (length == 0) {
        character = character_of_code_page(static_cast<unsigned char>(bytes.front()));
        bytes.remove_prefix(1);
    } else {
        bytes.remove_prefix(length);
    }
    return character;
}

char32_t shown_character(char32_t character)
{
    if (is_control(character))
        return character_of_code_page(static_cast<unsigned char>(character));
    return character >= 0xAD && contains(unshowable_characters, character) ? replacement
                                                                           : character;
}

int character_width(char32_t character)
{
    return character >= 0x1100 && contains(wide_characters, character) ? 2 : 1;
}

void append_utf8(std::string& text, char32_t character)
{
    if (character < 0x80) {
        text += static_cast<char>(character);
        return;
    }
    const auto byte = [&text](char32_t bits) { text += static_cast<char>(bits); };
    if (character < 0x800) {
        byte(0xC0 | character >> 6);
        byte(0x80 | (character & 0x3F));
    } else if (character < 0x10000) {
        byte(0xE0 | character >> 12);
        byte(0x80 | (character >> 6 & 0x3F));
        byte(0x80 | (character & 0x3F));
    } else {
        byte(0xF0 | character >> 18);
        byte(0x80 | (character >> 12 & 0x3F));
        byte(0x80 | (character >> 6 & 0x3F));
        byte(0x80 | (character & 0x3F));
    }
}
