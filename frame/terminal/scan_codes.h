/// The keys of a PC keyboard by the names that terminals have for them, and their scan codes.
#pragma once

enum class Modifier { none, shift, alt, control, other };

/// The modifier parameter of a sequence: 1 + Shift + 2 Alt + 4 Ctrl.
[[nodiscard]] Modifier modifier_of(int parameter);

/// Scan codes of a key: alone, with Shift, Ctrl and Alt; 0 = means nothing here. Shift with a
/// cursor key has no code of its own and must not pass for the key alone.
struct ScanCodes {
    int plain = 0, shift = 0, control = 0, alt = 0;

    /// The code with that modifier, or 0.
    [[nodiscard]] int with(Modifier modifier) const;
};

namespace scan_code
{
inline constexpr int back_tab = 0x0F;
inline constexpr int control_at = 0x03;
} // namespace scan_code

/// F1 to F12 by their number.
[[nodiscard]] ScanCodes function_key(int number);

/// The cursor keys, Home, End and F1 to F4 by the letter that ends their sequence; no codes for
/// another letter.
[[nodiscard]] ScanCodes cursor_key(char letter);

/// The keys whose sequence ends in "~" and tells them by number; no codes for another number.
[[nodiscard]] ScanCodes numbered_key(int number);

/// Scan code of Alt with a letter, in either case.
[[nodiscard]] int alt_letter(char letter);
