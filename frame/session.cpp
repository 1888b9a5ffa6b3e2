#include "frame/session.h"

#include "frame/device_call.h"
#include "frame/device_library.h"
#include "frame/error_report.h"
#include "frame/program.h"
#include "frame/terminal/console.h"
#include "frame/terminal/keys.h"
#include "frame/terminal/questions.h"
#include "frame/text/format.h"

#include <string>

namespace
{

constexpr std::uint16_t oldest_library_version = 0x0100;
constexpr unsigned lowest_port = 1;
constexpr unsigned highest_port = 255;

bool port_number_is_good()
{
    if (program.port >= lowest_port && program.port <= highest_port)
        return true;
    // Shown as a signed 16-bit number: 65535 reads -1.
    console.print(Color::bad, "Wrong COM number specified: %hd", static_cast<short>(program.port));
    console.print(", allowed range: %u..%u\r\n", lowest_port, highest_port);
    return false;
}

/// Without these the instrument could not be left safe, or nobody would be told why.
constexpr std::size_t needed_functions[] = {
    LIB(GetSWVersion).row,
    LIB(Close).row,
    LIB(Purge).row,
    LIB(SetEnable).row,
    LIB(GetCurrentConfig).row,
    LIB(SetCurrentConfig).row,
    LIB(GetErrorMessage).row,
    LIB(GetIOState).row,
    LIB(GetIOStateMessage).row,
    LIB(GetCommError).row,
    LIB(GetCommErrorMessage).row,
};

bool library_version_is_good()
{
    constexpr std::size_t asked[] = {LIB(GetSWVersion).row};
    if (first_missing(asked))
        return true; // it is told with all that is missing
    const std::uint16_t version = device_library().version();
    if (version >= oldest_library_version) {
        progress("DLL Version: %s\n", version_text(version).c_str());
        return true;
    }
    console.print(Color::bad, "Wrong DLL Version");
    console.print(", expected ");
    console.print(Color::value, "%s", version_text(oldest_library_version).c_str());
    console.print(" or later, found ");
    console.print(Color::value, "%s", version_text(version).c_str());
    console.print("\r\n");
    return false;
}

bool library_is_complete()
{
    std::string names;
    for (const char* name : device_library().missing)
        names += (names.empty() ? "" : ", ") + std::string{name};
    if (names.empty())
        return true;
    console.print(Color::bad, "Functions missing in the device library");
    console.print(": ");
    console.print(Color::value, "%s", names.c_str());
    console.print("\r\n");
    const Failure needed = first_missing(needed_functions);
    if (!needed)
        return true; // the commands that need them say so
    console.print(Color::bad, "The port is not opened");
    console.print(", without ");
    console.print(Color::value, "%s", needed.function());
    console.print(" the instrument could not be left in order\r\n");
    return false;
}

bool library_is_good()
{
    progress("Checking DLL Version...\n");
    return library_is_loaded() && library_version_is_good() && library_is_complete();
}

bool open_port()
{
    progress("Opening COM%hu for the communication stream...\n", program.port);
    if (!call(LIB(Open), static_cast<std::uint8_t>(program.port)))
        return false;
    program.port_open = true;
    if (!program.quiet) {
        console.print(Color::value, "COM%hu", program.port);
        console.print(" opened for the communication stream\r\n");
    }
    return true;
}

bool device_is_good(std::uint16_t expected_type)
{
    progress("Checking device type...\n");
    std::uint16_t type = 0;
    if (!call(LIB(GetDevType), &type))
        return false;
    if (type == expected_type)
        return true;
    flush_keys(); // from here on a key is an answer, and is not echoed by the terminal
    console.print(Color::bad, "Wrong device type");
    console.print(", expected ");
    console.print(Color::value, "%04Xh", expected_type);
    console.print(", found ");
    console.print(Color::value, "%04Xh", type);
    console.print(", proceed anyway (Y/N)?\r\n");
    return ask_yes_no() == YesNo::yes;
}

} // namespace

bool library_is_loaded()
{
    const DeviceLibrary& library = device_library();
    if (library.loaded)
        return true;
    if (library.place != platform::LibraryPlace::named && library.path.empty())
        console.print(Color::bad, "There is no device library");
    else
        console.print(
            Color::bad, "The device library '%s'%s cannot be used",
            printable(library.path.c_str()).c_str(),
            library.place == platform::LibraryPlace::named ? " (named by KOV_DEVICE_LIBRARY)" : "");
    console.print(": %s\r\n", library.cause.c_str());
    program.run = false;
    return false;
}

bool open_session(std::uint16_t expected_type)
{
    if (program.port_open)
        return true;
    if (!program.run)
        return false;
    bool good = port_number_is_good();
    if (good && program.debug)
        program.quiet = false; // who asks for every detail gets it
    good = good && library_is_good() && open_port() && device_is_good(expected_type);
    program.run = good;
    return good;
}

void close_session()
{
    progress("Closing the communication stream...\n");
    if (!program.port_open)
        return;
    program.port_open = false;
    if (attempt(LIB(Close)))
        console.print(Color::bad, "%s\n", printable(ask(LIB(GetErrorMessage))).c_str());
    progress("Communication stream closed\n");
}
