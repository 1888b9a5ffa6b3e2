/// Output to a console of Windows: Unicode text with the control sequences that our console sends.
/// Where the console does not process the sequences itself (before Windows 10, or in its legacy
/// mode), they are carried out here.
#pragma once

#include <string>
#include <string_view>
#include <windows.h>

[[nodiscard]] std::wstring wide(std::string_view utf8);
[[nodiscard]] std::string utf8(std::wstring_view text);

class ConsoleScreen
{
public:
    /// False when the handle is no console.
    bool open(HANDLE handle);

    /// Finds out how the console wants its sequences, and sets it up for them until give_back().
    /// Whatever the code page is, it does not matter.
    void take();
    bool write(std::string_view utf8);
    /// Allocates nothing.
    bool write(std::wstring_view text);
    void give_back();

    /// Of the window, not of the whole buffer that it shows a part of.
    [[nodiscard]] COORD size() const;

    /// Text and nothing else, before take().
    bool write_text(std::wstring_view text) const;

private:
    [[nodiscard]] bool processes_sequences() const;
    bool carry_out(std::wstring_view text) const;
    void carry_out_sequence(wchar_t final, std::wstring_view parameters) const;
    void set_colors(std::wstring_view parameters) const;
    void erase(COORD from, COORD to) const;
    [[nodiscard]] CONSOLE_SCREEN_BUFFER_INFO info() const;

    HANDLE handle_ = nullptr;
    DWORD original_mode_ = 0;
    CONSOLE_SCREEN_BUFFER_INFO original_ = {};
    CONSOLE_CURSOR_INFO original_cursor_ = {};
    bool known_ = false; ///< whether the console processes sequences
    bool processes_sequences_ = false;
    bool taken_ = false;
};
