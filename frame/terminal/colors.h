/// The console's 16 text colours, named by what they mean on this program's screens. The numbers
/// are the console's own: 8 + 4 x red + 2 x green + blue makes the eight bright ones.
#pragma once

#include <cstdint>

enum class Color : std::uint8_t {
    label = 7,  ///< grey: labels and ordinary text
    cold = 9,   ///< light blue
    good = 10,  ///< light green: good, on, yes
    below = 11, ///< light cyan: a value below its tolerance
    hot = 12,   ///< light red: too hot, and the "not" states
    not_good = 12,
    bad = 13,      ///< light magenta: failures and errors
    above = 13,    ///< light magenta: a value above its tolerance
    disabled = 14, ///< yellow: disabled
    warning = 14,  ///< yellow: warnings and interruptions
    value = 15,    ///< bright white: values
};

/// A text in its colour, as the tables of the decoders hold it.
struct ColoredText {
    const char* text;
    Color color;
};
