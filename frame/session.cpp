#include "frame/session.h"

#include "frame/device_call.h"
#include "frame/error_report.h"
#include "frame/format.h"
#include "frame/program.h"
#include "frame/terminal/console.h"
#include "frame/terminal/keys.h"
#include "frame/terminal/questions.h"

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

bool library_is_good()
{
    progress("Checking DLL Version...\n");
    const std::uint16_t version = COM_KOV_CTRL_GetSWVersion();
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
        console.print(Color::bad, "%s\n", printable(COM_KOV_CTRL_GetErrorMessage()).c_str());
    progress("Communication stream closed\n");
}
