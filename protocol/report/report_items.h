/// What the product data of the acceptance test are made of: texts of numbers and words, and the
/// bit tables of the displays as labelled values of the report.
#pragma once

#include "frame/text/bit_table.h"
#include "protocol/report/report.h"
#include "protocol/report/report_texts.h"

#include <cstdint>
#include <deque>
#include <initializer_list>
#include <span>
#include <string>
#include <string_view>
#include <vector>

using ReportItems = std::vector<ReportItem>;

/// "0016h"
[[nodiscard]] std::string hex_text(std::uint32_t value, int digits);

/// "3Fh=0011 1111b"
[[nodiscard]] std::string word_text(std::uint32_t value, int bits);

/// Without the blanks that pad it on the live displays.
[[nodiscard]] std::string bare(std::string_view text);

/// "Slot #02"
[[nodiscard]] std::string slot_text(unsigned slot);

[[nodiscard]] ReportItem word_item(const char* label, const ColoredText& word);

/// The labels of the bit tables as the report shows them. The tables' own have the blanks, commas
/// and colons of their displays.
class BareLabels
{
public:
    const char* bare_of(const char* label)
    {
        return texts_.emplace_back(report_text::bare_label(label)).c_str();
    }

private:
    std::deque<std::string> texts_; // in a deque they stay where they are
};

/// Adds an item for each field of a table (of BitField, or of anything else that has a label and a
/// word for a value); `labels` must outlive the items.
template <class Fields, class Value>
void add_fields(ReportItems& items, BareLabels& labels, const Fields& fields, const Value& value)
{
    for (const auto& field : fields)
        items.push_back(word_item(labels.bare_of(field.label), field.word(value)));
}

/// Reports a status word in full with its fields.
void report_word(Report& report, const char* label, std::uint32_t value, int bits,
                 std::initializer_list<std::span<const BitField>> tables);
