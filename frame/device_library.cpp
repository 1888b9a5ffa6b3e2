#include "frame/device_library.h"

#include "frame/device_call.h"
#include "frame/text/format.h"

#include <algorithm>

std::array<platform::LibraryFunctionPointer, devlib::function_count> library_functions = {};
bool last_call_was_made = true;

namespace
{

using platform::LibraryFault;

DeviceLibrary library;
bool searched = false;

std::string quoted(const std::string& text)
{
    return '\'' + printable(text.c_str()) + '\'';
}

/// The fault in our own words; what the system says of it is for programmers.
std::string sentence(const platform::LibraryFailure& failure)
{
    const std::string& detail = failure.detail;
    const auto needs = [&detail](const char* what) {
        return std::string{"it needs "} + (detail.empty() ? what : quoted(detail));
    };
    switch (failure.fault) {
    case LibraryFault::none:
        return "";
    case LibraryFault::absent:
        return "there is no such file";
    case LibraryFault::misspelt:
        return "there is no such file, but something else in its folder: " + quoted(detail);
    case LibraryFault::dangling_link:
        return "it is a link that leads nowhere";
    case LibraryFault::dangling_folder:
        return "its folder is a link that leads nowhere";
    case LibraryFault::no_folder:
        return "its folder is no folder";
    case LibraryFault::unreadable:
        return "it may not be read";
    case LibraryFault::no_file:
        return "it is no file";
    case LibraryFault::empty:
        return "it is empty";
    case LibraryFault::no_library:
        return "it is no shared library";
    case LibraryFault::truncated:
        return "its end is missing";
    case LibraryFault::other_width:
        return formatted("it is not made for %zu-bit programs", sizeof(void*) * 8);
    case LibraryFault::other_machine:
        return "it is made for another kind of processor";
    case LibraryFault::lacks_library:
        return needs("another library") + ", which is not there";
    case LibraryFault::lacks_version:
        return needs("a newer system") + ", which this system does not have";
    case LibraryFault::lacks_symbol:
        return needs("a function of another library") + ", which none of its libraries has";
    case LibraryFault::refused:
        break;
    }
    return "the system refuses to load it";
}

/// The place that decides, and what speaks against what stands there.
platform::LibraryFailure find_and_load(const std::string& program)
{
    std::string looked_for;
    for (const platform::LibraryCandidate& candidate : platform::library_candidates(program)) {
        library.place = candidate.place;
        library.path = candidate.file;
        if (candidate.place == platform::LibraryPlace::named || platform::is_there(candidate.file))
            return platform::load_library(candidate.file);
        if (candidate.place == platform::LibraryPlace::maker) {
            platform::LibraryFailure failure = platform::look_beside(candidate.file);
            if (failure.fault != LibraryFault::none)
                return failure;
        }
        looked_for += (looked_for.empty() ? "" : ", ") + quoted(candidate.file);
    }
    library.path.clear();
    library.cause = "it was looked for as " + looked_for;
    return {};
}

void take_functions()
{
    for (std::size_t i = 0; i < devlib::function_count; ++i) {
        const char* name = devlib::function_names[i].text;
        library_functions[i] = platform::library_function(name);
        if (library_functions[i] == nullptr)
            library.missing.push_back(name);
    }
    if (library.missing.size() == devlib::function_count)
        library.cause = "it has none of the functions of the device library";
}

} // namespace

std::uint16_t DeviceLibrary::version() const
{
    return ask(LIB(GetSWVersion));
}

const DeviceLibrary& device_library(const std::string& program)
{
    if (searched)
        return library;
    searched = true;
    if (const platform::LibraryFailure failure = find_and_load(program);
        failure.fault != LibraryFault::none)
        library.cause = sentence(failure);
    if (library.cause.empty())
        take_functions();
    library.loaded = library.cause.empty();
    return library;
}

void forget_device_library()
{
    library = {};
    library_functions = {};
    searched = false;
}

Failure first_missing(std::span<const std::size_t> functions)
{
    const auto found = std::ranges::find_if(
        functions, [](std::size_t row) { return library_functions[row] == nullptr; });
    if (found == functions.end())
        return {};
    last_call_was_made = false;
    return Failure{devlib::function_names[*found].text};
}
