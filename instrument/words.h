/// The words and units in which the instrument's values are told.
#pragma once

#include "frame/terminal/colors.h"

#include <cstdint>
#include <string>

/// What stands behind a temperature on the console: the degree sign is one byte of the console's
/// code page.
#define DEGREES_C                                                                                  \
    "\xF8"                                                                                         \
    "C"

inline constexpr ColoredText on_word = {" on", Color::good};
inline constexpr ColoredText off_word = {"off", Color::bad};
inline constexpr ColoredText yes_word = {"yes", Color::good};
inline constexpr ColoredText no_word = {" no", Color::bad};
inline constexpr ColoredText ok_word = {"OK  ", Color::good};
inline constexpr ColoredText fail_word = {"fail", Color::bad};
inline constexpr ColoredText enabled_word = {"enabled", Color::value};
inline constexpr ColoredText disabled_word = {"disabled", Color::disabled};

[[nodiscard]] constexpr const ColoredText& on_off(bool on)
{
    return on ? on_word : off_word;
}

[[nodiscard]] constexpr const ColoredText& yes_no(bool yes)
{
    return yes ? yes_word : no_word;
}

[[nodiscard]] constexpr const ColoredText& ok_or_fail(bool good)
{
    return good ? ok_word : fail_word;
}

[[nodiscard]] constexpr const ColoredText& enabled_or_disabled(bool enabled)
{
    return enabled ? enabled_word : disabled_word;
}

/// "active", or "off" padded to the same width.
[[nodiscard]] ColoredText active_or_off(bool active);

/// "OK  " or "fail"; "dis." when the thing is not enabled at all.
[[nodiscard]] ColoredText ok_fail_or_disabled(bool enabled, bool good);

/// Name of an LED colour: "Black", "Red", "Green", "Yellow", "Blue", "Pink", "Cyan", "White".
[[nodiscard]] const char* led_color_name(bool red, bool green, bool blue);

/// The colour in which the word "LED" is shown for the LED's own colours.
constexpr Color led_color(bool red, bool green, bool blue)
{
    return static_cast<Color>(8 + (red ? 4 : 0) + (green ? 2 : 0) + (blue ? 1 : 0));
}

/// A manufacturing date, the calendar week first: "CW07 2024".
[[nodiscard]] std::string manufacturing_date_text(unsigned year, unsigned week);

/// The uptime and operation time of everything: "%d.%02d sec.", from a minute on
/// "%d:%02d.%02d sec.", from an hour on "%d:%02d:%02d.%02d sec."; hundredths are cut, hours never
/// become days.
[[nodiscard]] std::string uptime_text(std::uint32_t seconds, unsigned milliseconds);
