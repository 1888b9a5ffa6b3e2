#include "frame/text/format.h"

#include "frame/platform/platform.h"
#include "frame/terminal/characters.h"

#include <array>
#include <cmath>
#include <cstdarg>
#include <cstdio>

// ---- Characters and texts ----

std::string formatted(const char* format, ...)
{
    std::array<char, 128> text = {};
    va_list arguments;
    va_list again;
    va_start(arguments, format);
    va_copy(again, arguments);
    const int length = std::vsnprintf(text.data(), text.size(), format, arguments);
    va_end(arguments);
    std::string result;
    if (length >= static_cast<int>(text.size())) {
        result.resize(static_cast<std::size_t>(length) + 1);
        std::vsnprintf(result.data(), result.size(), format, again);
        result.pop_back();
    } else {
        result = text.data();
    }
    va_end(again);
    return result;
}

std::string key_text(int code)
{
    if (code == 0)
        return "    ";
    return code >= 33 && code <= 127 ? formatted("'%c' ", code) : formatted("%03Xh", code);
}

std::string escaped_byte(unsigned char byte)
{
    switch (byte) {
    case 0:
        return "\\0";
    case '\a':
        return "\\a";
    case '\b':
        return "\\b";
    case '\t':
        return "\\t";
    case '\n':
        return "\\n";
    case '\v':
        return "\\v";
    case '\f':
        return "\\f";
    case '\r':
        return "\\r";
    case 27:
        return "\\e";
    default:
        return byte >= 0x80 ? formatted("\\x%02X", byte) : std::string(1, static_cast<char>(byte));
    }
}

std::string printable(std::string_view text)
{
    std::string result;
    while (!text.empty()) {
        const std::string_view before = text;
        const char32_t character = take_character(text);
        const std::string_view bytes = before.substr(0, before.size() - text.size());
        if (!is_control(character)) {
            result += bytes;
            continue;
        }
        const std::string escaped = escaped_byte(static_cast<unsigned char>(character));
        result +=
            escaped.size() > 1 ? escaped : formatted("\\x%02X", static_cast<unsigned>(character));
    }
    return result;
}

std::string printable(const char* text)
{
    return text == nullptr ? std::string{} : printable(std::string_view{text});
}

std::string bits_text(std::uint32_t value, int count)
{
    std::string text;
    for (int bit = count - 1; bit >= 0; --bit) {
        text += (value >> bit & 1u) != 0 ? '1' : '0';
        if (bit > 0 && bit % 4 == 0)
            text += ' ';
    }
    return text + 'b';
}

// ---- Numbers ----

std::string number_text(double value, const NumberFormat& format)
{
    const char* const text = format.exponent ? (format.sign ? "%+*.*le%s" : "%*.*le%s")
                                             : (format.sign ? "%+*.*lf%s" : "%*.*lf%s");
    return formatted(text, format.width, format.decimals, value, format.unit);
}

std::string number_text(double value, const NumberFormat& format, int columns)
{
    const auto room = static_cast<std::size_t>(columns);
    std::string text = number_text(value, format);
    if (text.size() <= room)
        return text;
    for (const bool exponent : {format.exponent, true}) {
        NumberFormat shorter = format;
        shorter.width = 0;
        shorter.exponent = exponent;
        for (; shorter.decimals >= 0; --shorter.decimals) {
            text = number_text(value, shorter);
            if (text.size() <= room)
                return text;
        }
    }
    if (const std::size_t sign = text.find("e+"); sign != std::string::npos)
        text.erase(sign + 1, 1); // 1e300
    return text.size() <= room ? text : std::string(room, '#');
}

std::string version_text(unsigned version)
{
    return formatted("%d-%02d", static_cast<int>(version >> 8), static_cast<int>(version & 0xFF));
}

// ---- Times ----

std::string timestamp()
{
    const platform::LocalTime now = platform::local_time();
    return formatted("%04d/%02d/%02d, %02d:%02d:%02d.%03d", now.year, now.month, now.day, now.hour,
                     now.minute, now.second, now.millisecond);
}
