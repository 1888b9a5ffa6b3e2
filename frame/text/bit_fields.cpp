#include "frame/text/bit_fields.h"

#include "frame/text/format.h"

#include <cstddef>
#include <cstring>

namespace
{

int leading_blanks(const char* label)
{
    return static_cast<int>(std::strspn(label, " "));
}

} // namespace

FieldLine::FieldLine(std::span<const char* const> labels, int gap)
    : FieldLine{labels, std::vector<int>(labels.size(), gap)}
{
}

FieldLine::FieldLine(std::span<const char* const> labels, std::vector<int> gaps)
{
    constexpr int longest_word = 4;
    for (std::size_t i = 0; i < labels.size(); ++i) {
        const bool is_last = i + 1 == labels.size();
        const int columns = is_last ? longest_word : gaps[i] + leading_blanks(labels[i + 1]);
        fields_.push_back(
            place_field(i == 0 ? labels[i] : labels[i] + leading_blanks(labels[i]), columns));
    }
}

void FieldLine::show(std::span<const ColoredText> words) const
{
    for (std::size_t i = 0; i < fields_.size() && i < words.size(); ++i)
        fields_[i].show(words[i]);
}

void print_fields(std::span<const BitField> fields, std::uint32_t value)
{
    for (const BitField& field : fields) {
        console.print("%s", field.label);
        console.print(field.word(value));
    }
}

void print_word(std::uint32_t value, int bits, const char* separator)
{
    const int digits = bits / 4;
    console.print(Color::value, "%0*Xh", digits, value);
    console.print("%s", separator);
    console.print(Color::value, "%s", bits_text(value, bits).c_str());
}

Field place_status_word(int bits)
{
    const Place place = console.place();
    print_word(0, bits);
    const int end = console.place().column;
    console.keep_together({.from = place.column, .value = place.column, .to = end});
    return {place, end - place.column};
}

void show_status_word(const Field& field, std::uint32_t value, int bits)
{
    console.move_to(field.place());
    print_word(value, bits);
}
