/// The device session: the library's version, the open port, the kind of device behind it.
#pragma once

#include <cstdint>

/// True when there is a device library that can be used, which is loaded then. If not, the user has
/// been told, and the run flag is cleared.
[[nodiscard]] bool library_is_loaded();

/// Opens the port and checks library and device, the first time; true when the session can be
/// used. A failure is told to the user, clears the run flag, and is never tried again. A device of
/// another type than the given one is used when the user says so.
[[nodiscard]] bool open_session(std::uint16_t expected_type);

/// Closes the port if it is open. A failure shows the library's text, nothing more.
void close_session();
