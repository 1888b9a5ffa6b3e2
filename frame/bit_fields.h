/// Status words as tables: one row for each bit that is shown, in display order. Only the table
/// knows the bit; whoever shows the word calls it here.
#pragma once

#include "frame/terminal/console.h"

#include <cstdint>
#include <initializer_list>
#include <span>
#include <string_view>
#include <vector>

struct BitField {
    const char* label;
    int bit;
    Word set;
    Word clear;

    [[nodiscard]] constexpr const Word& word(std::uint32_t value) const
    {
        return (value >> bit & 1u) != 0 ? set : clear;
    }
};

/// True when every bit is below `width` and none stands twice, and both words of a field have the
/// same length, so that one overwrites the other. For static_assert beside a table.
[[nodiscard]] constexpr bool well_formed(std::span<const BitField> fields, int width)
{
    std::uint32_t seen = 0;
    for (const BitField& field : fields) {
        if (field.bit < 0 || field.bit >= width || (seen >> field.bit & 1u) != 0 ||
            std::string_view{field.set.text}.size() != std::string_view{field.clear.text}.size())
            return false;
        seen |= 1u << field.bit;
    }
    return true;
}

/// The labels of a table, in display order: of one of bit fields, or of others with a label.
template <class Fields>
[[nodiscard]] std::vector<const char*> labels_of(const Fields& fields)
{
    std::vector<const char*> labels;
    labels.reserve(fields.size());
    for (const auto& field : fields)
        labels.push_back(field.label);
    return labels;
}

/// The words of a value, in display order.
template <class Fields, class Value>
[[nodiscard]] std::vector<Word> words_of(const Fields& fields, const Value& value)
{
    std::vector<Word> words;
    words.reserve(fields.size());
    for (const auto& field : fields)
        words.push_back(field.word(value));
    return words;
}

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
    void show(std::span<const Word> words) const;

private:
    std::vector<Place> places_;
};

/// Prints label and word of every field, one behind the other.
void print_fields(std::span<const BitField> fields, std::uint32_t value);

/// Prints a status word in full: "C1h", the separator, "1100 0001b".
void print_word(std::uint32_t value, int bits, const char* separator = "=");
