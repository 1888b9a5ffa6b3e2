/// The console's colours as control sequences.
#pragma once

#include "frame/terminal/colors.h"

#include <cstddef>
#include <string>

/// The terminal's own colours, in the console's order. Grey is the default foreground and bright
/// white its bold form, so that dark and light themes stay readable. What warns is bold, too, else
/// good values would stand out more. Light cyan and yellow are the bold forms of cyan and yellow:
/// the bright ones can hardly be seen on white, and some themes have greys in their place.
[[nodiscard]] constexpr const char* sgr_of(Color color)
{
    constexpr const char* codes[16] = {"30", "34",   "32", "36",   "31",   "35",   "33",   "",
                                       "90", "94;1", "92", "36;1", "91;1", "95;1", "33;1", "1"};
    return codes[static_cast<std::size_t>(color) & 15];
}

/// Whether a colour is bold: only a reset takes that away.
[[nodiscard]] constexpr bool is_bold(Color color)
{
    return color != Color::good && color >= Color::cold;
}

/// Adds what makes the terminal go from one colour to another.
inline void append_color_change(std::string& out, Color from, Color to)
{
    out += "\033[";
    const bool needs_reset = is_bold(from) || to == Color::value;
    if (to != Color::label && from != Color::label && needs_reset)
        out += "0;";
    out += sgr_of(to);
    out += 'm';
}
