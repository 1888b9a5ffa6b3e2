/// How a row that is wider than the window is divided into pieces, one for each row of the screen.
#pragma once

#include "frame/terminal/cell.h"

#include <span>
#include <vector>

/// A label with the columns of its value: a row is not divided there if it can be helped, and never
/// in a value that fits into the window.
struct UnbrokenPart {
    int from;  ///< column in which the label begins
    int value; ///< column in which the value begins
    int to;    ///< column behind the value's last one
};

/// Columns by which all pieces but the first are indented.
[[nodiscard]] int folded_indent(int columns);

/// The columns of the row in which its pieces begin, at least one. A piece begins with a label or a
/// word, in a word that is longer than the window somewhere.
[[nodiscard]] std::vector<int> folded_row(std::span<const Cell> cells,
                                          std::span<const UnbrokenPart> parts, int columns);
