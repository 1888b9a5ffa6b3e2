#include "companion/journal/reading/values.h"

#include "companion/journal/format.h"
#include "companion/text.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace journal
{

using devlib::Kind;
using devlib::Parameter;
using nlohmann::json;

namespace
{

int digit_of(char c)
{
    constexpr std::string_view digits = "0123456789ABCDEF";
    const std::size_t at = digits.find(c);
    return at == std::string_view::npos ? -1 : static_cast<int>(at);
}

template <class T>
bool fits(const json& value)
{
    if (!value.is_number_integer())
        return false;
    if (value.is_number_unsigned())
        return value.get<std::uint64_t>() <=
               static_cast<std::uint64_t>(std::numeric_limits<T>::max());
    return value.get<std::int64_t>() >= static_cast<std::int64_t>(std::numeric_limits<T>::min());
}

bool is_element(const json& value, Kind kind)
{
    switch (kind) {
    case Kind::u8:
        return fits<std::uint8_t>(value);
    case Kind::u16:
        return fits<std::uint16_t>(value);
    case Kind::u32:
        return fits<std::uint32_t>(value);
    case Kind::i32:
        return fits<std::int32_t>(value);
    default:
        return real_of(value).has_value();
    }
}

} // namespace

std::optional<std::string> text_of(const json& value)
{
    if (value.is_string())
        return value.get<std::string>();
    if (!value.is_object() || value.size() != 1 || !value.contains(field::latin1) ||
        !value[std::string{field::latin1}].is_string())
        return std::nullopt;
    const std::string utf8 = value[std::string{field::latin1}].get<std::string>();
    std::string bytes;
    for (std::size_t i = 0; i < utf8.size(); ++i) {
        const auto first = static_cast<unsigned char>(utf8[i]);
        if (first < 0x80) {
            bytes += utf8[i];
        } else if ((first == 0xC2 || first == 0xC3) && i + 1 < utf8.size()) {
            const auto second = static_cast<unsigned char>(utf8[++i]);
            bytes += static_cast<char>((first & 3U) << 6 | (second & 0x3FU));
        } else {
            return std::nullopt; // stands for no byte
        }
    }
    return bytes;
}

std::optional<double> real_of(const json& value)
{
    if (value.is_number())
        return value.get<double>();
    if (!value.is_string())
        return std::nullopt;
    const auto found = std::ranges::find(no_numbers, value.get<std::string>());
    if (found == no_numbers.end())
        return std::nullopt;
    const auto index = static_cast<unsigned>(found - no_numbers.begin());
    const double magnitude = (index & 2U) != 0 ? std::numeric_limits<double>::infinity()
                                               : std::numeric_limits<double>::quiet_NaN();
    return (index & 1U) != 0 ? std::copysign(magnitude, -1.0) : magnitude;
}

std::optional<std::string> bytes_of(const json& value)
{
    if (!value.is_string())
        return std::nullopt;
    const std::string digits = value.get<std::string>();
    std::string bytes;
    if (digits.size() % 2 != 0)
        return std::nullopt;
    for (std::size_t i = 0; i < digits.size(); i += 2) {
        const int high = digit_of(digits[i]), low = digit_of(digits[i + 1]);
        if (high < 0 || low < 0)
            return std::nullopt;
        bytes += static_cast<char>(high << 4 | low);
    }
    return bytes;
}

bool is_value(const json& value, const Parameter& parameter)
{
    if (value.is_null()) // what a program gave that should not have
        return true;
    if (parameter.kind == Kind::text) {
        const std::optional<std::string> text = text_of(value);
        return text && (parameter.count == 0 || text->size() <= parameter.count) &&
               text->find('\0') == std::string::npos;
    }
    if (parameter.kind == Kind::bytes) {
        const std::optional<std::string> bytes = bytes_of(value);
        return bytes && (parameter.count == 0 || bytes->size() == parameter.count);
    }
    if (parameter.count == 1)
        return is_element(value, parameter.kind);
    return value.is_array() && value.size() == parameter.count &&
           std::ranges::all_of(value, [&parameter](const json& element) {
               return is_element(element, parameter.kind);
           });
}

std::string value_text(const json& value, std::size_t longest)
{
    const bool is_latin1 = value.is_object() && value.contains(field::latin1);
    const json& shown = is_latin1 ? value[std::string{field::latin1}] : value;
    std::string text = shown.dump();
    if (shown.is_string() && std::ranges::count(no_numbers, shown.get<std::string>()) > 0)
        text = shown.get<std::string>();
    if (text.size() > longest) {
        std::size_t end = longest;
        while ((static_cast<unsigned char>(text[end]) & 0xC0) == 0x80)
            --end; // no part of a character
        text = text.substr(0, end) + "...";
    }
    return companion::valid_utf8(text);
}

std::string values_text(const devlib::FunctionInfo& function, const json& values,
                        std::size_t longest)
{
    std::string text;
    for (std::size_t i = 0; i < function.parameter_count(); ++i) {
        const std::string_view name = function.parameters[i].name;
        const auto found = values.find(std::string{name});
        if (found == values.end())
            continue;
        text += text.empty() ? "" : ", ";
        text.append(name).append(1, '=').append(value_text(*found, longest));
    }
    return text;
}

std::string call_text(const devlib::FunctionInfo& function, const json& inputs, std::size_t longest)
{
    return std::string{function.name()} + '(' + values_text(function, inputs, longest) + ')';
}

} // namespace journal
