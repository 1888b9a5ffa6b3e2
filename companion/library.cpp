#include "companion/library.h"

#include "companion/text.h"
#include "frame/device_library.h"
#include "frame/text/format.h"

namespace companion
{

namespace
{

const char* place_name(platform::LibraryPlace place)
{
    switch (place) {
    case platform::LibraryPlace::named:
        return "named by KOV_DEVICE_LIBRARY";
    case platform::LibraryPlace::library_path:
        return "in a folder of LD_LIBRARY_PATH";
    case platform::LibraryPlace::beside_program:
        return "beside the program";
    case platform::LibraryPlace::maker:
        return "in the folder for the maker's library";
    case platform::LibraryPlace::simulator:
        return "in the folder of the simulated instrument";
    }
    return "";
}

} // namespace

int show_library(const Surroundings& outside)
{
    const DeviceLibrary& library = device_library();
    if (library.path.empty()) {
        outside.complain("there is no device library: " + valid_utf8(library.cause));
        return wrong_usage;
    }
    Printer printer{outside};
    printer.print("Device library: ");
    printer.print(Color::value, valid_utf8(library.path));
    printer.print(std::string{", "} + place_name(library.place) + '\n');
    if (!library.loaded) {
        printer.print("It is not used: ");
        printer.print(Color::bad, valid_utf8(library.cause) + '\n');
        (void)printer.flush();
        return wrong_usage;
    }
    printer.print("Version: " + version_text(library.version()) + '\n');
    for (const char* function : library.missing) {
        printer.print("It lacks ");
        printer.print(Color::bad, std::string{function} + '\n');
    }
    if (!printer.flush())
        return wrong_usage;
    return library.missing.empty() ? 0 : 1;
}

} // namespace companion
