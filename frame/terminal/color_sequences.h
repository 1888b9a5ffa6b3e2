/// The console's colours as control sequences.
#pragma once

#include "frame/terminal/colors.h"

#include <cstddef>
#include <string>

/// The terminal's own colours, in the console's order. Grey is the default foreground and bright
/// white its bold form, so that dark and light themes stay readable.
[[nodiscard]] constexpr const char* sgr_of(Color color)
{
    constexpr const char* codes[16] = {"30", "34", "32", "36", "31", "35", "33", "",
                                       "90", "94", "92", "96", "91", "95", "93", "1"};
    return codes[static_cast<std::size_t>(color) & 15];
}

/// Adds what makes the terminal go from one colour to another.
inline void append_color_change(std::string& out, Color from, Color to)
{
    out += "\033[";
    if (from == Color::value || to == Color::label)
        out += to == Color::label ? "" : "0;"; // only a reset takes bold away
    else if (to == Color::value && from != Color::label)
        out += "0;";
    out += sgr_of(to);
    out += 'm';
}
