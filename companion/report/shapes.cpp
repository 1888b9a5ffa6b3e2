#include "companion/report/shapes.h"

#include <charconv>
#include <chrono>
#include <cmath>
#include <iterator>

namespace companion
{

std::optional<double> take_number(std::string_view& text)
{
    std::string_view digits = text;
    if (digits.starts_with('+'))
        digits.remove_prefix(1);
    double value = 0.0;
    const auto [end, error] = std::from_chars(digits.data(), digits.data() + digits.size(), value,
                                              std::chars_format::fixed);
    if (error != std::errc{} || (digits.size() < text.size() && digits.starts_with('-')))
        return std::nullopt;
    text.remove_prefix(static_cast<std::size_t>(end - text.data()));
    if (*(end - 1) == '.') // of a range: "5..6"
        text = {end - 1, text.size() + 1};
    return value;
}

std::optional<double> days_of(std::string_view created)
{
    constexpr std::string_view behind[] = {"/", "/", ", ", ":", ":", ".", ""};
    unsigned number[std::size(behind)] = {};
    for (std::size_t i = 0; i < std::size(behind); ++i) {
        const auto [end, error] =
            std::from_chars(created.data(), created.data() + created.size(), number[i]);
        created.remove_prefix(static_cast<std::size_t>(end - created.data()));
        if (error != std::errc{} || number[i] > 9999 || !take(created, behind[i]))
            return std::nullopt;
    }
    const auto& [year, month, day, hour, minute, second, millisecond] = number;
    const std::chrono::year_month_day date{std::chrono::year{static_cast<int>(year)},
                                           std::chrono::month{month}, std::chrono::day{day}};
    if (!created.empty() || !date.ok() || hour > 23 || minute > 59 || second > 60)
        return std::nullopt;
    const auto days = static_cast<double>(std::chrono::sys_days{date}.time_since_epoch().count());
    return days + (hour * 3600 + minute * 60 + second + millisecond / 1000.0) / 86400;
}

namespace
{

const char* unit_in_file(const QuantityFormat& quantity)
{
    return quantity.file_unit != nullptr ? quantity.file_unit : quantity.unit;
}

/// A number and the unit behind it.
std::optional<double> take_quantity(std::string_view& text, std::string_view unit)
{
    const std::optional<double> value = take_number(text);
    return value && take(text, unit) ? value : std::nullopt;
}

/// A deviation may be none, and has no unit then.
std::optional<double> take_deviation(std::string_view& text, std::string_view unit)
{
    return take(text, "nan") ? std::optional{std::nan("")} : take_quantity(text, unit);
}

bool set(Fact& fact, std::optional<double> value, std::string_view rest, std::string_view unit)
{
    if (!value || !rest.empty())
        return false;
    fact.value = value;
    fact.unit = unit;
    return true;
}

} // namespace

bool parse_text(std::string_view, const Shape&, Fact&)
{
    return true;
}

bool parse_number(std::string_view text, const Shape& shape, Fact& fact)
{
    const std::optional<double> value = take_quantity(text, shape.unit);
    std::string_view unit = shape.unit;
    if (unit.starts_with(' '))
        unit.remove_prefix(1);
    return set(fact, value, text, unit);
}

bool parse_number_or_off(std::string_view text, const Shape& shape, Fact& fact)
{
    if (text != "off")
        return parse_number(text, shape, fact);
    fact.unit = shape.unit;
    return true;
}

bool parse_quantity(std::string_view text, const Shape&, Fact& fact)
{
    if (const std::optional<double> value = take_number(text)) {
        fact.value = value;
        fact.unit = text;
    }
    return true;
}

bool parse_code(std::string_view text, const Shape&, Fact& fact)
{
    unsigned long value = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value, 16);
    text.remove_prefix(static_cast<std::size_t>(end - text.data()));
    return error == std::errc{} && take(text, "h") && set(fact, static_cast<double>(value), {}, "");
}

bool parse_version(std::string_view text, const Shape&, Fact&)
{
    const std::optional<double> major = take_number(text);
    return major && take(text, "-") && take_number(text) && text.empty();
}

bool parse_time(std::string_view text, const Shape& shape, Fact& fact)
{
    double seconds = 0.0;
    for (;;) {
        const std::optional<double> part = take_number(text);
        if (!part)
            return false;
        seconds = seconds * 60 + *part;
        if (!take(text, ":"))
            break;
    }
    return text == " sec." && set(fact, seconds, {}, shape.unit);
}

bool parse_created(std::string_view text, const Shape&, Fact&)
{
    return days_of(text).has_value();
}

bool parse_statistics(std::string_view text, const Shape& shape, Fact& fact)
{
    const QuantityFormat& quantity = *shape.quantity;
    const std::string_view unit = unit_in_file(quantity);
    const std::string_view fine = quantity.deviation_unit;
    const double factor = quantity.per_unit / quantity.deviation_per_unit;
    const std::optional<double> mean = take_quantity(text, unit);
    if (!mean || !take(text, " " PLUS_MINUS_IN_FILE " "))
        return false;
    const std::optional<double> deviation = take_deviation(text, fine);
    if (!deviation || !take(text, " (+"))
        return false;
    const std::optional<double> above = take_deviation(text, fine);
    if (!above || !take(text, ", -"))
        return false;
    const std::optional<double> below = take_deviation(text, fine);
    if (!below || !take(text, ")"))
        return false;
    fact.spread = Spread{*deviation * factor, *above * factor, *below * factor};
    fact.samples = shape.samples;
    return set(fact, mean, text, unit);
}

bool parse_range(std::string_view text, const Shape& shape, Fact& fact)
{
    const std::string_view unit = unit_in_file(*shape.quantity);
    const std::optional<double> lowest = take_number(text);
    if (!lowest || !take(text, ".."))
        return false;
    const std::optional<double> highest = take_quantity(text, unit);
    if (!highest || !take(text, " (") || !take_quantity(text, unit) || !take(text, ")"))
        return false;
    const double middle = (*lowest + *highest) / 2;
    fact.spread = Spread{std::nan(""), *highest - middle, middle - *lowest};
    fact.samples = shape.samples;
    return set(fact, middle, text, unit);
}

bool parse_transfer(std::string_view text, const Shape& shape, Fact& fact)
{
    const std::optional<double> mean = take_quantity(text, shape.unit);
    if (!mean || !take(text, " ("))
        return false;
    const std::optional<double> shortest = take_number(text);
    if (!shortest || !take(text, ".."))
        return false;
    const std::optional<double> longest = take_quantity(text, shape.unit);
    if (!longest || !take(text, ")"))
        return false;
    fact.spread = Spread{std::nan(""), *longest - *mean, *mean - *shortest};
    fact.samples = shape.samples;
    return set(fact, mean, text, shape.unit);
}

} // namespace companion
