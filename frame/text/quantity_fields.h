/// The fields of a live display that shows a record: each with the quantity of the record that
/// stands there. A quantity has a `value` (of the record; it may have none), a `format` and a
/// `color`.
#pragma once

#include "frame/text/field.h"

#include <optional>
#include <vector>

template <class Quantity>
class QuantityFields
{
public:
    /// Prints a label with room for the value behind it: see place_field().
    void place(const char* label, const Quantity& quantity, int columns, int gap = 0)
    {
        fields_.push_back({place_field(label, columns, gap), quantity});
    }

    /// Prints a row of labels, 12 columns from the end of one to the next.
    template <class Row>
    void place_row(const Row& row)
    {
        constexpr int columns = 11; // and a blank
        for (const auto& shown : row)
            place(shown.label, shown.quantity, columns, 1);
    }

    /// Shows the record's values; "-" where there is none.
    template <class Record>
    void show(const Record& record) const
    {
        for (const auto& [field, quantity] : fields_) {
            if (const std::optional<double> value = quantity.value(record))
                field.show(quantity.color(*value), *value, quantity.format);
            else
                field.show(Color::value, "     -");
        }
    }

private:
    struct Shown {
        Field field;
        Quantity quantity;
    };

    std::vector<Shown> fields_;
};
