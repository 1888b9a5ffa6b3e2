#include "companion/journal/host.h"
#include "frame/platform/windows/arguments.h"
#include "frame/platform/windows/screen.h"

#include <cerrno>
#include <windows.h>

namespace journal::host
{

namespace
{

/// Between the system's beginning of time, 1601, and 1970.
constexpr std::int64_t ticks_to_1970 = 116'444'736'000'000'000;

Moment now()
{
    FILETIME time = {};
    GetSystemTimePreciseAsFileTime(&time);
    const auto ticks = static_cast<std::int64_t>(std::uint64_t{time.dwHighDateTime} << 32 |
                                                 time.dwLowDateTime); // of 100 ns
    TIME_ZONE_INFORMATION zone = {};
    const DWORD season = GetTimeZoneInformation(&zone);
    const LONG bias = zone.Bias + (season == TIME_ZONE_ID_DAYLIGHT ? zone.DaylightBias : 0);
    return {.us = (ticks - ticks_to_1970) / 10, .offset_minutes = static_cast<int>(-bias)};
}

std::int64_t steady_us()
{
    LARGE_INTEGER frequency = {}, count = {};
    QueryPerformanceFrequency(&frequency);
    QueryPerformanceCounter(&count);
    const std::int64_t seconds = count.QuadPart / frequency.QuadPart;
    return seconds * 1'000'000 +
           count.QuadPart % frequency.QuadPart * 1'000'000 / frequency.QuadPart;
}

/// The system sleeps too long; the last two milliseconds are waited for.
void rest_us(std::int64_t us)
{
    const std::int64_t end = steady_us() + us;
    if (us > 3000)
        Sleep(static_cast<DWORD>(us / 1000 - 2));
    while (steady_us() < end)
        YieldProcessor();
}

std::string reason(DWORD error)
{
    wchar_t* text = nullptr;
    const DWORD size = FormatMessageW(
        FORMAT_MESSAGE_ALLOCATE_BUFFER | FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_IGNORE_INSERTS,
        nullptr, error, 0, reinterpret_cast<wchar_t*>(&text), 0, nullptr);
    if (size == 0)
        return "error " + std::to_string(error);
    std::wstring line{text, size};
    LocalFree(text);
    while (!line.empty() && (line.back() == L'\n' || line.back() == L'\r' || line.back() == L'.'))
        line.pop_back();
    return utf8(line);
}

HANDLE handle_of(std::intptr_t value)
{
    return reinterpret_cast<HANDLE>(value);
}

/// The module in which this code is.
HMODULE own_module()
{
    HMODULE module = nullptr;
    static const char here = 0;
    GetModuleHandleExW(GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS |
                           GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT,
                       reinterpret_cast<const wchar_t*>(&here), &module);
    return module;
}

/// Volume and number of a file; false when it cannot be opened.
bool identity_of(const std::string& name, BY_HANDLE_FILE_INFORMATION& about)
{
    const HANDLE file =
        CreateFileW(wide(name).c_str(), 0, FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE,
                    nullptr, OPEN_EXISTING, FILE_FLAG_BACKUP_SEMANTICS, nullptr);
    if (file == INVALID_HANDLE_VALUE)
        return false;
    const bool known = GetFileInformationByHandle(file, &about) != 0;
    CloseHandle(file);
    return known;
}

} // namespace

const Clock& clock()
{
    static constexpr Clock system_clock = {now, steady_us, rest_us};
    return system_clock;
}

std::uint64_t process_id()
{
    return GetCurrentProcessId();
}

std::optional<std::string> environment(const char* name)
{
    const std::wstring wide_name = wide(name);
    std::wstring value(GetEnvironmentVariableW(wide_name.c_str(), nullptr, 0), L'\0');
    if (value.empty())
        return std::nullopt;
    value.resize(
        GetEnvironmentVariableW(wide_name.c_str(), value.data(), static_cast<DWORD>(value.size())));
    if (value.empty())
        return std::nullopt;
    return utf8(value);
}

std::vector<std::string> command_line()
{
    std::vector<std::string> words;
    for (const std::wstring& word : split_command_line(GetCommandLineW()))
        words.push_back(utf8(word));
    return words;
}

bool is_same_file(const std::string& one, const std::string& other)
{
    BY_HANDLE_FILE_INFORMATION a = {}, b = {};
    return identity_of(one, a) && identity_of(other, b) &&
           a.dwVolumeSerialNumber == b.dwVolumeSerialNumber &&
           a.nFileIndexHigh == b.nFileIndexHigh && a.nFileIndexLow == b.nFileIndexLow;
}

std::string own_file()
{
    std::wstring path(32768, L'\0'); // as long as a path can be
    path.resize(GetModuleFileNameW(own_module(), path.data(), static_cast<DWORD>(path.size())));
    return utf8(path);
}

std::FILE* open_to_read(const std::string& name)
{
    return _wfopen(wide(name).c_str(), L"rb");
}

void tell(std::string_view line)
{
    const HANDLE output = GetStdHandle(STD_ERROR_HANDLE);
    const std::string text = std::string{line} + "\r\n";
    DWORD mode = 0, went = 0;
    if (GetConsoleMode(output, &mode) != 0) {
        const std::wstring characters = wide(text);
        WriteConsoleW(output, characters.data(), static_cast<DWORD>(characters.size()), &went,
                      nullptr);
    } else {
        WriteFile(output, text.data(), static_cast<DWORD>(text.size()), &went, nullptr);
    }
}

bool error_output_is_terminal()
{
    DWORD mode = 0;
    return GetConsoleMode(GetStdHandle(STD_ERROR_HANDLE), &mode) != 0;
}

OutputFile::~OutputFile()
{
    close();
}

bool OutputFile::open(const std::string& name, Opening opening, std::uint64_t expected_size)
{
    name_ = name;
    const DWORD how = opening == Opening::replace  ? CREATE_ALWAYS
                      : opening == Opening::create ? CREATE_NEW
                                                   : OPEN_EXISTING;
    // Others may read it, and nobody else may write it meanwhile.
    const HANDLE file = CreateFileW(
        wide(name).c_str(), FILE_APPEND_DATA | FILE_READ_ATTRIBUTES | SYNCHRONIZE,
        FILE_SHARE_READ | FILE_SHARE_DELETE, nullptr, how, FILE_ATTRIBUTE_NORMAL, nullptr);
    if (file == INVALID_HANDLE_VALUE) {
        problem_ = reason(GetLastError());
        return false;
    }
    handle_ = reinterpret_cast<std::intptr_t>(file);
    LARGE_INTEGER size = {};
    if (opening == Opening::go_on && GetFileType(file) == FILE_TYPE_DISK &&
        (GetFileSizeEx(file, &size) == 0 ||
         static_cast<std::uint64_t>(size.QuadPart) != expected_size)) {
        problem_ = "another process has written it";
        close();
        return false;
    }
    return true;
}

bool OutputFile::is_ours() const
{
    return handle_ != -1; // a program closes no handles that it does not know
}

bool OutputFile::write(std::string_view bytes)
{
    DWORD went = 0;
    if (WriteFile(handle_of(handle_), bytes.data(), static_cast<DWORD>(bytes.size()), &went,
                  nullptr) != 0 &&
        went == bytes.size())
        return true;
    problem_ = reason(GetLastError());
    return false;
}

void OutputFile::close()
{
    if (is_ours())
        CloseHandle(handle_of(handle_));
    handle_ = -1;
}

} // namespace journal::host
