#include "frame/format.h"

#include "frame/numbers.h"
#include "frame/platform/platform.h"
#include "frame/terminal/characters.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <cmath>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <cstring>

// ---- Colours of values ----

Color deviation_color(double value, double nominal, double tolerance_percent)
{
    constexpr double guard = 1e-9; // per cent: 24.48 V is 24 V + 2 % for a reader, not for doubles
    if (nominal == 0.0 || !std::isfinite(value))
        return Color::value;
    const double deviation = (value / nominal - 1.0) * 100.0;
    if (deviation > tolerance_percent + guard)
        return Color::above;
    return deviation < -tolerance_percent - guard ? Color::below : Color::value;
}

Color range_color(double value, double low, double high)
{
    if (!std::isfinite(value))
        return Color::value;
    if (value > high)
        return Color::above;
    return value < low ? Color::below : Color::value;
}

// ---- Words ----

Word active_or_off(bool active)
{
    return active ? Word{"active", Color::good} : Word{"off   ", Color::disabled};
}

Word ok_fail_or_disabled(bool enabled, bool good)
{
    if (!enabled)
        return {"dis.", Color::disabled};
    return ok_or_fail(good);
}

const char* led_color_name(bool red, bool green, bool blue)
{
    static constexpr const char* names[] = {"Black", "Red",  "Green", "Yellow",
                                            "Blue",  "Pink", "Cyan",  "White"};
    return names[(red ? 1u : 0u) + (green ? 2u : 0u) + (blue ? 4u : 0u)];
}

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

std::string escaped(std::string_view text)
{
    std::string result;
    for (const char byte : text)
        result += escaped_byte(static_cast<unsigned char>(byte));
    return result;
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

std::string shortened_path(std::string_view path, std::size_t width)
{
    constexpr std::string_view dots = "..";
    std::u32string characters; // a cut must not divide one
    std::string shortened;
    const auto is_separator = [](char32_t c) { return c == U'\\' || c == U'/'; };
    for (std::string_view rest = path; !rest.empty();)
        characters += take_character(rest);
    if (characters.size() <= width)
        return std::string{path};

    const auto append = [&shortened](std::u32string_view part) {
        for (const char32_t character : part)
            append_utf8(shortened, character);
    };
    const std::u32string_view all = characters;
    const auto head_end =
        static_cast<std::size_t>(std::find_if(all.begin(), all.end(), is_separator) - all.begin());
    const std::size_t head = head_end + 1; // the separator belongs to it
    for (std::size_t tail = head; tail < all.size(); ++tail) {
        if (is_separator(all[tail]) && head + dots.size() + (all.size() - tail) <= width) {
            append(all.substr(0, head));
            shortened += dots;
            append(all.substr(tail));
            return shortened;
        }
    }
    shortened = dots.substr(0, std::min(width, dots.size()));
    append(all.substr(all.size() - (width - shortened.size())));
    return shortened;
}

std::string shortened_path_padded(std::string_view path, std::size_t width)
{
    std::string shortened = shortened_path(path, width);
    std::size_t length = 0;
    for (std::string_view rest = shortened; !rest.empty(); ++length)
        (void)take_character(rest);
    return shortened.append(width - std::min(length, width), ' ');
}

// ---- Numbers ----

std::string significant_digits(const char* format, double value, int digits)
{
    const double magnitude = std::abs(value);
    int precision = digits - 1;
    if (magnitude > 0.0 && std::isfinite(magnitude)) {
        double power = 1.0;
        while (magnitude < 1.0 / power) {
            power *= 10.0;
            ++precision;
        }
        while (magnitude >= power * 10.0) {
            power *= 10.0;
            --precision;
        }
    }
    return formatted(format, std::max(precision, 0), value);
}

std::string manufacturing_date_text(unsigned year, unsigned week)
{
    return formatted("CW%02u %u", week, year);
}

std::string version_text(unsigned version)
{
    return formatted("%d-%02d", static_cast<int>(version >> 8), static_cast<int>(version & 0xFF));
}

// ---- Times ----

namespace
{

/// Durations are never negative, and always numbers.
double positive(double seconds)
{
    return seconds > 0.0 && std::isfinite(seconds) ? seconds : 0.0;
}

/// The nearest whole number of a value that is not negative. (The mathematics library would be
/// loaded at every start of the program for this alone.)
double nearest_whole(double value)
{
    constexpr double whole_from_here = 0x1p52;
    if (value >= whole_from_here)
        return value;
    const auto whole = static_cast<double>(static_cast<std::uint64_t>(value));
    return value - whole >= 0.5 ? whole + 1.0 : whole;
}

} // namespace

std::string duration_hms(double seconds)
{
    const auto tenths = static_cast<unsigned long>(nearest_whole(positive(seconds) * 10.0));
    return formatted("%2lu:%02lu:%04.1lf", tenths / 36000, tenths / 600 % 60,
                     static_cast<double>(tenths % 600) * 0.1);
}

std::string duration_text(const char* format, double seconds)
{
    // The conversion: "%" [width] ["." decimals] ["l"] "f".
    const char* const point = std::strchr(format, '.');
    const char* const letter = std::strpbrk(format, "fF");
    const bool has_decimals = point != nullptr && (letter == nullptr || point < letter);
    const int decimals = has_decimals ? std::atoi(point + 1) : 6; // as printf reads it
    double scale = 1.0;
    for (int decimal = 0; decimal < decimals; ++decimal)
        scale *= 10.0;
    seconds = positive(seconds);
    const double rounded = nearest_whole(seconds * scale) / scale;
    if (rounded < 60.0 || letter == nullptr)
        return formatted(format, seconds);

    const auto whole_minutes = static_cast<unsigned>(rounded / 60.0);
    const double rest = std::max(rounded - 60.0 * whole_minutes, 0.0);
    const int width = has_decimals && decimals > 0 ? decimals + 3 : 2;
    const std::string seconds_format =
        "%0" + std::to_string(width) + (has_decimals ? point : letter);
    const std::string seconds_part = formatted(seconds_format.c_str(), rest);
    if (whole_minutes < 60)
        return formatted("%u:", whole_minutes) + seconds_part;
    return formatted("%u:%02u:", whole_minutes / 60, whole_minutes % 60) + seconds_part;
}

std::string uptime_text(std::uint32_t seconds, unsigned milliseconds)
{
    const unsigned hours = seconds / 3600;
    const unsigned minutes = seconds % 3600 / 60;
    const unsigned rest = seconds % 60;
    const unsigned hundredths = milliseconds / 10;
    if (hours != 0)
        return formatted("%u:%02u:%02u.%02u sec.", hours, minutes, rest, hundredths);
    if (minutes != 0)
        return formatted("%u:%02u.%02u sec.", minutes, rest, hundredths);
    return formatted("%u.%02u sec.", rest, hundredths);
}

std::string timestamp()
{
    const platform::LocalTime now = platform::local_time();
    return formatted("%04d/%02d/%02d, %02d:%02d:%02d.%03d", now.year, now.month, now.day, now.hour,
                     now.minute, now.second, now.millisecond);
}

// ---- Spinner ----

void Spinner::step()
{
    constexpr std::array<const char*, 4> bars = {"-", "/", "|", "\\"};
    const unsigned steps_per_turn = std::max(divider, 1u);
    if (++steps % steps_per_turn != 0)
        return;
    const unsigned turn = steps / steps_per_turn;
    console.print_at(place, Color::label, "%s", bars[turn - 1]);
    if (turn == bars.size())
        steps = 0;
}
