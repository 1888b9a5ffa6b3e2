#include "protocol/report/report.h"

#include "frame/files/data_file.h"
#include "frame/platform/platform.h"
#include "frame/terminal/characters.h"
#include "frame/terminal/console.h"
#include "frame/text/format.h"

#include <utility>

std::string latin1_text(std::string_view text)
{
    std::string latin1;
    while (!text.empty()) {
        const std::string_view before = text;
        const char32_t character = take_character(text);
        const bool has_one =
            (character >= U' ' && character < 0x7F) || (character >= 0xA0 && character <= 0xFF);
        if (has_one)
            latin1 += static_cast<char>(character);
        else
            for (const char byte : before.substr(0, before.size() - text.size()))
                latin1 += formatted("\\x%02X", static_cast<unsigned char>(byte));
    }
    return latin1;
}

bool Report::open(const char* file_name)
{
    file_name_ = file_name;
    return file_.replace(file_name);
}

bool Report::close(bool complete)
{
    return file_.close(complete);
}

void Report::write(const std::string& text)
{
    if (std::exchange(gap_is_due_, false))
        file_.write("\n");
    file_.write(text);
    has_text_ = true;
}

void Report::flush()
{
    if (file_.flush() || !good_)
        return;
    good_ = false;
    print_write_error(file_name_.c_str());
}

namespace
{

void print_item(const ReportItem& item)
{
    console.print("%s%s", item.label, item.divider);
    console.print(item.color, "%s", item.value.c_str());
}

std::string file_line(const ReportItem& item)
{
    return std::string{item.label} + ":\t" +
           (item.file_value.empty() ? item.value : item.file_value) + '\n';
}

} // namespace

void Report::write_items(std::span<const ReportItem> items, const char* tab_of_further)
{
    std::string in_file;
    const char* separator = margin();
    const char* tab = "";
    for (const ReportItem& item : items) {
        console.print("%s", separator);
        print_item(item);
        in_file += indentation_;
        in_file += tab;
        in_file += file_line(item);
        separator = ", ";
        tab = tab_of_further;
    }
    console.print("\n");
    write(in_file);
}

void Report::group(const char* title, std::span<const ReportItem> items)
{
    std::string in_file = indentation_ + std::string{title} + ":\n";
    console.print("%s%s", margin(), title);
    const char* separator = ": ";
    for (const ReportItem& item : items) {
        console.print("%s", separator);
        print_item(item);
        in_file += indentation_;
        in_file += '\t';
        in_file += file_line(item);
        separator = ", ";
    }
    console.print("\n");
    write(in_file);
}

void Report::row(std::span<const ReportItem> items, std::size_t told_before)
{
    std::string in_file = indentation_;
    const char* separator = margin();
    for (const ReportItem& item : items) {
        in_file += &item == items.data() ? "" : "\t";
        in_file += item.file_value.empty() ? item.value : item.file_value;
        if (told_before > 0) {
            --told_before;
            continue;
        }
        console.print("%s", separator);
        print_item(item);
        separator = ", ";
    }
    console.print("\n");
    write(in_file + '\n');
}

void Report::columns(std::span<const char* const> labels)
{
    std::string line;
    for (const char* label : labels) {
        line += line.empty() ? "" : "\t";
        line += label;
    }
    file_only(line);
}

void Report::text(const std::string& line, Color color)
{
    console.print("%s", margin());
    console.print(color, "%s", line.c_str());
    console.print("\n");
    write(indentation_ + line + '\n');
}

void Report::paragraph(const std::string& line)
{
    end_section();
    text(line);
}

void Report::result(const std::string& line, Color color)
{
    console.print("%s", margin());
    console.print(color, "%s", line.c_str());
    console.print("\n");
    write(indentation_ + ('\t' + line) + '\n');
}

void Report::heading(const std::string& on_console, const std::string& in_file)
{
    console.print("%s\n", on_console.c_str());
    end_section();
    write(in_file + '\n');
}

void Report::file_only(const std::string& line)
{
    write(indentation_ + line + '\n');
}

void Report::expect_end_in(std::int64_t milliseconds)
{
    expected_end_ms_ = platform::tick_ms() + milliseconds;
}

std::string Report::outlook() const
{
    constexpr std::int64_t minute_ms = 60'000;
    if (expected_end_ms_ == 0)
        return {};
    const std::int64_t left_ms = expected_end_ms_ - platform::tick_ms();
    return left_ms <= minute_ms
               ? "Less than a minute left"
               : formatted("About %d min. left",
                           static_cast<int>((left_ms + minute_ms / 2) / minute_ms));
}
