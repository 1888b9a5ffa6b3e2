#include "frame/platform/windows/keys.h"

#include "frame/platform/windows/screen.h"

#include <utility>

namespace
{

/// Keys that are no characters: the number and the letter of their sequence.
struct KeySequence {
    WORD key;
    int number;
    char final;
};

// clang-format off
constexpr KeySequence key_sequences[] = {
    {VK_UP,     1, 'A'}, {VK_DOWN,   1, 'B'}, {VK_RIGHT,  1, 'C'}, {VK_LEFT,  1, 'D'},
    {VK_END,    1, 'F'}, {VK_HOME,   1, 'H'},
    {VK_INSERT, 2, '~'}, {VK_DELETE, 3, '~'}, {VK_PRIOR,  5, '~'}, {VK_NEXT,  6, '~'},
    {VK_F1,     1, 'P'}, {VK_F2,     1, 'Q'}, {VK_F3,     1, 'R'}, {VK_F4,    1, 'S'},
    {VK_F5,    15, '~'}, {VK_F6,    17, '~'}, {VK_F7,    18, '~'}, {VK_F8,   19, '~'},
    {VK_F9,    20, '~'}, {VK_F10,   21, '~'}, {VK_F11,   23, '~'}, {VK_F12,  24, '~'},
};
// clang-format on

} // namespace

std::string ConsoleKeys::character(wchar_t unit)
{
    if (IS_HIGH_SURROGATE(unit)) {
        high_surrogate_ = unit;
        return "";
    }
    const wchar_t pair[] = {std::exchange(high_surrogate_, L'\0'), unit};
    if (!IS_LOW_SURROGATE(unit))
        return utf8({&unit, 1});
    return pair[0] != 0 ? utf8({pair, 2}) : "";
}

std::string ConsoleKeys::single(const KEY_EVENT_RECORD& record)
{
    const WORD key = record.wVirtualKeyCode;
    const wchar_t unit = record.uChar.UnicodeChar;
    if (record.bKeyDown == 0) // a character that was composed of digits comes with the end of Alt
        return key == VK_MENU && unit != 0 ? character(unit) : "";
    const DWORD state = record.dwControlKeyState;
    const bool shift = (state & SHIFT_PRESSED) != 0;
    const bool alt = (state & (LEFT_ALT_PRESSED | RIGHT_ALT_PRESSED)) != 0;
    const bool control = (state & (LEFT_CTRL_PRESSED | RIGHT_CTRL_PRESSED)) != 0;
    for (const KeySequence& known : key_sequences) {
        if (known.key == key)
            return "\033[" + std::to_string(known.number) + ';' +
                   std::to_string(1 + (shift ? 1 : 0) + (alt ? 2 : 0) + (control ? 4 : 0)) +
                   known.final;
    }
    if (key == VK_ESCAPE)
        return "\033[27u"; // never the beginning of a sequence
    if (key == VK_TAB && (shift || alt || control))
        return shift && !alt && !control ? "\033[Z" : "";
    if (alt && control && unit < L' ')
        return "";
    if (alt && !control) // with Ctrl it is AltGr, which makes characters
        return key >= 'A' && key <= 'Z' ? std::string{'\033', static_cast<char>(key - 'A' + 'a')}
                                        : "";
    if (unit == 0)
        return key == '2' && control ? std::string(1, '\0') : ""; // Ctrl-@
    return character(unit);
}

std::string ConsoleKeys::bytes_of(const KEY_EVENT_RECORD& record)
{
    const std::string once = single(record);
    std::string bytes = once;
    for (int repeat = 1; repeat < record.wRepeatCount; ++repeat)
        bytes += once;
    return bytes;
}
