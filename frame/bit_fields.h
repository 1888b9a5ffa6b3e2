/// Shows status words on the console by their tables.
#pragma once

#include "frame/bit_table.h"
#include "frame/terminal/console.h"

#include <cstdint>
#include <initializer_list>
#include <span>
#include <vector>

/// A row of labels with a word behind each.
class FieldLine
{
public:
    FieldLine() = default;

    /// Prints the labels at the cursor, with that many columns left free behind each.
    /// A word may be longer than its gap: the blanks that begin the next label are room, too.
    FieldLine(std::span<const char* const> labels, int gap);
    /// The same with a gap of its own behind each label; none where no gap is given.
    FieldLine(std::span<const char* const> labels, std::initializer_list<int> gaps);

    /// Shows a word behind each label.
    void show(std::span<const ColoredText> words) const;

private:
    std::vector<Place> places_;
};

/// Prints label and word of every field, one behind the other.
void print_fields(std::span<const BitField> fields, std::uint32_t value);

/// Prints a status word in full: "C1h", the separator, "1100 0001b".
void print_word(std::uint32_t value, int bits, const char* separator = "=");
