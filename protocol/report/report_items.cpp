#include "protocol/report/report_items.h"

#include "frame/text/format.h"

std::string hex_text(std::uint32_t value, int digits)
{
    return formatted("%0*Xh", digits, value);
}

std::string word_text(std::uint32_t value, int bits)
{
    return hex_text(value, bits / 4) + '=' + bits_text(value, bits);
}

std::string bare(std::string_view text)
{
    const std::size_t first = text.find_first_not_of(' ');
    const std::size_t last = text.find_last_not_of(' ');
    return first == std::string_view::npos ? std::string{}
                                           : std::string{text.substr(first, last - first + 1)};
}

std::string slot_text(unsigned slot)
{
    return formatted("Slot #%02u", slot);
}

ReportItem word_item(const char* label, const ColoredText& word)
{
    return {.label = label, .value = bare(word.text), .color = word.color};
}

void report_word(Report& report, const char* label, std::uint32_t value, int bits,
                 std::initializer_list<std::span<const BitField>> tables)
{
    BareLabels labels;
    ReportItems items{{.label = label, .value = word_text(value, bits)}};
    for (const std::span<const BitField> fields : tables)
        add_fields(items, labels, fields, value);
    report.items(items);
}
