/// Why calls fail, and what the library tells about the last failed one.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace simulator
{

enum class Failure : std::uint8_t {
    none,
    not_open,     ///< no port is open
    already_open, ///< Open while a port is open
    bad_port,     ///< no such COM port
    port_in_use,  ///< another program has the port
    bad_scenario, ///< the scenario file has a wrong line or cannot be read
    state_file,   ///< the instrument's state cannot be read or written
    no_answer,    ///< time-out: absent module, failing link
    bad_address,  ///< no such module, or one of another kind
    bad_value,    ///< refused by the instrument
    trace_file    ///< the trace cannot be written
};

/// Words the failure that the running call is about to return; without it a general text stands.
void explain(std::string text);

/// Keeps that failure as the last one and returns the status that the caller gets.
std::int32_t report_failure(Failure failure);

/// What the library tells about the last failed call. The texts live until the next failure.
const char* last_error_text();
std::uint32_t last_io_state();
std::uint32_t last_comm_error();

/// The texts of the codes; one of an unknown code lives until the next unknown one.
const char* io_state_text(std::uint32_t state);
const char* comm_error_text(std::uint32_t error);

void forget_errors();

} // namespace simulator
