/// The connection with the instrument: port, clock, state file, lock.
#pragma once

#include "simulator/library/errors.h"

#include <cstddef>
#include <cstdint>

namespace simulator
{

[[nodiscard]] bool port_is_open();

/// Opens a COM port: takes its lock and finds the instrument as it would be by now.
[[nodiscard]] Failure open_port(std::uint8_t port);

/// Keeps the state and gives the port back.
[[nodiscard]] Failure close_port();

/// Writes the state file when the instrument changed in a way that it keeps.
[[nodiscard]] Failure save_changes();

/// Sets the nearest data rate that a port can do and returns it; the time that bytes take at it.
std::uint32_t set_data_rate(std::uint32_t wanted);
[[nodiscard]] std::int64_t transfer_time_us(std::size_t bytes);

/// Throws the instrument away, and an open port with it, keeping no state.
void reset_session();

} // namespace simulator
