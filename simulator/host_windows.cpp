#include "simulator/host.h"

#include <charconv>
#include <cstdlib>
#include <string_view>
#include <windows.h>

namespace simulator::host
{

namespace
{

/// The end of a wait that is not slept: a sleep may take that much longer than asked for.
constexpr std::int64_t sleep_slack_us = 600;

/// From 1601, where the system's time begins, to 1970.
constexpr std::int64_t epoch_us = 11'644'473'600'000'000;

HANDLE lock_file = INVALID_HANDLE_VALUE;

/// What is locked lies behind everything that is ever in the file: the bytes stay readable.
constexpr DWORD locked_byte = 0x4000'0000;

std::wstring wide(std::string_view text)
{
    const int size = static_cast<int>(text.size());
    std::wstring result(
        static_cast<std::size_t>(MultiByteToWideChar(CP_UTF8, 0, text.data(), size, nullptr, 0)),
        L'\0');
    MultiByteToWideChar(CP_UTF8, 0, text.data(), size, result.data(),
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

std::string reason()
{
    const DWORD error = GetLastError();
    wchar_t text[256];
    DWORD length = FormatMessageW(FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_IGNORE_INSERTS,
                                  nullptr, error, 0, text, 256, nullptr);
    while (length > 0 && (text[length - 1] <= L' ' || text[length - 1] == L'.'))
        --length;
    return length > 0 ? utf8({text, length}) : "error " + std::to_string(error);
}

/// Makes the folders above a file, as far as they are missing.
void make_folders(const std::wstring& path)
{
    for (std::size_t end = path.find_first_of(L"\\/", 1); end != std::wstring::npos;
         end = path.find_first_of(L"\\/", end + 1))
        CreateDirectoryW(path.substr(0, end).c_str(), nullptr);
}

bool write_all(HANDLE file, std::string_view bytes)
{
    while (!bytes.empty()) {
        DWORD written = 0;
        if (WriteFile(file, bytes.data(), static_cast<DWORD>(bytes.size()), &written, nullptr) == 0)
            return false;
        bytes.remove_prefix(written);
    }
    return true;
}

HANDLE create(const std::wstring& path, DWORD disposition)
{
    return CreateFileW(path.c_str(), GENERIC_READ | GENERIC_WRITE,
                       FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr, disposition,
                       FILE_ATTRIBUTE_NORMAL, nullptr);
}

/// Makes a file that was not there; a remainder or a link of that name goes.
HANDLE create_new(const std::wstring& name)
{
    HANDLE file = INVALID_HANDLE_VALUE;
    for (int tries = 0; tries < 3 && file == INVALID_HANDLE_VALUE; ++tries) {
        file = create(name, CREATE_NEW);
        if (file != INVALID_HANDLE_VALUE)
            break;
        const DWORD error = GetLastError();
        if (error == ERROR_PATH_NOT_FOUND)
            make_folders(name);
        else if (error != ERROR_FILE_EXISTS || DeleteFileW(name.c_str()) == 0)
            break;
    }
    return file;
}

/// Why a file that was opened is not read; empty = it may be.
std::string unreadable(HANDLE file)
{
    LARGE_INTEGER size = {};
    if (GetFileType(file) != FILE_TYPE_DISK)
        return "it is no regular file";
    if (GetFileSizeEx(file, &size) == 0)
        return reason();
    return size.QuadPart > largest_file ? "it is too large" : "";
}

/// The name that the system gives a file or folder; empty when it is not there.
std::wstring final_name(const std::wstring& path)
{
    const HANDLE file =
        CreateFileW(path.c_str(), 0, FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE,
                    nullptr, OPEN_EXISTING, FILE_FLAG_BACKUP_SEMANTICS, nullptr);
    if (file == INVALID_HANDLE_VALUE)
        return L"";
    wchar_t name[1024];
    const DWORD length = GetFinalPathNameByHandleW(file, name, 1024, FILE_NAME_NORMALIZED);
    CloseHandle(file);
    std::wstring result(name, length < 1024 ? length : 0);
    constexpr std::wstring_view prefix = L"\\\\?\\";
    if (result.starts_with(prefix) && result.substr(prefix.size() + 1, 1) == L":")
        result.erase(0, prefix.size()); // which is not for people
    return result;
}

/// Reads on from where the file stands.
bool read_all(HANDLE file, std::string& bytes)
{
    char block[16384];
    DWORD count = 0;
    do {
        if (ReadFile(file, block, sizeof block, &count, nullptr) == 0)
            return false;
        bytes.append(block, count);
    } while (count > 0);
    return true;
}

void sleep_us(std::int64_t microseconds)
{
    // Sleep() is as coarse as the system's tick, 16 ms; this kind of timer is not.
    static const HANDLE timer = [] {
        constexpr DWORD high_resolution = 2; // CREATE_WAITABLE_TIMER_HIGH_RESOLUTION
        return CreateWaitableTimerExW(nullptr, nullptr, high_resolution, TIMER_ALL_ACCESS);
    }();
    LARGE_INTEGER due = {};
    due.QuadPart = -microseconds * 10; // in units of 100 ns, from now
    if (timer != nullptr && SetWaitableTimer(timer, &due, 0, nullptr, nullptr, FALSE) != 0)
        WaitForSingleObject(timer, INFINITE);
    else if (microseconds > 20'000)
        Sleep(static_cast<DWORD>((microseconds - 20'000) / 1000)); // the rest is not slept
}

} // namespace

std::int64_t monotonic_us()
{
    static const std::int64_t frequency = [] {
        LARGE_INTEGER ticks = {};
        QueryPerformanceFrequency(&ticks);
        return ticks.QuadPart;
    }();
    LARGE_INTEGER now = {};
    QueryPerformanceCounter(&now);
    constexpr std::int64_t million = 1'000'000;
    return now.QuadPart / frequency * million + now.QuadPart % frequency * million / frequency;
}

std::int64_t wall_clock_us()
{
    FILETIME now = {};
    GetSystemTimePreciseAsFileTime(&now);
    ULARGE_INTEGER ticks = {};
    ticks.LowPart = now.dwLowDateTime;
    ticks.HighPart = now.dwHighDateTime;
    return static_cast<std::int64_t>(ticks.QuadPart / 10) - epoch_us;
}

std::int64_t local_wall_clock_ms()
{
    SYSTEMTIME local = {};
    GetLocalTime(&local);
    FILETIME time = {};
    SystemTimeToFileTime(&local, &time);
    ULARGE_INTEGER ticks = {};
    ticks.LowPart = time.dwLowDateTime;
    ticks.HighPart = time.dwHighDateTime;
    return (static_cast<std::int64_t>(ticks.QuadPart / 10) - epoch_us) / 1000;
}

void let_time_pass_us(std::int64_t microseconds)
{
    const std::int64_t until_us = monotonic_us() + microseconds;
    if (microseconds > sleep_slack_us)
        sleep_us(microseconds - sleep_slack_us);
    while (monotonic_us() < until_us)
        YieldProcessor();
}

std::optional<std::string> environment(const char* name)
{
    const std::wstring wide_name = wide(name);
    const DWORD size = GetEnvironmentVariableW(wide_name.c_str(), nullptr, 0);
    if (size <= 1)
        return std::nullopt;
    std::wstring value(size, L'\0');
    value.resize(GetEnvironmentVariableW(wide_name.c_str(), value.data(), size));
    return utf8(value);
}

std::string real_name(const std::string& path)
{
    const std::wstring name = wide(path);
    const std::wstring there = final_name(name);
    if (!there.empty())
        return utf8(there);
    const std::size_t end = name.find_last_of(L"\\/") + 1; // 0 without a folder
    make_folders(name);
    const std::wstring folder = final_name(end > 0 ? name.substr(0, end) : L".");
    return folder.empty() ? path : utf8(folder + L'\\' + name.substr(end));
}

std::string default_state_path(unsigned port)
{
    const std::optional<std::string> folder = environment("LOCALAPPDATA");
    if (!folder)
        return "";
    // A file whose name begins with "COM3." is the port itself.
    return *folder + "\\kov-controller\\simulator\\port-COM" + std::to_string(port) + ".state";
}

std::FILE* open_file(const char* name, const char* mode)
{
    return _wfopen(wide(name).c_str(), wide(mode).c_str());
}

Reading read_file(const std::string& path, std::string& bytes, std::string& problem)
{
    bytes.clear();
    const HANDLE file = CreateFileW(wide(path).c_str(), GENERIC_READ,
                                    FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, nullptr,
                                    OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr);
    if (file == INVALID_HANDLE_VALUE) {
        const DWORD error = GetLastError();
        problem = reason();
        return error == ERROR_FILE_NOT_FOUND || error == ERROR_PATH_NOT_FOUND ? Reading::missing
                                                                              : Reading::failed;
    }
    problem = unreadable(file);
    bool good = problem.empty();
    if (good && !read_all(file, bytes)) {
        problem = reason();
        good = false;
    }
    CloseHandle(file);
    return good ? Reading::done : Reading::failed;
}

bool replace_file(const std::string& path, const std::string& bytes, bool durable,
                  std::string& problem)
{
    const std::wstring name = wide(path);
    const std::wstring temporary = name + L".new";
    const HANDLE file = create_new(temporary);
    if (file == INVALID_HANDLE_VALUE) {
        problem = reason();
        return false;
    }
    bool good = write_all(file, bytes) && (!durable || FlushFileBuffers(file) != 0);
    if (!good)
        problem = reason();
    CloseHandle(file);
    const DWORD flags = MOVEFILE_REPLACE_EXISTING | (durable ? MOVEFILE_WRITE_THROUGH : 0);
    if (good && MoveFileExW(temporary.c_str(), name.c_str(), flags) == 0) {
        problem = reason();
        good = false;
    }
    if (!good)
        DeleteFileW(temporary.c_str());
    return good;
}

std::optional<std::string> set_aside(const std::string& path)
{
    for (unsigned number = 1; number < 1000; ++number) {
        std::string name = path + ".damaged" + std::to_string(number);
        // Never takes the name of a file that is already there.
        if (MoveFileW(wide(path).c_str(), wide(name).c_str()) != 0)
            return name;
        const DWORD error = GetLastError();
        if (error != ERROR_ALREADY_EXISTS && error != ERROR_FILE_EXISTS)
            return std::nullopt;
    }
    return std::nullopt;
}

Locking lock(const std::string& path, std::int64_t& holder, std::string& problem)
{
    const std::wstring name = wide(path);
    make_folders(name);
    const HANDLE file = create(name + L".lock", OPEN_ALWAYS);
    if (file == INVALID_HANDLE_VALUE) {
        problem = reason();
        return Locking::failed;
    }
    OVERLAPPED region = {};
    region.Offset = locked_byte;
    std::string text;
    if (LockFileEx(file, LOCKFILE_EXCLUSIVE_LOCK | LOCKFILE_FAIL_IMMEDIATELY, 0, 1, 0, &region) !=
        0) {
        // The file tells who has it.
        text = std::to_string(GetCurrentProcessId());
        (void)write_all(file, text);
        SetEndOfFile(file);
        lock_file = file;
        return Locking::done;
    }
    const DWORD error = GetLastError();
    const bool held = error == ERROR_LOCK_VIOLATION || error == ERROR_IO_PENDING;
    problem = reason();
    holder = 0;
    if (held && read_all(file, text))
        std::from_chars(text.data(), text.data() + text.size(), holder);
    CloseHandle(file);
    return held ? Locking::held : Locking::failed;
}

void unlock()
{
    if (lock_file != INVALID_HANDLE_VALUE)
        CloseHandle(lock_file); // which gives the lock back
    lock_file = INVALID_HANDLE_VALUE;
}

} // namespace simulator::host
