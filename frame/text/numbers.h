/// Readers of the numbers that the user typed.
#pragma once

#include <cstdint>
#include <string_view>

/// An integer in decimal, or in hexadecimal or binary with "h" or "b" (lower case) behind it.
/// Leading blanks and a sign are accepted. Nothing may follow. A number beyond the range becomes
/// the nearest that fits; a negative one wraps round, as unsigned numbers do. False when there is
/// none.
[[nodiscard]] bool read_unsigned(std::string_view text, std::uint32_t& value);

/// A real number at the start of the text; what follows it is ignored. False when there is none,
/// and for what is no finite number.
[[nodiscard]] bool read_real(const char* text, double& value);

/// A decimal 16-bit number at the start of the text; what follows it is ignored, of a longer
/// number the low 16 bits remain. False when there is none.
[[nodiscard]] bool read_port_number(std::string_view text, std::uint16_t& value);
