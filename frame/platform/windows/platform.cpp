#include "frame/platform/platform.h"

#include "frame/platform/windows/keys.h"
#include "frame/platform/windows/screen.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <string>
#include <windows.h>
#include <winternl.h>

namespace platform
{

namespace
{

// What ends the program has the numbers of the signals that do so elsewhere: scripts get the same
// exit status.
constexpr int hang_up = 1;   ///< the window is closed
constexpr int interrupt = 2; ///< Ctrl-C
constexpr int quit = 3;      ///< Ctrl-Break
constexpr int broken_pipe = 13;
constexpr int termination = 15; ///< the user logs off, the computer shuts down

std::atomic<int> requested_stop = 0;
HANDLE stop_event = nullptr; ///< set with the first request

HANDLE input = nullptr;
bool input_is_console = false;
DWORD original_input_mode = 0;
std::atomic<bool> input_taken = false; ///< single keys, without echo
std::atomic<bool> run_is_protected = false;

HANDLE output = nullptr;
bool output_is_console = false;
ConsoleScreen screen;
std::atomic<bool> screen_in_use = false;
std::atomic<int> rows_to_leave = 0;
WindowSize known_size = {};

/// Null when the program has none: nothing comes from there, what goes there is lost.
HANDLE standard_handle(DWORD number)
{
    const HANDLE handle = GetStdHandle(number);
    return handle == INVALID_HANDLE_VALUE ? nullptr : handle;
}

void request_stop(int number)
{
    int none = 0;
    requested_stop.compare_exchange_strong(none, number);
    SetEvent(stop_event);
}

void hand_terminal_back()
{
    if (screen_in_use.exchange(false)) {
        std::string neutral_screen = "\033[0m\033[?25h"; // no colour, cursor visible
        for (int row = 0; row < rows_to_leave; ++row)
            neutral_screen += "\r\n";
        screen.write(neutral_screen);
    }
    screen.give_back();
    if (input_taken.exchange(false))
        SetConsoleMode(input, original_input_mode);
}

[[noreturn]] void end_at_once(int number)
{
    hand_terminal_back();
    TerminateProcess(GetCurrentProcess(), static_cast<UINT>(128 + number));
    std::abort();
}

/// Runs in a thread of its own.
BOOL WINAPI on_stop_request(DWORD event)
{
    const bool from_keyboard = event == CTRL_C_EVENT || event == CTRL_BREAK_EVENT;
    const int number = event == CTRL_C_EVENT       ? interrupt
                       : event == CTRL_BREAK_EVENT ? quit
                       : event == CTRL_CLOSE_EVENT ? hang_up
                                                   : termination;
    if (from_keyboard && requested_stop != 0 && !run_is_protected)
        end_at_once(number);
    request_stop(number);
    // The system ends the program as soon as this returns, or after some seconds: the program has
    // them to end in order, which ends this thread, too.
    if (!from_keyboard)
        Sleep(INFINITE);
    return TRUE;
}

/// The last things that a crash does: the console must not stay behind unusable.
LONG WINAPI on_crash(EXCEPTION_POINTERS*)
{
    hand_terminal_back();
    return EXCEPTION_CONTINUE_SEARCH;
}

void on_abort(int)
{
    hand_terminal_back();
}

/// Waits until the handle (null = nothing) is signalled, the program is asked to end, or the time
/// is up (negative = as long as it takes).
void wait_for(HANDLE handle, std::int64_t timeout_ms)
{
    // Time-outs of waits are as coarse as the system's tick, 16 ms; this kind of timer is not.
    static const HANDLE timer = [] {
        constexpr DWORD high_resolution = 2; // CREATE_WAITABLE_TIMER_HIGH_RESOLUTION
        const HANDLE fine =
            CreateWaitableTimerExW(nullptr, nullptr, high_resolution, TIMER_ALL_ACCESS);
        return fine != nullptr ? fine : CreateWaitableTimerW(nullptr, FALSE, nullptr);
    }();
    std::array<HANDLE, 3> handles = {};
    DWORD count = 0;
    if (handle != nullptr)
        handles[count++] = handle;
    handles[count++] = stop_event;
    if (timeout_ms >= 0) {
        LARGE_INTEGER due = {};
        due.QuadPart = -timeout_ms * 10'000; // in units of 100 ns, from now
        SetWaitableTimer(timer, &due, 0, nullptr, nullptr, FALSE);
        handles[count++] = timer;
    }
    WaitForMultipleObjects(count, handles.data(), FALSE, INFINITE);
}

/// A reader of our output that has gone away would only be noticed by the next write, which a
/// display in a pipe puts off to its end.
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

// ---- Input ----

ConsoleKeys console_keys;
std::string typed; ///< bytes of the keys that were taken from the console

/// Takes the keys that the console has, without waiting. False when there is no console any more.
bool take_keys()
{
    std::array<INPUT_RECORD, 32> records;
    DWORD count = 0;
    while (PeekConsoleInputW(input, records.data(), 1, &count) != 0) {
        if (count == 0)
            return true;
        if (ReadConsoleInputW(input, records.data(), records.size(), &count) == 0)
            return false;
        for (const INPUT_RECORD& record : std::span{records}.first(count)) {
            if (record.EventType == KEY_EVENT)
                typed += console_keys.bytes_of(record.Event.KeyEvent);
        }
    }
    return false;
}

bool window_has_changed()
{
    const WindowSize size = window_size();
    return output_is_terminal() &&
           (size.columns != known_size.columns || size.rows != known_size.rows);
}

std::int64_t left_until(std::int64_t deadline_ms)
{
    return std::max<std::int64_t>(deadline_ms - tick_ms(), 0);
}

InputResult read_console(unsigned char* buffer, std::size_t size, std::size_t& count,
                         std::int64_t timeout_ms)
{
    // The console tells of its buffer's size, but not of its window's; nobody tells of our reader.
    constexpr std::int64_t look_around_ms = 250;
    const std::int64_t deadline = tick_ms() + timeout_ms;
    for (;;) {
        notice_closed_output();
        if (!take_keys()) {
            request_stop(hang_up);
            return InputResult::ended;
        }
        if (!typed.empty()) {
            count = typed.copy(reinterpret_cast<char*>(buffer), size);
            typed.erase(0, count);
            return InputResult::bytes;
        }
        if (timeout_ms == 0)
            return InputResult::nothing;
        const std::int64_t left = timeout_ms < 0 ? look_around_ms : left_until(deadline);
        if (left == 0 || requested_stop != 0 || window_has_changed())
            return InputResult::nothing;
        wait_for(input, std::min(left, look_around_ms));
    }
}

/// Input that is a pipe: true when it has bytes or has ended.
bool pipe_has_news(std::int64_t timeout_ms)
{
    // There is nothing that one could wait on.
    constexpr std::int64_t look_again_ms = 5;
    const std::int64_t deadline = tick_ms() + timeout_ms;
    for (;;) {
        notice_closed_output();
        DWORD waiting = 0;
        if (PeekNamedPipe(input, nullptr, 0, nullptr, &waiting, nullptr) == 0 || waiting > 0)
            return true;
        const std::int64_t left = timeout_ms < 0 ? look_again_ms : left_until(deadline);
        if (left == 0 || requested_stop != 0)
            return false;
        wait_for(nullptr, std::min(left, look_again_ms));
    }
}

} // namespace

void start()
{
    stop_event = CreateEventW(nullptr, TRUE, FALSE, nullptr);
    input = standard_handle(STD_INPUT_HANDLE);
    output = standard_handle(STD_OUTPUT_HANDLE);
    input_is_console = GetConsoleMode(input, &original_input_mode) != 0;
    output_is_console = screen.open(output);
    known_size = window_size();
    SetConsoleCtrlHandler(on_stop_request, TRUE);
    SetUnhandledExceptionFilter(on_crash);
    std::signal(SIGABRT, on_abort);
    std::atexit(restore_terminal); // also when the device library ends the process
}

void restore_terminal()
{
    hand_terminal_back();
}

void sleep_ms(std::int64_t milliseconds)
{
    const std::int64_t end = tick_ms() + milliseconds;
    for (std::int64_t left = milliseconds; left > 0 && requested_stop == 0; left = end - tick_ms())
        wait_for(nullptr, left);
}

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
    if (!window_has_changed())
        return WindowChange::none;
    known_size = window_size();
    return WindowChange::resized;
}

bool write_output(std::string_view bytes)
{
    if (output_is_console) {
        if (output_is_terminal()) {
            screen.take();
            screen_in_use = true;
        }
        if (screen.write(bytes))
            return true;
        request_stop(hang_up);
        return false;
    }
    while (!bytes.empty() && output != nullptr) {
        constexpr std::size_t largest_piece = 1 << 20;
        DWORD written = 0;
        if (WriteFile(output, bytes.data(),
                      static_cast<DWORD>(std::min(bytes.size(), largest_piece)), &written,
                      nullptr) == 0) {
            request_stop(broken_pipe);
            return false;
        }
        bytes.remove_prefix(written);
    }
    return true;
}

std::size_t write_some_output(std::string_view bytes)
{
    (void)write_output(bytes); // a console takes what it gets
    return bytes.size();
}

void protect_run(bool on)
{
    run_is_protected = on;
    // A console that is being selected from with the mouse takes nothing.
    DWORD mode = 0;
    if (!input_is_console || GetConsoleMode(input, &mode) == 0)
        return;
    const DWORD quick_edit = on ? 0 : original_input_mode & ENABLE_QUICK_EDIT_MODE;
    SetConsoleMode(input,
                   (mode & ~DWORD{ENABLE_QUICK_EDIT_MODE}) | ENABLE_EXTENDED_FLAGS | quick_edit);
}

void note_rows_to_leave(int rows)
{
    rows_to_leave = rows;
}

bool input_is_terminal()
{
    return input_is_console;
}

void start_raw_input()
{
    // Ctrl-C stays with the system. Selecting with the mouse stays as the user has it.
    const DWORD mode =
        (original_input_mode & ~DWORD{ENABLE_LINE_INPUT | ENABLE_ECHO_INPUT | ENABLE_MOUSE_INPUT |
                                      ENABLE_VIRTUAL_TERMINAL_INPUT}) |
        ENABLE_PROCESSED_INPUT | ENABLE_WINDOW_INPUT;
    if (input_is_console && !input_taken && SetConsoleMode(input, mode) != 0)
        input_taken = true;
}

InputResult read_input(unsigned char* buffer, std::size_t size, std::size_t& count,
                       std::int64_t timeout_ms)
{
    count = 0;
    if (input_is_console)
        return read_console(buffer, size, count, timeout_ms);
    if (GetFileType(input) == FILE_TYPE_PIPE && !pipe_has_news(timeout_ms))
        return InputResult::nothing;
    DWORD got = 0;
    if (input == nullptr || ReadFile(input, buffer, static_cast<DWORD>(size), &got, nullptr) == 0 ||
        got == 0)
        return InputResult::ended;
    count = got;
    return InputResult::bytes;
}

void drop_input()
{
    if (!input_is_console)
        return;
    FlushConsoleInputBuffer(input);
    typed.clear();
    console_keys.forget();
}

int stop_signal()
{
    return requested_stop;
}

} // namespace platform
