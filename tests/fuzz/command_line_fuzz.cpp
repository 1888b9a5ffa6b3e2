// Any text as a command line, one argument a line, with all switches but none of their routines:
// what these get has to be in its range.

#include "frame/command_line.h"
#include "frame/entry.h"
#include "frame/program.h"
#include "frame/terminal/console.h"
#include "frame/terminal/keys.h"
#include "frame/text/numbers.h"
#include "instrument/device_facts.h"
#include "simulator/simulator.h"
#include "tests/fuzz/target.h"
#include "tests/support/virtual_platform.h"

#include <algorithm>
#include <cmath>
#include <string>
#include <vector>

namespace
{

void check(const Given& given)
{
    require(given.address <= highest_slot || given.address == base_unit ||
            given.address == all_modules);
    require(std::isfinite(given.real));
    require(given.text == nullptr || std::string_view{given.text}.find('\n') == std::string::npos);
}

} // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    std::vector<std::vector<Switch>> rows;
    for (const SwitchTable table : all_switch_tables()) {
        rows.emplace_back(table.begin(), table.end());
        for (Switch& row : rows.back())
            row.routine = check;
    }
    const std::vector<SwitchTable> tables(rows.begin(), rows.end());
    std::vector<std::string> arguments = {"KOV-Controller"};
    for (std::string_view text = as_text(data, size); !text.empty();) {
        const std::size_t length = std::min(text.find('\n'), text.size());
        arguments.emplace_back(text.substr(0, length));
        text.remove_prefix(std::min(length + 1, text.size()));
    }
    std::vector<char*> pointers;
    pointers.reserve(arguments.size() + 1);
    for (std::string& argument : arguments)
        pointers.push_back(argument.data());
    pointers.push_back(nullptr);
    reset_virtual_platform();
    simulator::reset_for_test();
    program = {};
    console.start();
    start_keys();
    const int count = static_cast<int>(arguments.size());
    const CommandLineResult result =
        run_command_line({pointers.data(), arguments.size()}, tables, controller_facts);
    require(result.good || (result.position >= 1 && result.position <= count));
    return 0;
}
