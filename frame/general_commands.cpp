#include "frame/general_commands.h"

#include "frame/device_call.h"
#include "frame/program.h"
#include "frame/session.h"
#include "frame/terminal/console.h"
#include "frame/usage.h"

void ask_for_help(const Given&)
{
    program.help = true;
}

void be_quiet(const Given&)
{
    program.quiet = true;
}

void terminate_program(const Given&)
{
    program.run = false;
}

void turn_debug_mode_on(const Given& given)
{
    program.debug = true;
    if (given.capital && library_is_loaded()) // without a trace the program works all the same
        (void)attempt(LIB(OpenDebugFile), debug_file_name);
}

void set_data_rate(const Given& given)
{
    program.data_rate = given.has_number ? given.number : default_data_rate;
    progress("Setting the data rate to %u baud:\r\n", program.data_rate);
    std::uint32_t device_rate = program.data_rate;
    if (!call(LIB(SetBaudRate), in_out(&device_rate)))
        return;
    console.print("Data rate set to ");
    console.print(Color::value, "%u baud", device_rate);
    console.print(" (device), ");
    console.print(Color::value, "%u baud", program.data_rate);
    console.print(" (PC)\r\n");
}

void show_buffer_state(const Given&)
{
    progress("Getting buffer status of the device...\r\n");
    std::uint8_t empty = 0;
    if (!call(LIB(GetBufferState), &empty))
        return;
    console.print("Device buffer is ");
    console.print(empty != 0 ? ColoredText{"empty", Color::value}
                             : ColoredText{"not empty", Color::not_good});
    console.print("\r\n");
}

void purge_communication(const Given&)
{
    progress("Purging buffers of the communication port...\r\n");
    std::uint8_t purged = 0;
    if (!call(LIB(Purge)) || !call(LIB(DevicePurge), &purged))
        return;
    if (purged != 0) {
        console.print("Buffers of the communication port were ");
        console.print(Color::value, "purged");
    } else {
        console.print(Color::bad, "Buffer of the communication port could not be purged");
    }
    console.print("\r\n");
}
