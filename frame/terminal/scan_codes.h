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
inline constexpr ScanCodes up = {0x48, 0, 0x8D, 0x98};
inline constexpr ScanCodes down = {0x50, 0, 0x91, 0xA0};
inline constexpr ScanCodes left = {0x4B, 0, 0x73, 0x9B};
inline constexpr ScanCodes right = {0x4D, 0, 0x74, 0x9D};
inline constexpr ScanCodes home = {0x47, 0, 0x77, 0x97};
inline constexpr ScanCodes end = {0x4F, 0, 0x75, 0x9F};
inline constexpr ScanCodes page_up = {0x49, 0, 0x84, 0x99};
inline constexpr ScanCodes page_down = {0x51, 0, 0x76, 0xA1};
inline constexpr ScanCodes insert = {0x52, 0, 0x92, 0xA2};
inline constexpr ScanCodes remove = {0x53, 0, 0x93, 0xA3};
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
