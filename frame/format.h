/// How values become text: the formatters that all commands share.
#pragma once

#include "frame/printf_format.h"
#include "frame/terminal/colors.h"
#include "frame/terminal/console.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

// ---- Colours of values ----

/// Colour of a value by its deviation from the nominal value, (value / nominal - 1) x 100 %: above
/// the tolerance, below it, or good. Exactly the tolerance is good, a nominal of 0 always is, and
/// so is what is no finite number.
[[nodiscard]] Color deviation_color(double value, double nominal, double tolerance_percent);

/// Colour of a value by the range that it should be in; the limits belong to the range.
[[nodiscard]] Color range_color(double value, double low, double high);

/// What stands behind a temperature on the console: the degree sign is one byte of the console's
/// code page.
#define DEGREES_C                                                                                  \
    "\xF8"                                                                                         \
    "C"

// ---- Words ----

inline constexpr Word on_word = {" on", Color::good};
inline constexpr Word off_word = {"off", Color::bad};
inline constexpr Word yes_word = {"yes", Color::good};
inline constexpr Word no_word = {" no", Color::bad};
inline constexpr Word ok_word = {"OK  ", Color::good};
inline constexpr Word fail_word = {"fail", Color::bad};
inline constexpr Word enabled_word = {"enabled", Color::value};
inline constexpr Word disabled_word = {"disabled", Color::disabled};

[[nodiscard]] constexpr const Word& on_off(bool on)
{
    return on ? on_word : off_word;
}

[[nodiscard]] constexpr const Word& yes_no(bool yes)
{
    return yes ? yes_word : no_word;
}

[[nodiscard]] constexpr const Word& ok_or_fail(bool good)
{
    return good ? ok_word : fail_word;
}

[[nodiscard]] constexpr const Word& enabled_or_disabled(bool enabled)
{
    return enabled ? enabled_word : disabled_word;
}

/// "active", or "off" padded to the same width.
[[nodiscard]] Word active_or_off(bool active);

/// "OK  " or "fail"; "dis." when the thing is not enabled at all.
[[nodiscard]] Word ok_fail_or_disabled(bool enabled, bool good);

/// Name of an LED colour: "Black", "Red", "Green", "Yellow", "Blue", "Pink", "Cyan", "White".
[[nodiscard]] const char* led_color_name(bool red, bool green, bool blue);

// ---- Characters and texts ----

/// What printf would print, however long.
[[nodiscard]] std::string formatted(const char* format, ...) PRINTF_FORMAT(1, 2);

/// A key code as the displays echo it: "'%c' " for 33..127, four blanks for 0, else "%03Xh".
[[nodiscard]] std::string key_text(int code);

/// One byte with its C escape when it has one: \0 \a \b \t \n \v \f \r \e, \xNN from 80h on.
[[nodiscard]] std::string escaped_byte(unsigned char byte);

/// A text from the device, a file or the command line, fit for a line of the console or a report:
/// control characters are escaped, valid UTF-8 and other high bytes stay. Null is the empty text.
[[nodiscard]] std::string printable(std::string_view text);
[[nodiscard]] std::string printable(const char* text);

/// The `count` low bits of a value from the highest down, in groups of four from the right, and
/// "b": 8 bits of A5h are "1010 0101b", 5 bits of 1Fh "1 1111b".
[[nodiscard]] std::string bits_text(std::uint32_t value, int count);

// ---- Numbers ----

/// A manufacturing date, the calendar week first: "CW07 2024".
[[nodiscard]] std::string manufacturing_date_text(unsigned year, unsigned week);

/// A version word, major in the high byte, minor in the low one: "%d-%02d".
[[nodiscard]] std::string version_text(unsigned version);

// ---- Times ----

/// The uptime and operation time of everything: "%d.%02d sec.", from a minute on
/// "%d:%02d.%02d sec.", from an hour on "%d:%02d:%02d.%02d sec."; hundredths are cut, hours never
/// become days.
[[nodiscard]] std::string uptime_text(std::uint32_t seconds, unsigned milliseconds);

/// The local time now: "%04d/%02d/%02d, %02d:%02d:%02d.%03d".
[[nodiscard]] std::string timestamp();
