/// The fields of live displays: a value that is shown again and again in the same columns.
#pragma once

#include "frame/terminal/console.h"
#include "frame/text/format.h"

#include <string>

/// Columns of the screen that belong to one value. What the value does not use is blanked, and it
/// never reaches what stands behind: a number that is too long for them loses decimals or becomes
/// an exponent.
class Field
{
public:
    /// Nowhere: nothing is shown.
    Field() = default;
    Field(Place place, int columns) : place_(place), columns_(columns) {}

    [[nodiscard]] Place place() const { return place_; }
    [[nodiscard]] explicit operator bool() const { return columns_ > 0; }

    void show(Color color, const std::string& text) const;
    void show(const ColoredText& word) const { show(word.color, word.text); }
    void show(Color color, double value, const NumberFormat& format) const
    {
        show(color, number_text(value, format, columns_));
    }

private:
    Place place_;
    int columns_ = 0;
};

/// Prints a label and leaves room for its value behind it: the columns that the value may take, and
/// those that stay blank before the next label.
[[nodiscard]] Field place_field(const char* label, int columns, int gap = 0);
