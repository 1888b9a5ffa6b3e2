#include "companion/journal/writer.h"

#include "companion/journal/format.h"
#include "companion/utf8.h"

#include <algorithm>
#include <charconv>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <cstring>

namespace journal
{

using devlib::Kind;
using devlib::Parameter;
using devlib::Way;

namespace
{

template <class T>
void append_number(std::string& line, T number)
{
    std::array<char, 32> digits;
    char* const end = std::to_chars(digits.data(), digits.data() + digits.size(), number).ptr;
    line.append(digits.data(), end);
}

template <class T>
void append_real(std::string& line, T number)
{
    if (!std::isfinite(number)) {
        const unsigned index = (std::signbit(number) ? 1U : 0U) | (std::isinf(number) ? 2U : 0U);
        line.append(1, '"').append(no_numbers[index]).append(1, '"');
        return;
    }
    append_number(line, number);
    if (number == 0 && std::signbit(number))
        line += ".0"; // readers take "-0" for a whole number, which has no sign
}

void append_hexadecimal(std::string& line, std::span<const unsigned char> bytes)
{
    constexpr std::string_view digits = "0123456789ABCDEF";
    line += '"';
    for (const unsigned char byte : bytes) {
        line += digits[byte >> 4];
        line += digits[byte & 15];
    }
    line += '"';
}

/// The bytes of a string: as they are, or each as the character of that number.
void append_quoted(std::string& line, std::string_view bytes, bool as_latin1)
{
    line += '"';
    for (const char c : bytes) {
        const auto byte = static_cast<unsigned char>(c);
        if (byte < ' ' || byte == 0x7F || (as_latin1 && byte >= 0x80)) {
            std::array<char, 8> escape;
            std::snprintf(escape.data(), escape.size(), "\\u%04x", unsigned{byte});
            line += escape.data();
            continue;
        }
        if (c == '"' || c == '\\')
            line += '\\';
        line += c;
    }
    line += '"';
}

template <class T>
T element(const void* values, std::size_t index)
{
    T value;
    std::memcpy(&value, static_cast<const char*>(values) + index * sizeof value, sizeof value);
    return value;
}

void append_element(std::string& line, Kind kind, const void* values, std::size_t index)
{
    switch (kind) {
    case Kind::u8:
        return append_number(line, element<std::uint8_t>(values, index));
    case Kind::u16:
        return append_number(line, element<std::uint16_t>(values, index));
    case Kind::u32:
        return append_number(line, element<std::uint32_t>(values, index));
    case Kind::i32:
        return append_number(line, element<std::int32_t>(values, index));
    case Kind::real32:
        return append_real(line, element<float>(values, index));
    default:
        return append_real(line, element<double>(values, index));
    }
}

void append_value(std::string& line, const Call& call, std::size_t index)
{
    const Parameter& parameter = call.info().parameters[index];
    const void* const value = call.arguments[index].value;
    const std::size_t count = value != nullptr ? element_count(call, index) : 0;
    if (value == nullptr || (parameter.way == Way::in && count > most_input_bytes)) {
        line += "null";
        return;
    }
    if (parameter.kind == Kind::text) {
        append_text(line, {static_cast<const char*>(value), count});
    } else if (parameter.kind == Kind::bytes) {
        append_hexadecimal(line, {static_cast<const unsigned char*>(value), count});
    } else if (parameter.count == 1) {
        append_element(line, parameter.kind, value, 0);
    } else {
        for (std::size_t i = 0; i < count; ++i) {
            line += i == 0 ? '[' : ',';
            append_element(line, parameter.kind, value, i);
        }
        line += ']';
    }
}

/// The values of all parameters that go that way, as an object.
void append_values(std::string& line, const Call& call, Way other_way)
{
    line += '{';
    for (std::size_t i = 0; i < call.arguments.size(); ++i) {
        const Parameter& parameter = call.info().parameters[i];
        if (parameter.way == other_way)
            continue;
        if (line.back() != '{')
            line += ',';
        append_name(line, parameter.name);
        append_value(line, call, i);
    }
    line += '}';
}

struct CalendarTime {
    int year;
    unsigned month, day;
    long hour, minute, second, microsecond;
};

CalendarTime local_time(Moment moment)
{
    namespace c = std::chrono;
    const c::sys_time<c::microseconds> local{c::microseconds{moment.us} +
                                             c::minutes{moment.offset_minutes}};
    const auto day = c::floor<c::days>(local);
    const c::year_month_day date{day};
    const c::hh_mm_ss time{local - day};
    return {.year = static_cast<int>(date.year()),
            .month = static_cast<unsigned>(date.month()),
            .day = static_cast<unsigned>(date.day()),
            .hour = static_cast<long>(time.hours().count()),
            .minute = static_cast<long>(time.minutes().count()),
            .second = static_cast<long>(time.seconds().count()),
            .microsecond = static_cast<long>(time.subseconds().count())};
}

} // namespace

std::size_t element_count(const Call& call, std::size_t index)
{
    const Parameter& parameter = call.info().parameters[index];
    const void* const value = call.arguments[index].value;
    if (parameter.kind == Kind::text) {
        const auto* const text = static_cast<const char*>(value);
        if (parameter.count == 0)
            return std::strlen(text);
        const void* const end = std::memchr(text, '\0', parameter.count);
        return end != nullptr ? static_cast<std::size_t>(static_cast<const char*>(end) - text)
                              : parameter.count;
    }
    if (parameter.count != 0)
        return parameter.count;
    return element<std::uint32_t>(call.arguments[index - 1].value, 0); // told by the one before
}

std::string time_text(Moment moment)
{
    const CalendarTime time = local_time(moment);
    const int offset = std::abs(moment.offset_minutes);
    std::string text;
    // For each line of a journal; the formats of printf() would take half of a line's time.
    const auto add = [&text](long number, std::size_t digits, char behind) {
        text.append(digits, '0');
        for (std::size_t at = text.size(); number != 0 && digits > 0; number /= 10, --digits)
            text[--at] = static_cast<char>('0' + number % 10);
        text += behind;
    };
    add(time.year, 4, '-');
    add(static_cast<long>(time.month), 2, '-');
    add(static_cast<long>(time.day), 2, 'T');
    add(time.hour, 2, ':');
    add(time.minute, 2, ':');
    add(time.second, 2, '.');
    add(time.microsecond, 6, moment.offset_minutes < 0 ? '-' : '+');
    add(offset / 60, 2, ':');
    add(offset % 60, 2, ' ');
    text.pop_back();
    return text;
}

std::string default_name(const std::vector<std::string>& command_line, Moment moment)
{
    const CalendarTime time = local_time(moment);
    unsigned port = 0;
    if (command_line.size() > 1) {
        const std::string& text = command_line[1];
        if (std::from_chars(text.data(), text.data() + text.size(), port).ptr !=
            text.data() + text.size())
            port = 0;
    }
    std::string name = "journal-";
    if (port > 0 && port < 256)
        name += "COM" + std::to_string(port) + '-';
    std::array<char, 64> text;
    std::snprintf(text.data(), text.size(), "%04d-%02u-%02u-%02ld%02ld%02ld.jsonl", time.year,
                  time.month, time.day, time.hour, time.minute, time.second);
    return name + text.data();
}

std::string first_line(const Beginning& beginning)
{
    std::string line = "{";
    const auto add = [&line](std::string_view name) {
        if (line.size() > 1)
            line += ',';
        append_name(line, name);
    };
    const auto add_text = [&](std::string_view name, std::string_view text) {
        add(name);
        append_text(line, text);
    };
    add(field::schema);
    append_number(line, schema_version);
    const std::vector<std::string>& words = beginning.command_line;
    add_text(field::program, words.empty() ? "" : words[0]);
    add(field::arguments);
    line += '[';
    for (std::size_t i = 1; i < words.size(); ++i) {
        if (i > 1)
            line += ',';
        append_text(line, words[i]);
    }
    line += ']';
    add_text(field::library, beginning.library);
    add(field::library_version);
    append_number(line, beginning.library_version);
    add_text(field::system, KOV_SYSTEM);
    add(field::process);
    append_number(line, beginning.process);
    add_text(field::time, time_text(beginning.time));
    return line += "}\n";
}

std::string last_line(Moment time, const Totals& totals)
{
    std::string line = "{";
    append_name(line, field::end);
    append_text(line, time_text(time));
    const auto add = [&line](std::string_view name, auto number) {
        line += ',';
        append_name(line, name);
        append_number(line, number);
    };
    add(field::calls, totals.calls);
    add(field::failures, totals.failures);
    add(field::duration, totals.us);
    return line += "}\n";
}

void append_name(std::string& line, std::string_view name)
{
    line.append(1, '"').append(name).append("\":");
}

void append_text(std::string& line, std::string_view text)
{
    if (companion::is_utf8(text))
        return append_quoted(line, text, false);
    line += '{';
    append_name(line, field::latin1);
    append_quoted(line, text, true);
    line += '}';
}

void append_inputs(std::string& line, const Call& call)
{
    append_name(line, field::function);
    append_text(line, call.info().name());
    line += ',';
    append_name(line, field::inputs);
    append_values(line, call, Way::out);
}

void append_results(std::string& line, const Call& call, const Returned& returned)
{
    switch (call.info().returns) {
    case devlib::Returns::version:
        append_name(line, field::version);
        return append_number(line, returned.version);
    case devlib::Returns::text:
        append_name(line, field::text);
        if (returned.text == nullptr)
            line += "null";
        else
            append_text(line, returned.text);
        return;
    case devlib::Returns::status:
        break;
    }
    append_name(line, field::status);
    append_number(line, returned.status);
    if (returned.status != 0)
        return;
    line += ',';
    append_name(line, field::outputs);
    append_values(line, call, Way::in);
}

} // namespace journal
