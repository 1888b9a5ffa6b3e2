// What the system gives without a console: the command line, time, files, environment variables.

#include "frame/platform/platform.h"
#include "frame/platform/windows/arguments.h"
#include "frame/platform/windows/screen.h"
#include "frame/platform/windows/shared.h"

#include <io.h>
#include <map>
#include <string>
#include <vector>
#include <windows.h>

namespace platform
{

namespace
{

/// A file that exists, opened for no more than that.
class FileHandle
{
public:
    FileHandle(const std::wstring& name, DWORD access)
        : handle_(CreateFileW(name.c_str(), access,
                              FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, nullptr,
                              OPEN_EXISTING, 0, nullptr))
    {
    }
    ~FileHandle()
    {
        if (is_open())
            CloseHandle(handle_);
    }
    FileHandle(const FileHandle&) = delete;
    FileHandle& operator=(const FileHandle&) = delete;

    [[nodiscard]] bool is_open() const { return handle_ != INVALID_HANDLE_VALUE; }
    [[nodiscard]] HANDLE get() const { return handle_; }

private:
    const HANDLE handle_;
};

/// When the file was last written, in units of 100 ns.
std::uint64_t write_time(const FileHandle& file)
{
    FILETIME time = {};
    GetFileTime(file.get(), nullptr, nullptr, &time);
    return std::uint64_t{time.dwHighDateTime} << 32 | time.dwLowDateTime;
}

/// The time of a marked copy: a moment behind its file's. Nobody else's copy has just that.
std::uint64_t mark_for(const FileHandle& file)
{
    constexpr std::uint64_t moment = 100'000;
    return write_time(file) + moment;
}

Copied result_of_failed_copy(DWORD error, const std::wstring& copy_name)
{
    if (GetFileAttributesW(copy_name.c_str()) != INVALID_FILE_ATTRIBUTES)
        return Copied::name_taken; // by a folder, too
    const bool too_long = error == ERROR_FILENAME_EXCED_RANGE || error == ERROR_INVALID_NAME ||
                          error == ERROR_BUFFER_OVERFLOW;
    return too_long ? Copied::name_too_long : Copied::no;
}

} // namespace

std::span<char*> arguments(int, char**)
{
    // Those of main() went through the code page.
    static std::vector<std::string> texts;
    static std::vector<char*> pointers;
    for (const std::wstring& argument : split_command_line(GetCommandLineW()))
        texts.push_back(utf8(argument));
    pointers.reserve(texts.size() + 1);
    for (std::string& text : texts)
        pointers.push_back(text.data());
    pointers.push_back(nullptr);
    return std::span{pointers}.first(texts.size());
}

std::int64_t windows::now_ms()
{
    static const std::int64_t frequency = [] {
        LARGE_INTEGER ticks = {};
        QueryPerformanceFrequency(&ticks);
        return ticks.QuadPart;
    }();
    LARGE_INTEGER now = {};
    QueryPerformanceCounter(&now);
    return now.QuadPart / frequency * 1000 + now.QuadPart % frequency * 1000 / frequency;
}

std::int64_t tick_ms()
{
    const std::int64_t now = windows::now_ms();
    windows::requests.looked_at_clock(now);
    return now;
}

LocalTime local_time()
{
    SYSTEMTIME now = {};
    GetLocalTime(&now);
    return {.year = now.wYear,
            .month = now.wMonth,
            .day = now.wDay,
            .weekday = now.wDayOfWeek,
            .hour = now.wHour,
            .minute = now.wMinute,
            .second = now.wSecond,
            .millisecond = now.wMilliseconds};
}

// A request to end the program breaks no write off here.

void begin_writing_file()
{
    windows::requests.files_being_written(1);
}

void end_writing_file()
{
    windows::requests.files_being_written(-1);
}

std::thread start_thread(std::function<void()> work)
{
    return std::thread{std::move(work)};
}

std::FILE* open_file(const char* name, const char* mode, void (*)(const char* name))
{
    return _wfopen(wide(name).c_str(), wide(mode).c_str());
}

bool store_file(std::FILE* file)
{
    const std::intptr_t value = _get_osfhandle(_fileno(file));
    const auto handle = reinterpret_cast<HANDLE>(value); // NOLINT(performance-no-int-to-ptr)
    // Pipes and devices have nothing to wait for.
    return GetFileType(handle) != FILE_TYPE_DISK || FlushFileBuffers(handle) != 0;
}

FilePlace place_of_file(std::FILE*, const char*)
{
    return FilePlace::there; // nobody can remove or rename it while it is open here
}

Copied copy_file(const char* name, const char* copy_name)
{
    const std::wstring from = wide(name);
    const std::wstring to = wide(copy_name);
    const FileHandle file{from, FILE_READ_ATTRIBUTES};
    // One that is write-protected will not be written.
    if (!file.is_open() || GetFileType(file.get()) != FILE_TYPE_DISK ||
        (GetFileAttributesW(from.c_str()) & FILE_ATTRIBUTE_READONLY) != 0)
        return Copied::nothing;
    if (const FileHandle copy{to, FILE_READ_ATTRIBUTES};
        copy.is_open() && write_time(copy) == mark_for(file))
        return Copied::already;
    LARGE_INTEGER size = {};
    if (GetFileSizeEx(file.get(), &size) == 0 || size.QuadPart == 0)
        return Copied::nothing;
    if (CopyFileW(from.c_str(), to.c_str(), TRUE) == 0)
        return result_of_failed_copy(GetLastError(), to);
    bool stored = false;
    if (const FileHandle copy{to, GENERIC_WRITE}; copy.is_open())
        stored = FlushFileBuffers(copy.get()) != 0;
    if (!stored)
        remove_file(copy_name);
    return stored ? Copied::yes : Copied::no;
}

void mark_copy(const char* name, const char* copy_name)
{
    const FileHandle file{wide(name), FILE_READ_ATTRIBUTES};
    const FileHandle copy{wide(copy_name), FILE_WRITE_ATTRIBUTES};
    if (!file.is_open() || !copy.is_open())
        return;
    const std::uint64_t mark = mark_for(file);
    const FILETIME time = {.dwLowDateTime = static_cast<DWORD>(mark),
                           .dwHighDateTime = static_cast<DWORD>(mark >> 32)};
    (void)SetFileTime(copy.get(), nullptr, nullptr, &time);
}

void remove_file(const char* name)
{
    DeleteFileW(wide(name).c_str());
}

const char* environment(const char* name)
{
    static std::map<std::string, std::string> values;
    const std::wstring wide_name = wide(name);
    // Also the size of an empty value, which holds its end, is not 0.
    const DWORD size = GetEnvironmentVariableW(wide_name.c_str(), nullptr, 0);
    if (size == 0)
        return nullptr;
    std::wstring value(size, L'\0');
    value.resize(GetEnvironmentVariableW(wide_name.c_str(), value.data(), size));
    return (values[name] = utf8(value)).c_str();
}

} // namespace platform
