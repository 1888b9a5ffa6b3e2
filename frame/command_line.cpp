#include "frame/command_line.h"

#include "frame/platform/platform.h"
#include "frame/program.h"
#include "frame/session.h"
#include "frame/text/numbers.h"

#include <cctype>
#include <cstddef>
#include <string_view>

namespace
{

char upper(char c)
{
    return static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
}

bool is_capital(char c)
{
    return std::isupper(static_cast<unsigned char>(c)) != 0;
}

bool read_yes_no(char c, bool& yes)
{
    yes = upper(c) == 'Y';
    return yes || upper(c) == 'N';
}

bool read_count(std::string_view text, std::uint32_t& count)
{
    return read_unsigned(text, count) && count <= largest_test_count;
}

bool read_set_number(std::string_view text, std::uint32_t& number)
{
    return read_unsigned(text, number) && number >= 1 && number <= highest_set_number;
}

bool read_module_address(const DeviceFacts& device, std::string_view text, unsigned& address)
{
    const int result = device.read_address(text);
    if (result < 0)
        return false;
    address = static_cast<unsigned>(result);
    return true;
}

/// The letters of a row fit those of the argument (without its "-").
bool letters_fit(const Switch& row, std::string_view argument)
{
    const std::string_view letters = row.letters;
    if (argument.size() < letters.size() || upper(argument[0]) != letters[0])
        return false;
    const bool capital = is_capital(argument[0]);
    if ((row.form == Form::capital && !capital) || (row.form == Form::lower && capital))
        return false;
    if (letters.size() == 1)
        return true;
    return upper(argument[1]) == letters[1] &&
           (row.second == SecondLetter::any_case || is_capital(argument[1]) == capital);
}

/// The row for an argument: two letters win over one. Null when there is none.
const Switch* find_switch(std::span<const SwitchTable> tables, std::string_view argument)
{
    const Switch* found = nullptr;
    std::size_t found_length = 0;
    for (const SwitchTable table : tables) {
        for (const Switch& row : table) {
            const std::size_t length = std::string_view{row.letters}.size();
            if (length > found_length && letters_fit(row, argument)) {
                found = &row;
                found_length = length;
            }
        }
    }
    return found;
}

/// Reads what is attached to a switch. `text` is what follows its letters, zero-terminated.
bool read_attached(const DeviceFacts& device, Attached kind, const char* text, Given& given)
{
    const std::string_view rest = text;
    given.has_number = !rest.empty();
    switch (kind) {
    case Attached::nothing:
        return rest.empty();
    case Attached::optional_number:
        return rest.empty() || read_unsigned(rest, given.number);
    case Attached::optional_count:
        return rest.empty() || read_count(rest, given.number);
    case Attached::address:
        return read_module_address(device, rest, given.address);
    case Attached::hv_address:
    case Attached::hv_address_with_optional_ranges:
        if (rest.empty() || !read_module_address(device, rest.substr(0, 1), given.address) ||
            given.address == 0)
            return false;
        if (rest.size() == 1)
            return true;
        given.has_ranges = true;
        return kind == Attached::hv_address_with_optional_ranges && rest.size() == 3 &&
               read_yes_no(rest[1], given.negative_voltage) &&
               read_yes_no(rest[2], given.high_current);
    case Attached::real:
        return read_real(text, given.real);
    case Attached::set_number:
        return read_set_number(rest, given.number);
    case Attached::optional_set_number:
        return rest.empty() || read_set_number(rest, given.number);
    }
    return false;
}

bool read_next(Next kind, const char* text, Given& given)
{
    const std::string_view value = text;
    switch (kind) {
    case Next::nothing:
        return true;
    case Next::number:
        return read_unsigned(value, given.number);
    case Next::count:
        return read_count(value, given.number);
    case Next::real:
        return read_real(text, given.real);
    case Next::yes_no:
        return value.size() == 1 && read_yes_no(value[0], given.yes);
    case Next::text:
        given.text = text;
        return true;
    }
    return false;
}

/// Reads and runs the switch at `position`, which then stands at the last argument consumed. False
/// when it is wrong; `position` stands at the argument to blame.
bool run_switch(std::span<char* const> arguments, std::span<const SwitchTable> tables,
                const DeviceFacts& device, std::size_t& position)
{
    const char* const argument = arguments[position];
    if (argument[0] != '-' && argument[0] != '/')
        return false;
    const std::string_view letters = argument + 1;
    const Switch* row = letters.empty() ? nullptr : find_switch(tables, letters);
    if (row == nullptr)
        return false;

    Given given;
    given.capital = is_capital(letters[0]);
    if (!read_attached(device, row->attached, argument + 1 + std::string_view{row->letters}.size(),
                       given))
        return false;
    if (row->next != Next::nothing) {
        ++position;
        if (position >= arguments.size() || !read_next(row->next, arguments[position], given))
            return false;
    }
    if (row->session != Session::none && !open_session(device.type))
        return row->session == Session::wanted || platform::stop_signal() != 0;
    row->routine(given);
    return true;
}

} // namespace

CommandLineResult run_command_line(std::span<char* const> arguments,
                                   std::span<const SwitchTable> tables, const DeviceFacts& device)
{
    if (arguments.size() < 2)
        return {.good = false, .position = 1};
    if (!read_port_number(arguments[1], program.port))
        return {.good = false, .position = 2}; // kept: the one behind the wrong number
    std::size_t position = 2;
    for (; position < arguments.size() && program.run && platform::stop_signal() == 0; ++position) {
        if (!run_switch(arguments, tables, device, position))
            return {.good = false, .position = static_cast<int>(position)};
    }
    return {};
}
