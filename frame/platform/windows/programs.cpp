#include "frame/platform/platform.h"
#include "frame/platform/windows/screen.h"

#include <array>
#include <windows.h>

namespace platform
{

namespace
{

/// A file that goes when it is closed, and that a program we start may use.
class PassingFile
{
public:
    PassingFile()
    {
        std::array<wchar_t, MAX_PATH + 1> folder{}, name{};
        if (GetTempPathW(static_cast<DWORD>(folder.size()), folder.data()) == 0 ||
            GetTempFileNameW(folder.data(), L"kov", 0, name.data()) == 0)
            return;
        SECURITY_ATTRIBUTES inherited = {sizeof inherited, nullptr, TRUE};
        handle_ = CreateFileW(name.data(), GENERIC_READ | GENERIC_WRITE,
                              FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, &inherited,
                              CREATE_ALWAYS, FILE_ATTRIBUTE_TEMPORARY | FILE_FLAG_DELETE_ON_CLOSE,
                              nullptr);
    }
    ~PassingFile()
    {
        if (is_open())
            CloseHandle(handle_);
    }
    PassingFile(const PassingFile&) = delete;
    PassingFile& operator=(const PassingFile&) = delete;

    [[nodiscard]] bool is_open() const { return handle_ != INVALID_HANDLE_VALUE; }
    [[nodiscard]] HANDLE get() const { return handle_; }

    [[nodiscard]] bool write(std::string_view bytes)
    {
        DWORD written = 0;
        const bool good =
            WriteFile(handle_, bytes.data(), static_cast<DWORD>(bytes.size()), &written, nullptr) &&
            written == bytes.size();
        SetFilePointer(handle_, 0, nullptr, FILE_BEGIN);
        return good;
    }
    [[nodiscard]] std::string text()
    {
        std::string text;
        std::array<char, 16384> piece{};
        DWORD count = 0;
        SetFilePointer(handle_, 0, nullptr, FILE_BEGIN);
        while (ReadFile(handle_, piece.data(), static_cast<DWORD>(piece.size()), &count, nullptr) &&
               count > 0)
            text.append(piece.data(), count);
        return text;
    }

private:
    HANDLE handle_ = INVALID_HANDLE_VALUE;
};

/// Of a program on the PATH, and only there: what lies in the working directory is nobody's. Empty
/// when there is none.
std::wstring find_program(const std::string& name)
{
    std::wstring path(32768, L'\0'), file(32768, L'\0');
    const DWORD length =
        GetEnvironmentVariableW(L"PATH", path.data(), static_cast<DWORD>(path.size()));
    if (length == 0 || length >= path.size())
        return {};
    const DWORD found = SearchPathW(path.c_str(), wide(name).c_str(), L".exe",
                                    static_cast<DWORD>(file.size()), file.data(), nullptr);
    file.resize(found < file.size() ? found : 0);
    return file;
}

} // namespace

ProgramRun run_program(const std::vector<std::string>& arguments, std::string_view input)
{
    ProgramRun run{.was_found = true, .status = -1};
    const std::wstring program = find_program(arguments.front());
    if (program.empty()) {
        run.was_found = false;
        return run;
    }
    PassingFile in, out, errors;
    if (!in.is_open() || !out.is_open() || !errors.is_open() || !in.write(input)) {
        run.errors = "no temporary file could be written";
        return run;
    }
    std::wstring command = L'"' + program + L'"';
    for (std::size_t i = 1; i < arguments.size(); ++i)
        command += L" \"" + wide(arguments[i]) + L'"';
    STARTUPINFOW start = {};
    start.cb = sizeof start;
    start.dwFlags = STARTF_USESTDHANDLES;
    start.hStdInput = in.get();
    start.hStdOutput = out.get();
    start.hStdError = errors.get();
    PROCESS_INFORMATION process = {};
    if (!CreateProcessW(program.c_str(), command.data(), nullptr, nullptr, TRUE, CREATE_NO_WINDOW,
                        nullptr, nullptr, &start, &process))
        return run;
    WaitForSingleObject(process.hProcess, INFINITE);
    DWORD status = 1;
    GetExitCodeProcess(process.hProcess, &status);
    CloseHandle(process.hThread);
    CloseHandle(process.hProcess);
    run.status = static_cast<int>(status);
    run.output = out.text();
    run.errors = errors.text();
    return run;
}

} // namespace platform
