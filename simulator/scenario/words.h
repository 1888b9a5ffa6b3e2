/// Words and numbers of the scenario language.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace simulator
{

/// One word of a scenario line; a quoted one is a text whose escapes are already replaced.
struct Word {
    std::string text;
    bool quoted = false;
};

using Words = std::vector<Word>;

/// Splits a line at its blanks; "#" starts a comment, texts stand in double quotes with the escapes
/// \n \t \r \e \xNN \" \\. Returns false and names the fault when a text is wrong.
[[nodiscard]] bool split_words(std::string_view line, Words& words, std::string& problem);

/// A whole number: decimal, or hexadecimal as 1Fh or 0x1F. False when it is something else.
[[nodiscard]] bool read_integer(std::string_view text, std::int64_t& value);

/// A real number, "nan", "inf" and "-inf" included. False when it is something else.
[[nodiscard]] bool read_real(std::string_view text, double& value);

/// Notes why a line is wrong; always false, for the return.
[[nodiscard]] bool wrong(std::string& problem, std::string text);

/// True when that word stands at that place, without quotes.
[[nodiscard]] bool is(const Words& words, std::size_t place, std::string_view text);

/// Reads the word at that place as milliseconds. False and the fault when it is none.
[[nodiscard]] bool read_time(const Words& words, std::size_t place, std::int64_t& time_us,
                             std::string& problem);

} // namespace simulator
