#include "frame/platform/platform.h"

#include "frame/platform/windows/keys.h"
#include "frame/platform/windows/shared.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <csignal>
#include <cstdlib>
#include <string>
#include <windows.h>

namespace platform
{

namespace
{

HANDLE stop_event = nullptr; ///< set with the first request
SRWLOCK requests_lock = SRWLOCK_INIT;

HANDLE input = nullptr;
bool input_is_console = false;
DWORD original_input_mode = 0;
std::atomic<bool> input_taken = false; ///< single keys, without echo

/// Allocates nothing, as everything that a crash does last.
void hand_terminal_back()
{
    windows::leave_screen();
    if (input_taken)
        SetConsoleMode(input, original_input_mode);
    input_taken = false; // when it is done: another thread may be about to end the process
}

/// The last thing before an end on the spot: tells of settings that stay changed, gives the console
/// back, and only then does what else is to be done, which may fail.
void leave(ForcedEnd end, std::string_view notice)
{
    const LastAct* const last_act = windows::requests.last_act();
    if (windows::requests.is_protected())
        windows::tell_below_screen(notice);
    if (last_act != nullptr && !last_act->told.empty())
        windows::tell_below_screen(last_act->told);
    hand_terminal_back();
    if (last_act != nullptr)
        last_act->act(end);
}

[[noreturn]] void end_at_once(int number)
{
    leave(ForcedEnd::asked_for, left_notice);
    TerminateProcess(GetCurrentProcess(), static_cast<UINT>(128 + number));
    std::abort();
}

/// Ctrl-C or Ctrl-Break.
void answer_key(int number)
{
    using Answer = StopRequests::Answer;
    AcquireSRWLockExclusive(&requests_lock);
    const Answer answer = windows::requests.take(number, windows::now_ms(), false);
    if (answer == Answer::tell)
        windows::tell_below_screen(windows::requests.notice().text());
    ReleaseSRWLockExclusive(&requests_lock);
    if (answer == Answer::at_once)
        end_at_once(number);
    SetEvent(stop_event);
    if (answer == Answer::nothing)
        return;
    Sleep(static_cast<DWORD>(StopRequests::same_wish_ms));
    AcquireSRWLockExclusive(&requests_lock);
    if (windows::requests.remind(windows::now_ms()))
        windows::tell_below_screen(windows::requests.notice().text());
    ReleaseSRWLockExclusive(&requests_lock);
}

/// Runs in a thread of its own.
BOOL WINAPI on_stop_request(DWORD event)
{
    const bool from_keyboard = event == CTRL_C_EVENT || event == CTRL_BREAK_EVENT;
    if (from_keyboard) {
        answer_key(event == CTRL_C_EVENT ? windows::interrupt : windows::quit);
        return TRUE;
    }
    windows::request_stop(event == CTRL_CLOSE_EVENT ? windows::hang_up : windows::termination);
    // The system ends the program as soon as this returns, or after some seconds: the program has
    // them to end in order, which ends this thread, too.
    Sleep(INFINITE);
    return TRUE;
}

// The console must not stay behind unusable.

LONG WINAPI on_crash(EXCEPTION_POINTERS*)
{
    leave(ForcedEnd::crash, crash_notice);
    return EXCEPTION_CONTINUE_SEARCH;
}

void on_abort(int)
{
    leave(ForcedEnd::crash, crash_notice);
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
        windows::notice_closed_output();
        if (!take_keys()) {
            windows::request_stop(windows::hang_up);
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
        if (left == 0 || windows::requests.number() != 0 || windows::window_has_changed())
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
        windows::notice_closed_output();
        DWORD waiting = 0;
        if (PeekNamedPipe(input, nullptr, 0, nullptr, &waiting, nullptr) == 0 || waiting > 0)
            return true;
        const std::int64_t left = timeout_ms < 0 ? look_again_ms : left_until(deadline);
        if (left == 0 || windows::requests.number() != 0)
            return false;
        wait_for(nullptr, std::min(left, look_again_ms));
    }
}

} // namespace

namespace windows
{

constinit StopRequests requests;

void request_stop(int number)
{
    requests.request(number);
    SetEvent(stop_event);
}

} // namespace windows

void start()
{
    stop_event = CreateEventW(nullptr, TRUE, FALSE, nullptr);
    input = windows::standard_handle(STD_INPUT_HANDLE);
    input_is_console = GetConsoleMode(input, &original_input_mode) != 0;
    windows::open_output();
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
    for (std::int64_t left = milliseconds; left > 0 && windows::requests.number() == 0;
         left = end - tick_ms())
        wait_for(nullptr, left);
}

void rest_ms(std::int64_t milliseconds)
{
    Sleep(static_cast<DWORD>(milliseconds));
}

void protect_run(bool on)
{
    windows::requests.protect(on);
    // A console that is being selected from with the mouse takes nothing.
    DWORD mode = 0;
    if (!input_is_console || GetConsoleMode(input, &mode) == 0)
        return;
    const DWORD quick_edit = on ? 0 : original_input_mode & ENABLE_QUICK_EDIT_MODE;
    SetConsoleMode(input,
                   (mode & ~DWORD{ENABLE_QUICK_EDIT_MODE}) | ENABLE_EXTENDED_FLAGS | quick_edit);
}

void set_last_act(const LastAct* last_act)
{
    windows::requests.set_last_act(last_act);
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
    if (!input_is_console || input_taken)
        return;
    input_taken = true; // before it is done: a request may end the program in between
    if (SetConsoleMode(input, mode) == 0)
        input_taken = false;
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
    return windows::requests.number();
}

} // namespace platform
