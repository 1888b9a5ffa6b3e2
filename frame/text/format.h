/// How values become text: the formatters that all commands share.
#pragma once

#include "frame/text/printf_format.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

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

/// How a number is shown: what printf's "%+9.3lfV" says.
struct NumberFormat {
    int width = 0; ///< without the unit
    int decimals = 0;
    const char* unit = "";
    bool sign = false;     ///< in front of what is not negative, too
    bool exponent = false; ///< as "%le"
};

/// The number with its unit.
[[nodiscard]] std::string number_text(double value, const NumberFormat& format);

/// The same in that many columns at most: what is longer loses decimals, then becomes an exponent.
/// "#" fills columns that are too few for any number.
[[nodiscard]] std::string number_text(double value, const NumberFormat& format, int columns);

/// A version word, major in the high byte, minor in the low one: "%d-%02d".
[[nodiscard]] std::string version_text(unsigned version);

// ---- Times ----

/// The local time now: "%04d/%02d/%02d, %02d:%02d:%02d.%03d".
[[nodiscard]] std::string timestamp();
