// Where the device library stands, whether it is one that this program can load, and its functions.
#include "frame/platform/platform.h"
#include "frame/platform/windows/screen.h"

#include <memory>
#include <windows.h>

namespace platform
{

namespace
{

constexpr const wchar_t* library_name = L"COM-KOV-CTRL.dll";

HMODULE library = nullptr;

/// The headers of the program itself, as they stand in memory.
const IMAGE_NT_HEADERS& own_headers()
{
    const auto* const start = reinterpret_cast<const unsigned char*>(GetModuleHandleW(nullptr));
    const auto* const dos = reinterpret_cast<const IMAGE_DOS_HEADER*>(start);
    return *reinterpret_cast<const IMAGE_NT_HEADERS*>(start + dos->e_lfanew);
}

std::wstring full_path(const std::wstring& name)
{
    std::wstring path(GetFullPathNameW(name.c_str(), 0, nullptr, nullptr), L'\0');
    path.resize(
        GetFullPathNameW(name.c_str(), static_cast<DWORD>(path.size()), path.data(), nullptr));
    return path;
}

std::wstring this_program()
{
    std::wstring path(32768, L'\0'); // as long as a path can be
    path.resize(GetModuleFileNameW(nullptr, path.data(), static_cast<DWORD>(path.size())));
    return path;
}

bool nothing_is_there()
{
    const DWORD error = GetLastError();
    return error == ERROR_FILE_NOT_FOUND || error == ERROR_PATH_NOT_FOUND ||
           error == ERROR_INVALID_NAME;
}

/// A file that may be a library, as far as its headers tell.
class LibraryFile
{
public:
    explicit LibraryFile(const std::wstring& name)
        : handle_{CreateFileW(name.c_str(), GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_DELETE,
                              nullptr, OPEN_EXISTING, 0, nullptr)}
    {
    }
    ~LibraryFile()
    {
        if (handle_ != INVALID_HANDLE_VALUE)
            CloseHandle(handle_);
    }
    LibraryFile(const LibraryFile&) = delete;
    LibraryFile& operator=(const LibraryFile&) = delete;

    /// What speaks against loading it.
    [[nodiscard]] LibraryFault fault()
    {
        LARGE_INTEGER size = {};
        if (handle_ == INVALID_HANDLE_VALUE || GetFileSizeEx(handle_, &size) == 0)
            return LibraryFault::unreadable;
        size_ = static_cast<std::uint64_t>(size.QuadPart);
        if (size_ == 0)
            return LibraryFault::empty;
        IMAGE_DOS_HEADER dos = {};
        if (!read(0, dos) || dos.e_magic != IMAGE_DOS_SIGNATURE || dos.e_lfanew < 0)
            return LibraryFault::no_library;
        const auto start = static_cast<std::uint64_t>(dos.e_lfanew);
        IMAGE_NT_HEADERS headers = {};
        if (!read(start, headers))
            return start >= size_ ? LibraryFault::truncated : LibraryFault::no_library;
        if (const LibraryFault found = headers_fault(headers); found != LibraryFault::none)
            return found;
        return sections_fault(start + offsetof(IMAGE_NT_HEADERS, OptionalHeader) +
                                  headers.FileHeader.SizeOfOptionalHeader,
                              headers.FileHeader.NumberOfSections);
    }

private:
    template <class T>
    [[nodiscard]] bool read(std::uint64_t offset, T& value) const
    {
        OVERLAPPED at = {};
        at.Offset = static_cast<DWORD>(offset);
        at.OffsetHigh = static_cast<DWORD>(offset >> 32);
        DWORD got = 0;
        return ReadFile(handle_, &value, sizeof value, &got, &at) != 0 && got == sizeof value;
    }

    [[nodiscard]] static LibraryFault headers_fault(const IMAGE_NT_HEADERS& headers)
    {
        const IMAGE_NT_HEADERS& own = own_headers();
        if (headers.Signature != IMAGE_NT_SIGNATURE ||
            (headers.FileHeader.Characteristics & IMAGE_FILE_DLL) == 0)
            return LibraryFault::no_library;
        if (headers.OptionalHeader.Magic != own.OptionalHeader.Magic)
            return LibraryFault::other_width;
        return headers.FileHeader.Machine == own.FileHeader.Machine ? LibraryFault::none
                                                                    : LibraryFault::other_machine;
    }

    [[nodiscard]] LibraryFault sections_fault(std::uint64_t offset, unsigned count) const
    {
        for (unsigned i = 0; i < count; ++i) {
            IMAGE_SECTION_HEADER section = {};
            if (!read(offset + i * sizeof section, section) ||
                std::uint64_t{section.PointerToRawData} + section.SizeOfRawData > size_)
                return LibraryFault::truncated;
        }
        return LibraryFault::none;
    }

    HANDLE handle_;
    std::uint64_t size_ = 0;
};

} // namespace

std::vector<LibraryCandidate> library_candidates(const std::string& program, bool named)
{
    // Never where the system would look: the folder in which the user is, or those of PATH.
    if (const char* name = environment("KOV_DEVICE_LIBRARY"); named && name != nullptr)
        return {{LibraryPlace::named, utf8(full_path(wide(name)))}};
    const std::wstring file = program.empty() ? this_program() : wide(program);
    const std::wstring folder = file.substr(0, file.find_last_of(L"\\/") + 1);
    return {{LibraryPlace::beside_program, utf8(folder + library_name)}};
}

bool is_there(const std::string& file)
{
    return GetFileAttributesW(wide(file).c_str()) != INVALID_FILE_ATTRIBUTES || !nothing_is_there();
}

LibraryFailure look_beside(const std::string&)
{
    return {}; // the maker's library has no folder of its own here
}

LibraryFailure load_library(const std::string& file)
{
    const std::wstring name = wide(file);
    const DWORD attributes = GetFileAttributesW(name.c_str());
    if (attributes == INVALID_FILE_ATTRIBUTES)
        return {.fault = nothing_is_there() ? LibraryFault::absent : LibraryFault::unreadable,
                .detail = {}};
    if ((attributes & (FILE_ATTRIBUTE_DIRECTORY | FILE_ATTRIBUTE_DEVICE)) != 0)
        return {.fault = LibraryFault::no_file, .detail = {}};
    if (const LibraryFault fault = LibraryFile{name}.fault(); fault != LibraryFault::none)
        return {.fault = fault, .detail = {}};
    SetErrorMode(SEM_FAILCRITICALERRORS); // no dialog box
    // What it needs stands beside it or belongs to the system.
    library = LoadLibraryExW(name.c_str(), nullptr,
                             LOAD_LIBRARY_SEARCH_DLL_LOAD_DIR | LOAD_LIBRARY_SEARCH_SYSTEM32);
    if (library != nullptr)
        return {};
    switch (GetLastError()) {
    case ERROR_MOD_NOT_FOUND:
        return {.fault = LibraryFault::lacks_library, .detail = {}};
    case ERROR_PROC_NOT_FOUND:
        return {.fault = LibraryFault::lacks_symbol, .detail = {}};
    default:
        return {.fault = LibraryFault::refused, .detail = {}};
    }
}

LibraryFunctionPointer library_function(const char* name)
{
    return reinterpret_cast<LibraryFunctionPointer>(GetProcAddress(library, name));
}

} // namespace platform
