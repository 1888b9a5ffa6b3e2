/// What all commands on configuration sets share. To the user and in files sets are numbered from
/// 1; the library counts them from 0.
#pragma once

#include "frame/device_call.h"
#include "frame/failure.h"
#include "frame/switches.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <string_view>

/// A set's name: 202 bytes filled up with zeros, and one more zero behind them. A name that fills
/// the field has no terminator of its own.
using ConfigName = DeviceText<202>;

struct SetFlags {
    std::uint8_t active = 0; ///< not deleted
    std::uint8_t valid = 0;  ///< holds data
};

/// The library's index of the set of that number.
[[nodiscard]] constexpr std::uint16_t set_index(unsigned number)
{
    return static_cast<std::uint16_t>(number - 1);
}

/// The name in its field: up to its first zero byte, longer ones cut.
[[nodiscard]] ConfigName config_name(std::string_view text);

// One call each for the set of that number, 1..1023.

[[nodiscard]] Failure attempt_get_flags(unsigned number, SetFlags& flags);
[[nodiscard]] Failure attempt_set_flags(unsigned number, SetFlags flags);
[[nodiscard]] Failure attempt_get_name(unsigned number, ConfigName& name);
[[nodiscard]] Failure attempt_set_name(unsigned number, const ConfigName& name);

/// The functions that give a set its name, its data and its flags. A command that does so in
/// several calls begins only where all are there: a set that was changed by half would be lost.
inline constexpr std::array functions_that_fill_a_set = {
    LIB(SetConfigName).row, LIB(SetConfigData).row, LIB(SetConfigFlags).row};

/// Ends the line that is begun, then reports: for calls that fail while a question or a progress
/// text stands on the line. True when `failed` is null.
[[nodiscard]] bool succeeded_below(Failure failed);

/// True when the program is asked to end: clears the line and tells before which set the command
/// stopped. All sets before it have been dealt with.
[[nodiscard]] bool interrupted_before(unsigned number);
