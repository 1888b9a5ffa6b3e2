#include "frame/platform/platform.h"
#include "frame/platform/windows/screen.h"
#include "frame/platform/windows/shared.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <cstring>
#include <string>
#include <system_error>
#include <winternl.h>

namespace platform
{

namespace
{

HANDLE output = nullptr;
bool output_is_console = false;
ConsoleScreen screen;
std::atomic<bool> screen_in_use = false;
std::atomic<bool> screen_lost = false; ///< a notice stands on it
std::atomic<int> rows_below = 0;
SRWLOCK screen_lock = SRWLOCK_INIT; ///< a notice comes from another thread
WindowSize known_size = {};

bool output_held = false;
std::string failure; ///< of the first write that failed; nothing is written after it

/// An ASCII text behind the present end; what does not fit is dropped.
struct WideLine {
    std::array<wchar_t, 256> text = {};
    std::size_t size = 0;

    void add(std::string_view ascii)
    {
        for (const char c : ascii.substr(0, text.size() - size))
            text[size++] = static_cast<wchar_t>(c);
    }
};

void write_failed(DWORD error)
{
    if (error == ERROR_BROKEN_PIPE || error == ERROR_NO_DATA || error == ERROR_PIPE_NOT_CONNECTED)
        windows::request_stop(windows::broken_pipe);
    else
        failure = std::system_category().message(static_cast<int>(error));
}

std::size_t write_to_console(std::string_view bytes, int rows_to_leave)
{
    AcquireSRWLockExclusive(&screen_lock);
    const bool lost = screen_lost;
    if (!lost) {
        if (output_is_terminal()) {
            screen.take();
            screen_in_use = true;
        }
        if (!screen.write(bytes))
            windows::request_stop(windows::hang_up);
        rows_below = rows_to_leave;
    }
    ReleaseSRWLockExclusive(&screen_lock);
    return lost ? 0 : bytes.size();
}

} // namespace

namespace windows
{

HANDLE standard_handle(DWORD number)
{
    const HANDLE handle = GetStdHandle(number);
    return handle == INVALID_HANDLE_VALUE ? nullptr : handle;
}

void open_output()
{
    output = standard_handle(STD_OUTPUT_HANDLE);
    output_is_console = screen.open(output);
    known_size = window_size();
}

void notice_closed_output()
{
    struct {
        ULONG type, configuration, most_instances, instances, inbound_quota, readable,
            outbound_quota, writable, state, end;
    } pipe = {};                                // FILE_PIPE_LOCAL_INFORMATION
    constexpr auto pipe_local_information = 24; // FilePipeLocalInformation
    constexpr ULONG connected = 3;
    if (output_is_console || GetFileType(output) != FILE_TYPE_PIPE)
        return;
    IO_STATUS_BLOCK status = {};
    if (NtQueryInformationFile(output, &status, &pipe, sizeof pipe,
                               static_cast<FILE_INFORMATION_CLASS>(pipe_local_information)) == 0 &&
        pipe.state != connected)
        request_stop(broken_pipe);
}

bool window_has_changed()
{
    if (screen_lost)
        return true;
    const WindowSize size = window_size();
    return output_is_terminal() &&
           (size.columns != known_size.columns || size.rows != known_size.rows);
}

void leave_screen()
{
    if (screen_in_use.exchange(false)) {
        screen.write(L"\033[0m\033[?25h"); // no colour, cursor visible
        for (int row = 0; row < rows_below; ++row)
            screen.write(L"\r\n");
    }
    screen.give_back();
}

void tell_below_screen(std::string_view text)
{
    WideLine line;
    if (!output_is_terminal()) {
        line.add(text);
        line.add("\r\n");
        const HANDLE error = standard_handle(STD_ERROR_HANDLE);
        DWORD written = 0;
        if (WriteConsoleW(error, line.text.data(), static_cast<DWORD>(line.size), &written,
                          nullptr) == 0 &&
            WriteFile(error, text.data(), static_cast<DWORD>(text.size()), &written, nullptr) != 0)
            WriteFile(error, "\r\n", 2, &written, nullptr);
        return;
    }
    // Who holds it is writing, and waits for nothing but the console.
    if (TryAcquireSRWLockExclusive(&screen_lock) == 0)
        return;
    screen.write(L"\033[0m\033[?25h");
    line.add("\r\n");
    for (int row = 1; row < rows_below; ++row)
        line.add("\r\n");
    line.add(text);
    line.add("\r\n");
    screen.write(std::wstring_view{line.text.data(), line.size});
    screen_lost = true;
    ReleaseSRWLockExclusive(&screen_lock);
}

} // namespace windows

bool output_is_terminal()
{
    static const bool answer = [] {
        const char* type = environment("TERM");
        return output_is_console && (type == nullptr || std::strcmp(type, "dumb") != 0);
    }();
    return answer;
}

WindowSize window_size()
{
    if (!output_is_console)
        return {.columns = 80, .rows = 25};
    const COORD size = screen.size();
    return {.columns = size.X, .rows = size.Y};
}

WindowChange take_window_change()
{
    if (!windows::window_has_changed())
        return WindowChange::none;
    known_size = window_size();
    return screen_lost.exchange(false) ? WindowChange::resumed : WindowChange::resized;
}

std::size_t write_output(std::string_view bytes, int rows_to_leave)
{
    if (output_is_console)
        return write_to_console(bytes, rows_to_leave);
    if (output_held)
        return 0;
    for (std::string_view rest = bytes; !rest.empty() && output != nullptr && failure.empty();) {
        constexpr std::size_t largest_piece = 1 << 20;
        DWORD written = 0;
        if (WriteFile(output, rest.data(), static_cast<DWORD>(std::min(rest.size(), largest_piece)),
                      &written, nullptr) == 0) {
            write_failed(GetLastError());
            break;
        }
        rest.remove_prefix(written);
    }
    return bytes.size();
}

std::size_t write_some_output(std::string_view bytes, int rows_to_leave)
{
    return write_output(bytes, rows_to_leave); // a console takes what it gets
}

bool output_is_utf8()
{
    return true;
}

void hold_output(bool on)
{
    output_held = on;
}

std::string output_failure()
{
    return failure;
}

void tell_error(std::string_view text)
{
    const std::wstring line = wide(text) + L"\r\n";
    const HANDLE error = windows::standard_handle(STD_ERROR_HANDLE);
    DWORD written = 0;
    if (WriteConsoleW(error, line.data(), static_cast<DWORD>(line.size()), &written, nullptr) != 0)
        return;
    const std::string bytes = std::string{text} + "\r\n";
    WriteFile(error, bytes.data(), static_cast<DWORD>(bytes.size()), &written, nullptr);
}

} // namespace platform
