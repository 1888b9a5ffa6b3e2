/// A character of the screen in its colour.
#pragma once

#include "frame/terminal/colors.h"

/// In four bytes where the compiler packs it, because there are two for every column of every row.
struct Cell {
    char32_t character : 24 = U' '; ///< 0 = the right half of the wide character before it
    Color color : 8 = Color::label;

    Cell() = default;
    Cell(char32_t new_character, Color new_color)
        : character(new_character & 0xFF'FFFF), color(new_color)
    {
    }
    bool operator==(const Cell& other) const
    {
        return character == other.character && color == other.color;
    }
    /// A blank looks the same in every colour.
    [[nodiscard]] bool is_blank() const { return character == U' '; }
};
