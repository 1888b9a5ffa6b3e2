#include "frame/text/field.h"

#include <cstddef>
#include <cstring>

void Field::show(Color color, const std::string& text) const
{
    if (columns_ == 0)
        return;
    const std::string shown = text.substr(0, static_cast<std::size_t>(columns_));
    console.print_at(place_, color, "%s", shown.c_str());
    console.blank_to_column(place_.column + columns_);
}

Field place_field(const char* label, int columns, int gap)
{
    const int from = console.place().column + static_cast<int>(std::strspn(label, " ,"));
    console.print("%s", label);
    const Field field{console.place(), columns};
    const int value = field.place().column;
    console.keep_together({.from = from, .value = value, .to = value + columns});
    console.skip(columns + gap);
    return field;
}
