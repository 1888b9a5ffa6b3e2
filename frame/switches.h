/// Switches are rows of tables. Each folder of commands publishes one table; the command line
/// walks them all and owns the grammar, so a routine gets its values ready to use.
#pragma once

#include <cstdint>
#include <span>

/// What the command line gave a routine. Which members mean something, the switch's row says.
struct Given {
    bool capital = false;     ///< the first letter was a capital
    bool has_number = false;  ///< an optional number was there
    std::uint32_t number = 0; ///< a number, a count, or the number of a configuration set
    unsigned address = 0;     ///< module address: 0..3, base_unit, all_modules
    double real = 0.0;        ///< volts, amperes, watts or degrees Celsius
    bool yes = false;         ///< answer Y
    bool has_ranges = false;  ///< both measurement ranges were there
    bool negative_voltage = false;
    bool high_current = false;
    const char* text = nullptr; ///< a file name or a name
};

using Routine = void (*)(const Given&);

/// Which case of the first letter a row is for.
enum class Form : std::uint8_t { either, capital, lower };

/// How the case of the second letter is read.
enum class SecondLetter : std::uint8_t {
    any_case,
    as_first, ///< the same case as the first
};

/// What stands in the same argument, directly behind the letters.
enum class Attached : std::uint8_t {
    nothing,
    optional_number,                 ///< unsigned
    optional_count,                  ///< 0..largest_test_count
    address,                         ///< module address, several characters
    hv_address,                      ///< one character: an HV-supply's address ("_", "*" pass too)
    hv_address_with_optional_ranges, ///< ... and perhaps two letters Y/N
    real,                            ///< real number; what follows it is ignored
    set_number,                      ///< 1..highest_set_number
    optional_set_number,
};

/// What the next argument holds.
enum class Next : std::uint8_t {
    nothing,
    number, ///< unsigned
    count,  ///< 0..largest_test_count
    real,   ///< real number; what follows it is ignored
    yes_no, ///< one letter Y or N, in either case
    text,   ///< anything
};

/// What a switch wants with the device session.
enum class Session : std::uint8_t {
    none,
    wanted,   ///< without a session the switch does nothing
    required, ///< without a session the switch counts as wrong
};

/// Largest number of characters in one data set of a communication test.
inline constexpr std::uint32_t largest_test_count = 256;

/// Configuration sets are numbered from 1.
inline constexpr std::uint32_t highest_set_number = 1023;

struct Switch {
    const char* letters; ///< one or two, in capitals
    Form form;
    Attached attached;
    Next next;
    Session session;
    Routine routine;
    SecondLetter second = SecondLetter::any_case;
};

using SwitchTable = std::span<const Switch>;
