/// How values stand in a report, and what they mean.
#pragma once

#include "companion/report/reading/facts.h"
#include "companion/text.h"
#include "protocol/report/statistics.h"

namespace companion
{

struct Shape;
/// Fills value, unit and spread of the fact; false when the text is not of that shape.
using ParseValue = bool (*)(std::string_view text, const Shape& shape, Fact& fact);

struct Shape {
    ParseValue parse;
    const char* unit = "";
    const QuantityFormat* quantity = nullptr;
    std::size_t samples = 0;
};

[[nodiscard]] bool parse_text(std::string_view text, const Shape& shape, Fact& fact);
[[nodiscard]] bool parse_number(std::string_view text, const Shape& shape, Fact& fact);
[[nodiscard]] bool parse_number_or_off(std::string_view text, const Shape& shape, Fact& fact);
[[nodiscard]] bool parse_quantity(std::string_view text, const Shape& shape, Fact& fact);
[[nodiscard]] bool parse_code(std::string_view text, const Shape& shape, Fact& fact);
[[nodiscard]] bool parse_version(std::string_view text, const Shape& shape, Fact& fact);
[[nodiscard]] bool parse_time(std::string_view text, const Shape& shape, Fact& fact);
[[nodiscard]] bool parse_created(std::string_view text, const Shape& shape, Fact& fact);
[[nodiscard]] bool parse_statistics(std::string_view text, const Shape& shape, Fact& fact);
[[nodiscard]] bool parse_range(std::string_view text, const Shape& shape, Fact& fact);
[[nodiscard]] bool parse_transfer(std::string_view text, const Shape& shape, Fact& fact);

namespace shape
{
inline constexpr Shape text = {parse_text};
inline constexpr Shape integer = {parse_number};
inline constexpr Shape version = {parse_version}; ///< "1-05"
inline constexpr Shape code = {parse_code};       ///< "8ED6h", with a name behind it or without
inline constexpr Shape time = {parse_time, "s"};  ///< "1:35.14 sec."
inline constexpr Shape created = {parse_created}; ///< "2026/03/14, 09:26:53.624"
inline constexpr Shape period = {parse_number, "ms"};
inline constexpr Shape volts = {parse_number, "V"};
inline constexpr Shape transfer = {parse_transfer, "ms"}; ///< "5.10ms (5..6ms)"
/// A number with whatever unit, or a text.
inline constexpr Shape property = {parse_quantity};
} // namespace shape

/// Takes a number off the begin of a text; nothing when there is none.
[[nodiscard]] std::optional<double> take_number(std::string_view& text);

/// Days since 1970 of "2026/03/14, 09:26:53.624"; nothing when it is no time.
[[nodiscard]] std::optional<double> days_of(std::string_view created);

} // namespace companion
