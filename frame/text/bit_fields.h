/// Shows status words on the console by their tables.
#pragma once

#include "frame/terminal/console.h"
#include "frame/text/bit_table.h"
#include "frame/text/field.h"

#include <cstdint>
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
    /// The same with a gap of its own behind each label but the last.
    FieldLine(std::span<const char* const> labels, std::vector<int> gaps);

    /// Shows a word behind each label.
    void show(std::span<const ColoredText> words) const;

private:
    std::vector<Field> fields_;
};

/// Prints label and word of every field, one behind the other.
void print_fields(std::span<const BitField> fields, std::uint32_t value);

/// Prints a status word in full: "C1h", the separator, "1100 0001b".
void print_word(std::uint32_t value, int bits, const char* separator = "=");

/// Prints the word 0 and notes its columns.
[[nodiscard]] Field place_status_word(int bits);

/// Shows a word of that many bits there.
void show_status_word(const Field& field, std::uint32_t value, int bits);
