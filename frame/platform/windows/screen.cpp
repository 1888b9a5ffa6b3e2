#include "frame/platform/windows/screen.h"

#include <algorithm>

namespace
{

constexpr wchar_t esc = L'\033';
constexpr WORD color_bits = FOREGROUND_BLUE | FOREGROUND_GREEN | FOREGROUND_RED;
constexpr WORD foreground_bits = color_bits | FOREGROUND_INTENSITY;

constexpr DWORD mode_of_sequences = ENABLE_PROCESSED_OUTPUT | ENABLE_WRAP_AT_EOL_OUTPUT |
                                    ENABLE_VIRTUAL_TERMINAL_PROCESSING |
                                    DISABLE_NEWLINE_AUTO_RETURN;
/// The cursor stays behind the last column, as it does on a terminal.
constexpr DWORD mode_of_calls = ENABLE_PROCESSED_OUTPUT;

/// The next of "4;31", `standard` where nothing stands.
int take_parameter(std::wstring_view& parameters, int standard)
{
    int number = 0;
    bool given = false;
    while (!parameters.empty()) {
        const wchar_t c = parameters.front();
        parameters.remove_prefix(1);
        if (c < L'0' || c > L'9')
            break;
        number = number * 10 + (c - L'0');
        given = true;
    }
    return given ? number : standard;
}

/// ANSI counts red, green, blue from the lowest bit on.
WORD color_attribute(int ansi)
{
    return static_cast<WORD>(((ansi & 1) != 0 ? FOREGROUND_RED : 0) |
                             ((ansi & 2) != 0 ? FOREGROUND_GREEN : 0) |
                             ((ansi & 4) != 0 ? FOREGROUND_BLUE : 0));
}

} // namespace

std::wstring wide(std::string_view utf8)
{
    const int size = static_cast<int>(utf8.size());
    std::wstring result(
        static_cast<std::size_t>(MultiByteToWideChar(CP_UTF8, 0, utf8.data(), size, nullptr, 0)),
        L'\0');
    MultiByteToWideChar(CP_UTF8, 0, utf8.data(), size, result.data(),
                        static_cast<int>(result.size()));
    return result;
}

std::string utf8(std::wstring_view text)
{
    const int size = static_cast<int>(text.size());
    std::string result(static_cast<std::size_t>(WideCharToMultiByte(CP_UTF8, 0, text.data(), size,
                                                                    nullptr, 0, nullptr, nullptr)),
                       '\0');
    WideCharToMultiByte(CP_UTF8, 0, text.data(), size, result.data(),
                        static_cast<int>(result.size()), nullptr, nullptr);
    return result;
}

CONSOLE_SCREEN_BUFFER_INFO ConsoleScreen::info() const
{
    CONSOLE_SCREEN_BUFFER_INFO info = {};
    GetConsoleScreenBufferInfo(handle_, &info);
    return info;
}

bool ConsoleScreen::open(HANDLE handle)
{
    handle_ = handle;
    if (GetConsoleMode(handle, &original_mode_) == 0)
        return false;
    original_ = info();
    GetConsoleCursorInfo(handle, &original_cursor_);
    return true;
}

COORD ConsoleScreen::size() const
{
    const SMALL_RECT window = info().srWindow;
    return {.X = static_cast<SHORT>(window.Right - window.Left + 1),
            .Y = static_cast<SHORT>(window.Bottom - window.Top + 1)};
}

void ConsoleScreen::take()
{
    if (taken_)
        return;
    taken_ = true;
    if (!known_) {
        known_ = true;
        processes_sequences_ =
            SetConsoleMode(handle_, mode_of_sequences) != 0 && processes_sequences();
    }
    SetConsoleMode(handle_, processes_sequences_ ? mode_of_sequences : mode_of_calls);
}

/// Some consoles take the mode and still show the sequences as text.
bool ConsoleScreen::processes_sequences() const
{
    const COORD before = info().dwCursorPosition;
    write_text(L"\033[m");
    const COORD after = info().dwCursorPosition;
    if (after.X == before.X && after.Y == before.Y)
        return true;
    erase(before, after);
    SetConsoleCursorPosition(handle_, before);
    return false;
}

void ConsoleScreen::give_back()
{
    if (!taken_)
        return;
    taken_ = false;
    SetConsoleTextAttribute(handle_, original_.wAttributes);
    SetConsoleCursorInfo(handle_, &original_cursor_);
    SetConsoleMode(handle_, original_mode_);
}

bool ConsoleScreen::write(std::string_view utf8)
{
    return write(wide(utf8));
}

bool ConsoleScreen::write(std::wstring_view text)
{
    return processes_sequences_ || !taken_ ? write_text(text) : carry_out(text);
}

bool ConsoleScreen::write_text(std::wstring_view text) const
{
    constexpr std::size_t largest_piece = 8192; // older consoles take no more than 64 KB
    while (!text.empty()) {
        std::size_t size = std::min(text.size(), largest_piece);
        if (size < text.size() && IS_HIGH_SURROGATE(text[size - 1]))
            --size;
        DWORD written = 0;
        if (WriteConsoleW(handle_, text.data(), static_cast<DWORD>(size), &written, nullptr) == 0 ||
            written == 0)
            return false;
        text.remove_prefix(written);
    }
    return true;
}

// ---- What a console that processes sequences does itself ----

bool ConsoleScreen::carry_out(std::wstring_view text) const
{
    while (!text.empty()) {
        const std::size_t plain = std::min(text.find(esc), text.size());
        if (!write_text(text.substr(0, plain)))
            return false;
        text.remove_prefix(plain);
        if (text.empty())
            break;
        constexpr std::size_t introducer = 2; // ESC [
        const std::size_t end = text.find_first_not_of(L"0123456789;?", introducer);
        if (end == std::wstring_view::npos)
            break;
        carry_out_sequence(text[end], text.substr(introducer, end - introducer));
        text.remove_prefix(end + 1);
    }
    return true;
}

void ConsoleScreen::carry_out_sequence(wchar_t final, std::wstring_view parameters) const
{
    if (final == L'm') {
        set_colors(parameters);
        return;
    }
    if (final == L'h' || final == L'l') { // ?25, the only mode that we know
        CONSOLE_CURSOR_INFO cursor = original_cursor_;
        cursor.bVisible = final == L'h' ? TRUE : FALSE;
        SetConsoleCursorInfo(handle_, &cursor);
        return;
    }
    const CONSOLE_SCREEN_BUFFER_INFO now = info();
    const SMALL_RECT window = now.srWindow;
    const COORD at = now.dwCursorPosition;
    const SHORT last_column = static_cast<SHORT>(now.dwSize.X - 1);
    const auto move_to = [&](int column, int row) {
        SetConsoleCursorPosition(
            handle_, {.X = static_cast<SHORT>(std::clamp<int>(column, 0, last_column)),
                      .Y = static_cast<SHORT>(std::clamp<int>(row, window.Top, window.Bottom))});
    };
    if (final == L'J' || final == L'K') {
        const bool all = final == L'J' && take_parameter(parameters, 0) == 2;
        const COORD from = all ? COORD{.X = 0, .Y = window.Top} : at;
        erase(from, {.X = static_cast<SHORT>(last_column + 1),
                     .Y = final == L'J' ? window.Bottom : at.Y});
        return;
    }
    const int first = take_parameter(parameters, 1);
    switch (final) {
    case L'A':
        move_to(at.X, at.Y - first);
        break;
    case L'B':
        move_to(at.X, at.Y + first);
        break;
    case L'C':
        move_to(at.X + first, at.Y);
        break;
    case L'G':
        move_to(first - 1, at.Y);
        break;
    case L'H':
        move_to(take_parameter(parameters, 1) - 1, window.Top + first - 1);
        break;
    default:
        break;
    }
}

void ConsoleScreen::set_colors(std::wstring_view parameters) const
{
    WORD attributes = info().wAttributes;
    do {
        const int number = take_parameter(parameters, 0);
        const WORD others = attributes & static_cast<WORD>(~foreground_bits);
        if (number == 0)
            attributes = original_.wAttributes;
        else if (number == 1)
            attributes |= FOREGROUND_INTENSITY;
        else if (number >= 30 && number <= 37)
            attributes = others | color_attribute(number - 30);
        else if (number >= 90 && number <= 97)
            attributes = others | color_attribute(number - 90) | FOREGROUND_INTENSITY;
    } while (!parameters.empty());
    SetConsoleTextAttribute(handle_, attributes);
}

/// Up to the column before `to`, as running text goes.
void ConsoleScreen::erase(COORD from, COORD to) const
{
    const int columns = info().dwSize.X;
    const int cells = (to.Y - from.Y) * columns + to.X - from.X;
    if (cells <= 0)
        return;
    DWORD done = 0;
    FillConsoleOutputCharacterW(handle_, L' ', static_cast<DWORD>(cells), from, &done);
    FillConsoleOutputAttribute(handle_, original_.wAttributes, static_cast<DWORD>(cells), from,
                               &done);
}
