#include "config/file_format.h"

#include "frame/switches.h"
#include "frame/text/numbers.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <optional>

namespace
{

constexpr std::string_view current_section = "CurrentConfiguration";
constexpr std::string_view set_section = "Configuration";
constexpr std::size_t longest_value = 1023;
constexpr std::size_t longest_kept_line = 64 + longest_value; // 64: more than the longest key
constexpr std::string_view byte_order_mark = "\xEF\xBB\xBF";
constexpr std::size_t key_count = config_entries.size() + 1;

const char* key_at(std::size_t position)
{
    return position == 0 ? name_key : config_entries[position - 1].key;
}

void append_line(std::string& text, std::string_view key, std::string_view value)
{
    text.append(key).append(1, '=').append(value).append(1, '\n');
}

void append_header(std::string& text, unsigned number)
{
    text.append(1, '[').append(section_name(number)).append("]\n");
}

void append_entries(std::string& text, const ConfigRecord& record)
{
    for (const ConfigEntry& entry : config_entries)
        append_line(text, entry.key, entry_text(entry, record));
}

} // namespace

std::string section_name(unsigned number)
{
    if (number == current_configuration)
        return std::string{current_section};
    return std::string{set_section} + std::to_string(number);
}

// ---- Writing ----

std::string escaped_name(std::string_view name)
{
    std::string text;
    for (const char c : name) {
        const auto byte = static_cast<unsigned char>(c);
        if (c == '\\') {
            text += "\\\\";
        } else if (c == '\t') {
            text += "\\t";
        } else if (c == '\r') {
            text += "\\r";
        } else if (c == '\n') {
            text += "\\n";
        } else if (byte < 0x20 || byte > 0x7F) {
            // Filled with a blank, not with a zero: files are known to hold "\x 5".
            std::array<char, 8> code = {};
            std::snprintf(code.data(), code.size(), "\\x%2X", byte);
            text += code.data();
        } else {
            text += c;
        }
    }
    return text;
}

std::string current_section_text(const ConfigRecord& record)
{
    std::string text;
    append_header(text, current_configuration);
    append_entries(text, record);
    return text;
}

std::string set_section_text(unsigned number, std::string_view name, const ConfigRecord& record)
{
    std::string text;
    append_header(text, number);
    append_line(text, name_key, escaped_name(name));
    append_entries(text, record);
    return text;
}

// ---- Reading ----

namespace
{

/// Takes what follows a backslash off the text. Nothing when it is no escape sequence.
std::optional<char> take_escaped(std::string_view& text)
{
    constexpr std::size_t digits = 2;
    if (text.empty())
        return {};
    const char kind = text.front();
    text.remove_prefix(1);
    switch (kind) {
    case '\\':
        return '\\';
    case 't':
        return '\t';
    case 'r':
        return '\r';
    case 'n':
        return '\n';
    case 'x':
        break;
    default:
        return {};
    }
    unsigned byte = 0;
    const std::string code{text.substr(0, digits)};
    if (code.size() < digits ||
        std::sscanf(code.c_str(), "%2X", &byte) != 1) // takes blanks before the digits
        return {};
    text.remove_prefix(digits);
    return static_cast<char>(byte);
}

} // namespace

std::string unescaped_name(std::string_view text)
{
    std::string name;
    while (!text.empty()) {
        const char c = text.front();
        text.remove_prefix(1);
        if (c != '\\') {
            name += c;
            continue;
        }
        const std::optional<char> meant = take_escaped(text);
        if (!meant)
            return name;
        name += *meant;
    }
    return name;
}

ConfigFileIndex::ConfigFileIndex() : sections_(highest_set_number + 1) {}

void ConfigFileIndex::add(std::string_view bytes)
{
    while (!bytes.empty()) {
        // CR LF gives an empty line more, which means nothing.
        const auto end =
            std::find_if(bytes.begin(), bytes.end(), [](char c) { return c == '\r' || c == '\n'; });
        const auto length = static_cast<std::size_t>(end - bytes.begin());
        line_.append(bytes.substr(0, std::min(length, longest_kept_line - line_.size())));
        if (length == bytes.size())
            return;
        take_line();
        bytes.remove_prefix(length + 1);
    }
}

void ConfigFileIndex::take_line()
{
    std::string_view line = line_;
    if (first_line_ && line.starts_with(byte_order_mark))
        line.remove_prefix(byte_order_mark.size());
    first_line_ = false;
    if (line.starts_with('['))
        begin_section(line);
    else if (section_ != nullptr && !line.starts_with(';'))
        take_entry(line);
    line_.clear();
}

void ConfigFileIndex::begin_section(std::string_view line)
{
    section_ = nullptr;
    next_key_ = 0;
    const std::size_t end = line.find(']');
    if (end == std::string_view::npos)
        return;
    const std::string_view name = line.substr(1, end - 1);
    unsigned number = current_configuration;
    if (name.starts_with(set_section) &&
        (!read_unsigned(name.substr(set_section.size()), number) || number > highest_set_number))
        return;
    // "Configuration01" is none of ours, either; the section comes first that is found first.
    if (name != section_name(number) || sections_[number].found)
        return;
    section_ = &sections_[number];
    section_->found = true;
}

void ConfigFileIndex::take_entry(std::string_view line)
{
    const std::size_t end = line.find('=');
    if (end == std::string_view::npos)
        return;
    const std::string_view key = line.substr(0, end);
    for (std::size_t i = 0; i < key_count; ++i) {
        const std::size_t position = (next_key_ + i) % key_count;
        if (key != key_at(position))
            continue;
        next_key_ = position + 1;
        const std::string_view value = line.substr(end + 1, longest_value);
        const bool is_first =
            std::none_of(section_->entries.begin(), section_->entries.end(),
                         [&](const auto& entry) { return entry.first == key_at(position); });
        if (is_first)
            section_->entries.emplace_back(key_at(position), value.substr(0, value.find('\0')));
        return;
    }
}

const std::string* ConfigFileIndex::find(unsigned number, std::string_view key) const
{
    for (const auto& [known_key, value] : sections_[number].entries) {
        if (key == known_key)
            return &value;
    }
    return nullptr;
}

const char* read_record(const ConfigFileIndex& index, unsigned number, ConfigRecord& record)
{
    record = {};
    for (const ConfigEntry& entry : config_entries) {
        const std::string* value = index.find(number, entry.key);
        if (value == nullptr || !set_entry(entry, *value, record))
            return entry.reported_key();
    }
    return nullptr;
}
