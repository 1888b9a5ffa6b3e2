#include "frame/entry.h"

#include "config/switches.h"
#include "controller/switches.h"
#include "diagnostics/switches.h"
#include "frame/command_line.h"
#include "frame/device_call.h"
#include "frame/device_library.h"
#include "frame/general_commands.h"
#include "frame/platform/platform.h"
#include "frame/program.h"
#include "frame/session.h"
#include "frame/terminal/console.h"
#include "frame/terminal/keys.h"
#include "frame/text/format.h"
#include "frame/usage.h"
#include "instrument/device_facts.h"
#include "interactive/switches.h"
#include "modules/switches.h"
#include "protocol/switches.h"

#include <cstddef>
#include <string>

namespace
{

constexpr SwitchTable tables[] = {
    general_switches, controller_switches, module_switches,   interactive_switches,
    config_switches,  diagnostic_switches, protocol_switches,
};

/// What the user gets to read about a bad command line, or asked to read.
void print_help(std::span<char* const> arguments, const CommandLineResult& result)
{
    const std::string name = program_name(arguments.empty() ? nullptr : arguments[0]);
    print_banner(name);
    if (!result.good && arguments.size() > 1 && !program.help) {
        const auto position = static_cast<std::size_t>(result.position);
        console.print(Color::bad, "Error parsing argument ");
        console.print(Color::value, "#%d", result.position);
        console.print(": ");
        console.print(Color::value, "%s",
                      position < arguments.size() ? printable(arguments[position]).c_str()
                                                  : "argument not available");
        console.print("\r\n");
    }
    if (program.help)
        print_usage(name, controller_facts);
}

/// Does nothing when no library was loaded.
void close_debug_file()
{
    (void)attempt(LIB(CloseDebugFile));
}

/// The way out of a good command line.
void end_session()
{
    // So a command line that holds nothing but a port number opens the port, too.
    const bool stopped = platform::stop_signal() != 0;
    if (!stopped && open_session(controller_facts.type) && program.run)
        run_status_screen();
    close_session();
    close_debug_file();
    if (!program.quiet)
        console.print("Program completed\n");
}

} // namespace

std::span<const SwitchTable> all_switch_tables()
{
    return tables;
}

int run_program(int argc, char** argv)
{
    program = {};
    forget_device_library();
    console.start();
    start_keys();
    const std::span<char* const> arguments{argv, static_cast<std::size_t>(argc)};
    program.help = arguments.size() < 2;

    const CommandLineResult result = run_command_line(arguments, tables, controller_facts);
    if (!result.good || program.help)
        print_help(arguments, result);
    if (result.good)
        end_session();
    else
        close_debug_file();
    repeat_alarm();
    console.finish();
    platform::restore_terminal();
    const std::string failure = platform::output_failure();
    if (!failure.empty())
        platform::tell_error("Error writing standard output: " + failure);
    if (const int signal_number = platform::stop_signal(); signal_number != 0)
        return 128 + signal_number;
    if (!result.good)
        return -1;
    return failure.empty() ? 0 : 1;
}
