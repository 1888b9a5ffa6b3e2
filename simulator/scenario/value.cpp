#include "simulator/scenario/value.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <cstring>
#include <limits>

namespace simulator
{

namespace
{

/// Elements of an array that a line of the trace shows.
constexpr std::size_t most_shown = 64;

template <typename T>
T load(const void* data, std::size_t element)
{
    T value;
    std::memcpy(&value, static_cast<const unsigned char*>(data) + element * sizeof(T), sizeof(T));
    return value;
}

template <typename T>
void store(void* data, std::size_t element, T value)
{
    std::memcpy(static_cast<unsigned char*>(data) + element * sizeof(T), &value, sizeof(T));
}

struct Range {
    std::int64_t lowest;
    std::int64_t highest;
};

Range integer_range(Kind kind)
{
    switch (kind) {
    case Kind::u8:
    case Kind::bytes:
        return {0, 0xFF};
    case Kind::u16:
        return {0, 0xFFFF};
    case Kind::u32:
        return {0, 0xFFFF'FFFF};
    default:
        return {std::numeric_limits<std::int32_t>::min(), std::numeric_limits<std::int32_t>::max()};
    }
}

bool read_text_value(const Word& word, const Parameter& parameter, bool returned, bool fill,
                     Value& value, std::string& problem)
{
    if (!word.quoted) {
        problem = "a text in quotes is expected, not '" + word.text + "'";
        return false;
    }
    if (fill && word.text.empty()) {
        problem = "'fill' needs a text to fill the buffer with";
        return false;
    }
    if (!returned && !fill && word.text.size() > parameter.count) {
        problem = "the text \"" + word.text + "\" is longer than the buffer";
        return false;
    }
    value.type = fill ? Value::Type::fill : Value::Type::text;
    value.text = word.text;
    return true;
}

bool read_number_value(const Word& word, const Parameter& parameter, Value& value,
                       std::string& problem)
{
    if (parameter.kind == Kind::real || parameter.kind == Kind::real32) {
        value.type = Value::Type::real;
        if (!word.quoted && read_real(word.text, value.real))
            return true;
        problem = "a number is expected, not '" + word.text + "'";
        return false;
    }
    value.type = Value::Type::integer;
    const Range range = integer_range(parameter.kind);
    if (word.quoted || !read_integer(word.text, value.integer)) {
        problem = "a whole number is expected, not '" + word.text + "'";
        return false;
    }
    if (value.integer < range.lowest || value.integer > range.highest) {
        problem = "the number '" + word.text + "' is out of range";
        return false;
    }
    return true;
}

void write_text(const Value& value, char* target, std::size_t count)
{
    if (value.type == Value::Type::fill) {
        for (std::size_t i = 0; i < count; ++i)
            target[i] = value.text[i % value.text.size()];
        return;
    }
    const std::size_t length = std::min(value.text.size(), count);
    std::memcpy(target, value.text.data(), length);
    if (length < count)
        target[length] = '\0';
}

void write_number(const Value& value, Kind kind, void* target, std::size_t element)
{
    switch (kind) {
    case Kind::u8:
    case Kind::bytes:
        store(target, element, static_cast<std::uint8_t>(value.integer));
        break;
    case Kind::u16:
        store(target, element, static_cast<std::uint16_t>(value.integer));
        break;
    case Kind::u32:
        store(target, element, static_cast<std::uint32_t>(value.integer));
        break;
    case Kind::i32:
        store(target, element, static_cast<std::int32_t>(value.integer));
        break;
    case Kind::real:
        store(target, element, value.real);
        break;
    case Kind::real32:
        store(target, element, static_cast<float>(value.real));
        break;
    case Kind::none:
    case Kind::text:
        break;
    }
}

void append_number(std::string& line, const Parameter& parameter, const void* data,
                   std::size_t element)
{
    std::array<char, 40> text{};
    const auto unsigned_number = [&](unsigned long number, int digits) {
        if (parameter.hexadecimal)
            std::snprintf(text.data(), text.size(), "%0*lXh", digits, number);
        else
            std::snprintf(text.data(), text.size(), "%lu", number);
    };
    switch (parameter.kind) {
    case Kind::u8:
        unsigned_number(load<std::uint8_t>(data, element), 2);
        break;
    case Kind::u16:
        unsigned_number(load<std::uint16_t>(data, element), 4);
        break;
    case Kind::u32:
        unsigned_number(load<std::uint32_t>(data, element), 8);
        break;
    case Kind::i32:
        std::snprintf(text.data(), text.size(), "%ld",
                      static_cast<long>(load<std::int32_t>(data, element)));
        break;
    case Kind::real:
        std::snprintf(text.data(), text.size(), "%.9g", load<double>(data, element));
        break;
    case Kind::real32:
        std::snprintf(text.data(), text.size(), "%.6g",
                      static_cast<double>(load<float>(data, element)));
        break;
    case Kind::bytes:
        std::snprintf(text.data(), text.size(), "%02X",
                      static_cast<unsigned>(load<std::uint8_t>(data, element)));
        break;
    case Kind::none:
    case Kind::text:
        break;
    }
    line += text.data();
}

/// Reads a text with the word before it that says how it is given; `i` is that of the text then.
bool read_text_words(const Words& words, std::size_t& i, const Parameter& parameter, bool returned,
                     Value& value, std::string& problem)
{
    const bool plain = !words[i].quoted;
    if (returned && plain && words[i].text == "null") {
        value.type = Value::Type::null;
        return true;
    }
    const bool fill = !returned && plain && words[i].text == "fill";
    if (fill && ++i == words.size()) {
        problem = "a text is missing after 'fill'";
        return false;
    }
    return read_text_value(words[i], parameter, returned, fill, value, problem);
}

} // namespace

bool read_values(const Words& words, std::size_t first, const Parameter& parameter, bool returned,
                 std::vector<Value>& values, std::string& problem)
{
    values.clear();
    for (std::size_t i = first; i < words.size(); ++i) {
        Value value;
        const bool good = parameter.kind == Kind::text
                              ? read_text_words(words, i, parameter, returned, value, problem)
                              : read_number_value(words[i], parameter, value, problem);
        if (!good)
            return false;
        values.push_back(std::move(value));
    }
    if (values.empty())
        problem = "a value is missing";
    return !values.empty();
}

void write_value(const Value& value, const Parameter& parameter, void* target, std::size_t count,
                 std::int64_t element)
{
    if (parameter.kind == Kind::text) {
        write_text(value, static_cast<char*>(target), count);
    } else if (element < 0) {
        for (std::size_t i = 0; i < count; ++i)
            write_number(value, parameter.kind, target, i);
    } else if (static_cast<std::size_t>(element) < count) {
        write_number(value, parameter.kind, target, static_cast<std::size_t>(element));
    }
}

void append_value(std::string& line, const Parameter& parameter, const void* data,
                  std::size_t count)
{
    if (parameter.kind == Kind::text) {
        const char* const text = static_cast<const char*>(data);
        std::size_t length = 0;
        while (length < count && text[length] != '\0')
            ++length;
        append_quoted(line, {text, length});
        return;
    }
    for (std::size_t i = 0; i < std::min(count, most_shown); ++i) {
        if (i > 0)
            line += ' ';
        append_number(line, parameter, data, i);
    }
    if (count > most_shown)
        line += " ...";
}

void append_quoted(std::string& line, std::string_view text)
{
    line += '"';
    for (const char character : text) {
        const auto byte = static_cast<unsigned char>(character);
        if (character == '"' || character == '\\') {
            line += '\\';
            line += character;
        } else if (byte < 0x20 || byte == 0x7F) {
            std::array<char, 8> escape{};
            std::snprintf(escape.data(), escape.size(), "\\x%02X", static_cast<unsigned>(byte));
            line += escape.data();
        } else {
            line += character;
        }
    }
    line += '"';
}

} // namespace simulator
