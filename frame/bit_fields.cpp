#include "frame/bit_fields.h"

#include "frame/format.h"

#include <cstddef>

FieldLine::FieldLine(std::span<const char* const> labels, int gap)
{
    for (const char* label : labels)
        places_.push_back(place_field(label, gap));
}

FieldLine::FieldLine(std::span<const char* const> labels, std::initializer_list<int> gaps)
{
    const int* gap = gaps.begin();
    for (const char* label : labels)
        places_.push_back(place_field(label, gap != gaps.end() ? *gap++ : 0));
}

void FieldLine::show(std::span<const ColoredText> words) const
{
    for (std::size_t i = 0; i < places_.size() && i < words.size(); ++i)
        console.print_at(places_[i], words[i]);
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
