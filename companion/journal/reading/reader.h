/// Reads a journal line by line. Whatever the file holds: what a reader gives has been checked
/// against the table of functions.
#pragma once

#include "companion/journal/call.h"

#include <cstdint>
#include <cstdio>
#include <nlohmann/json.hpp>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace journal
{

struct Heading {
    std::string program, library, system, time;
    std::vector<std::string> arguments;
    std::uint16_t library_version = 0;
};

/// A call, or identical ones in a row.
// NOLINTNEXTLINE(bugprone-exception-escape): moving a JSON value asserts that it is sound
struct RecordedCall {
    std::size_t row = devlib::no_function;
    std::uint64_t number = 0, count = 1; ///< of the first one; how many
    std::string time, last;              ///< when the first and the last one began
    std::int64_t us = 0, longest_us = 0; ///< sum; largest
    nlohmann::json inputs, outputs;      ///< objects; a value for each parameter
    std::int32_t status = 0;
    std::uint16_t version = 0;
    std::optional<std::string> text; ///< what a function returned; none = null
    std::string error;

    [[nodiscard]] const devlib::FunctionInfo& info() const { return devlib::functions[row]; }
    /// It has a status that tells a failure.
    [[nodiscard]] bool failed() const;
};

struct Ending {
    std::string time;
    std::uint64_t calls = 0, failures = 0;
};

class Reader
{
public:
    /// Reads the first line. Null: there is no file.
    explicit Reader(std::FILE* file);

    /// False at the end, and where something is wrong.
    [[nodiscard]] bool next(RecordedCall& call);

    [[nodiscard]] const Heading& heading() const { return heading_; }
    /// What is wrong, with the line's number; empty while nothing is.
    [[nodiscard]] const std::string& problem() const { return problem_; }
    /// The last line; nothing before it was read, and when the program was killed.
    [[nodiscard]] const std::optional<Ending>& ending() const { return ending_; }
    /// The end of the file is the piece of a line.
    [[nodiscard]] bool is_torn() const { return is_torn_; }

private:
    [[nodiscard]] bool read_line(std::string& line);
    [[nodiscard]] bool parse_line(nlohmann::json& object);
    bool fail(std::string_view what);
    void take_heading(const nlohmann::json& line);
    [[nodiscard]] bool take_ending(const nlohmann::json& line);

    std::FILE* file_;
    Heading heading_;
    std::optional<Ending> ending_;
    std::string problem_, buffer_;
    std::size_t taken_ = 0; ///< of the buffer
    std::size_t line_number_ = 0;
    std::uint64_t calls_ = 0, failures_ = 0;
    bool is_torn_ = false;
};

} // namespace journal
