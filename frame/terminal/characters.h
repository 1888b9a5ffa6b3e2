/// Characters of the console: what a byte or a code point shows, and how wide it is.
#pragma once

#include <string>
#include <string_view>

/// The character that code page 437 shows for a byte, its control codes as glyphs too.
char32_t character_of_code_page(unsigned char byte);

/// The byte that code page 437 has for a character above 7Fh, 0 when it has none.
unsigned char code_page_byte_of(char32_t character);

/// Takes the first character off `bytes`. A valid UTF-8 sequence is that character; any other byte
/// is read as code page 437. Control characters come back as they are.
char32_t take_character(std::string_view& bytes);

/// True for the control characters of both encodings (below 20h, 7Fh, 80h..9Fh).
constexpr bool is_control(char32_t character)
{
    return character < 0x20 || (character >= 0x7F && character < 0xA0);
}

/// What the console shows for a character: a glyph for a control character, a replacement for one
/// that would reorder, join or break the line.
char32_t shown_character(char32_t character);

/// Columns that a shown character takes, 1 or 2.
int character_width(char32_t character);

/// Appends a character as UTF-8.
void append_utf8(std::string& text, char32_t character);
