/// Values that replies put in the place of results, and how values look in the trace.
#pragma once

#include "devlib/functions.h"
#include "simulator/scenario/words.h"

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace simulator
{

using namespace devlib;

/// What a reply puts in the place of a result.
struct Value {
    enum class Type : std::uint8_t { integer, real, text, fill, null };
    Type type = Type::integer;
    std::int64_t integer = 0;
    double real = 0;
    std::string text;
};

/// Reads the values that stand for `parameter` from words[first] on ("fill" takes the text after
/// it). `returned` is true for a result that comes back directly. False and the fault in `problem`
/// when a word does not fit the parameter.
[[nodiscard]] bool read_values(const Words& words, std::size_t first, const Parameter& parameter,
                               bool returned, std::vector<Value>& values, std::string& problem);

/// Writes a value over a result: over all elements of an array, or over one (element >= 0). Never
/// beyond `count` elements or bytes.
void write_value(const Value& value, const Parameter& parameter, void* target, std::size_t count,
                 std::int64_t element);

/// Appends what a parameter holds, as the trace shows it; long arrays are cut.
void append_value(std::string& line, const Parameter& parameter, const void* data,
                  std::size_t count);

/// Appends a text in quotes, its control characters and quotes escaped.
void append_quoted(std::string& line, std::string_view text);

} // namespace simulator
