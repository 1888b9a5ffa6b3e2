#include "frame/terminal/scan_codes.h"

#include <array>
#include <cstddef>

namespace
{

/// Alt with the letters A..Z.
constexpr std::array<int, 26> alt_letters = {
    0x1E, 0x30, 0x2E, 0x20, 0x12, 0x21, 0x22, 0x23, 0x17, 0x24, 0x25, 0x26, 0x32,
    0x31, 0x18, 0x19, 0x10, 0x13, 0x1F, 0x14, 0x16, 0x2F, 0x11, 0x2D, 0x15, 0x2C,
};

} // namespace

Modifier modifier_of(int parameter)
{
    switch (parameter) {
    case 1:
        return Modifier::none;
    case 2:
        return Modifier::shift;
    case 3:
        return Modifier::alt;
    case 5:
        return Modifier::control;
    default:
        return Modifier::other;
    }
}

int ScanCodes::with(Modifier modifier) const
{
    switch (modifier) {
    case Modifier::none:
        return plain;
    case Modifier::shift:
        return shift;
    case Modifier::control:
        return control;
    case Modifier::alt:
        return alt;
    case Modifier::other:
        break;
    }
    return 0;
}

ScanCodes function_key(int number)
{
    if (number <= 10)
        return {0x3A + number, 0x53 + number, 0x5D + number, 0x67 + number};
    const int further = number - 11; // F11 and F12 came later
    return {0x85 + further, 0x87 + further, 0x89 + further, 0x8B + further};
}

ScanCodes cursor_key(char letter)
{
    using namespace scan_code;
    switch (letter) {
    case 'A':
        return up;
    case 'B':
        return down;
    case 'C':
        return right;
    case 'D':
        return left;
    case 'F':
        return end;
    case 'H':
        return home;
    case 'P':
    case 'Q':
    case 'R':
    case 'S':
        return function_key(letter - 'P' + 1);
    default:
        return {};
    }
}

ScanCodes numbered_key(int number)
{
    using namespace scan_code;
    switch (number) {
    case 1:
    case 7:
        return home;
    case 2:
        return insert;
    case 3:
        return remove;
    case 4:
    case 8:
        return end;
    case 5:
        return page_up;
    case 6:
        return page_down;
    default:
        if (number >= 11 && number <= 15)
            return function_key(number - 10);
        if (number >= 17 && number <= 21)
            return function_key(number - 11);
        if (number == 23 || number == 24)
            return function_key(number - 12);
        return {};
    }
}

int alt_letter(char letter)
{
    const bool capital = letter >= 'A' && letter <= 'Z';
    return alt_letters[static_cast<std::size_t>(letter - (capital ? 'A' : 'a'))];
}
