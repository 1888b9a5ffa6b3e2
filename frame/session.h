/// The device session: the library's version, the open port, the kind of device behind it.
#pragma once

#include <cstdint>

/// Device-type code of the controller that this program is made for, and what it is called.
inline constexpr std::uint16_t controller_device_type = 0x8ED6;
inline constexpr const char* controller_type_name = "KOV-CTRL";

/// Opens the port and checks library and device, the first time; true when the session can be
/// used. A failure is told to the user, clears the run flag, and is never tried again. A device of
/// another type is used when the user says so.
[[nodiscard]] bool open_session();

/// Closes the port if it is open. A failure shows the library's text, nothing more.
void close_session();
