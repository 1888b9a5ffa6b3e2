#include "simulator/scenario/words.h"

#include "simulator/model/arithmetic.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstdlib>

namespace simulator
{

namespace
{

int hexadecimal_digit(char character)
{
    if (character >= '0' && character <= '9')
        return character - '0';
    if (character >= 'A' && character <= 'F')
        return character - 'A' + 10;
    if (character >= 'a' && character <= 'f')
        return character - 'a' + 10;
    return -1;
}

/// Reads one escape, `position` at the character after the backslash, and moves behind it.
bool read_escape(std::string_view line, std::size_t& position, std::string& text)
{
    if (position >= line.size())
        return false;
    const char letter = line[position++];
    switch (letter) {
    case 'n':
        text += '\n';
        return true;
    case 't':
        text += '\t';
        return true;
    case 'r':
        text += '\r';
        return true;
    case 'e':
        text += '\x1B';
        return true;
    case '"':
    case '\\':
        text += letter;
        return true;
    case 'x': {
        if (position + 2 > line.size())
            return false;
        const int high = hexadecimal_digit(line[position]);
        const int low = hexadecimal_digit(line[position + 1]);
        if (high < 0 || low < 0)
            return false;
        text += static_cast<char>(high * 16 + low);
        position += 2;
        return true;
    }
    default:
        return false;
    }
}

bool is_blank(char character)
{
    return character == ' ' || character == '\t' || character == '\r';
}

/// Reads a text up to its closing quote, and over that.
bool read_quoted(std::string_view line, std::size_t& position, std::string& text,
                 std::string& problem)
{
    while (position < line.size() && line[position] != '"') {
        const char character = line[position++];
        if (character != '\\') {
            text += character;
        } else if (!read_escape(line, position, text)) {
            problem = "wrong escape in the text \"" + text + "\\\"";
            return false;
        }
    }
    if (position >= line.size()) {
        problem = "the text \"" + text + "\" has no closing quote";
        return false;
    }
    ++position;
    return true;
}

} // namespace

bool split_words(std::string_view line, Words& words, std::string& problem)
{
    words.clear();
    for (std::size_t position = 0; position < line.size();) {
        if (is_blank(line[position])) {
            ++position;
        } else if (line[position] == '#') {
            break;
        } else if (line[position] == '"') {
            words.push_back({"", true});
            if (!read_quoted(line, ++position, words.back().text, problem))
                return false;
        } else {
            const std::size_t end = std::min(line.find_first_of(" \t\r#\"", position), line.size());
            words.push_back({std::string(line.substr(position, end - position)), false});
            position = end;
        }
    }
    return true;
}

bool read_integer(std::string_view text, std::int64_t& value)
{
    int radix = 10;
    bool negative = false;
    if (text.size() > 2 && text.starts_with("0x")) {
        radix = 16;
        text.remove_prefix(2);
    } else if (text.size() > 1 && (text.back() == 'h' || text.back() == 'H')) {
        radix = 16;
        text.remove_suffix(1);
    } else if (text.starts_with('-')) {
        negative = true;
        text.remove_prefix(1);
    }
    std::uint32_t magnitude = 0;
    const auto [end, error] =
        std::from_chars(text.data(), text.data() + text.size(), magnitude, radix);
    if (error != std::errc{} || end != text.data() + text.size())
        return false;
    value = negative ? -std::int64_t{magnitude} : std::int64_t{magnitude};
    return true;
}

bool read_real(std::string_view text, double& value)
{
    // Not from_chars: its tables are three times as large as the rest of the simulated instrument.
    const std::string word{text};
    const bool named = word == "nan" || word == "inf" || word == "-inf";
    if (word.empty() || word.front() == '+' ||
        (!named && word.find_first_not_of("0123456789.-+eE") != std::string::npos))
        return false;
    char* end = nullptr;
    const double read = std::strtod(word.c_str(), &end);
    if (*end != '\0' || (std::isinf(read) && !named))
        return false;
    value = read;
    return true;
}

bool wrong(std::string& problem, std::string text)
{
    problem = std::move(text);
    return false;
}

bool is(const Words& words, std::size_t place, std::string_view text)
{
    return place < words.size() && !words[place].quoted && words[place].text == text;
}

bool read_time(const Words& words, std::size_t place, std::int64_t& time_us, std::string& problem)
{
    double milliseconds = 0;
    if (place >= words.size())
        return wrong(problem, "a time in milliseconds is missing");
    if (words[place].quoted || !read_real(words[place].text, milliseconds) ||
        !(milliseconds >= 0 && milliseconds <= 1e9))
        return wrong(problem,
                     "a time in milliseconds is expected, not '" + words[place].text + "'");
    time_us = nearest(milliseconds * 1000);
    return true;
}

} // namespace simulator
