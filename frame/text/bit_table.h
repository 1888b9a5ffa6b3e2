/// Status words as tables: one row for each bit that is shown, in display order. Only the table
/// knows the bit.
#pragma once

#include "frame/terminal/colors.h"

#include <cstdint>
#include <span>
#include <string_view>
#include <vector>

struct BitField {
    const char* label;
    int bit;
    ColoredText set;
    ColoredText clear;

    [[nodiscard]] constexpr const ColoredText& word(std::uint32_t value) const
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
[[nodiscard]] std::vector<ColoredText> words_of(const Fields& fields, const Value& value)
{
    std::vector<ColoredText> words;
    words.reserve(fields.size());
    for (const auto& field : fields)
        words.push_back(field.word(value));
    return words;
}
