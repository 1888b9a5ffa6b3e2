#include "companion/journal/program.h"
#include "frame/platform/windows/screen.h"

#include <windows.h>

namespace journal
{

namespace
{

std::wstring variable(const wchar_t* name)
{
    std::wstring value(GetEnvironmentVariableW(name, nullptr, 0), L'\0');
    if (!value.empty())
        value.resize(GetEnvironmentVariableW(name, value.data(), static_cast<DWORD>(value.size())));
    return value;
}

/// One argument as programs take their command line apart again.
void append_quoted(std::wstring& line, const std::wstring& argument)
{
    if (!argument.empty() && argument.find_first_of(L" \t\n\v\"") == std::wstring::npos) {
        line += argument;
        return;
    }
    line += L'"';
    std::size_t backslashes = 0;
    for (const wchar_t c : argument) {
        if (c == L'"') // those before a quote count half
            line.append(backslashes + 1, L'\\');
        backslashes = c == L'\\' ? backslashes + 1 : 0;
        line += c;
    }
    line.append(backslashes, L'\\');
    line += L'"';
}

/// Ctrl-C is for the program that runs in the console; this one waits for its end.
BOOL WINAPI leave_to_program(DWORD event)
{
    return event == CTRL_C_EVENT || event == CTRL_BREAK_EVENT ? TRUE : FALSE;
}

} // namespace

FoundProgram find_program(const std::string& name)
{
    // Not the folders of the system first: what a shell would run.
    const std::wstring path = L".;" + variable(L"PATH");
    const bool has_folder = name.find_first_of("\\/:") != std::string::npos;
    std::wstring file(32768, L'\0');
    file.resize(SearchPathW(has_folder ? nullptr : path.c_str(), wide(name).c_str(), L".exe",
                            static_cast<DWORD>(file.size()), file.data(), nullptr));
    if (file.empty())
        return {.problem = "there is no such program", .status = not_found};
    return {.file = utf8(file)};
}

std::string without_links(const std::string& file)
{
    return file; // which find_program() has found by its whole name
}

std::string own_folder()
{
    std::wstring path(32768, L'\0'); // as long as a path can be
    path.resize(GetModuleFileNameW(nullptr, path.data(), static_cast<DWORD>(path.size())));
    return utf8(path.substr(0, path.rfind(L'\\')));
}

std::string absolute(const std::string& name)
{
    const std::wstring relative = wide(name);
    std::wstring path(GetFullPathNameW(relative.c_str(), 0, nullptr, nullptr), L'\0');
    path.resize(
        GetFullPathNameW(relative.c_str(), static_cast<DWORD>(path.size()), path.data(), nullptr));
    return path.empty() ? name : utf8(path);
}

void set_environment(const char* name, const std::string& value)
{
    const std::wstring text = wide(value);
    SetEnvironmentVariableW(wide(name).c_str(), value.empty() ? nullptr : text.c_str());
}

void put_in_front_of_libraries(const std::string&)
{
    // Programs look in their own folder first here, whatever anybody says.
}

int run_program(const std::string& file, const std::vector<std::string>& arguments,
                std::string& problem)
{
    std::wstring line;
    for (const std::string& argument : arguments) {
        if (!line.empty())
            line += L' ';
        append_quoted(line, wide(argument));
    }
    STARTUPINFOW startup = {};
    startup.cb = sizeof startup;
    PROCESS_INFORMATION process = {};
    SetConsoleCtrlHandler(leave_to_program, TRUE);
    if (CreateProcessW(wide(file).c_str(), line.data(), nullptr, nullptr, TRUE, 0, nullptr, nullptr,
                       &startup, &process) == 0) {
        problem = "the system does not start it, error " + std::to_string(GetLastError());
        return cannot_run;
    }
    CloseHandle(process.hThread);
    WaitForSingleObject(process.hProcess, INFINITE);
    DWORD status = 0;
    GetExitCodeProcess(process.hProcess, &status);
    CloseHandle(process.hProcess);
    return static_cast<int>(status);
}

} // namespace journal
