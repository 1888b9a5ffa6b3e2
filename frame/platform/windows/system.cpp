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

std::FILE* open_file(const char* name, const char* mode)
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
