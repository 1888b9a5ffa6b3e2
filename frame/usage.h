/// What the program says about itself.
#pragma once

#include "frame/device_facts.h"

#include <string>

/// The library's trace file, in the working directory.
inline constexpr const char* debug_file_name = "Debug.txt";

/// The program's own name from its path: what follows the last separator; "KOV-Controller" when
/// that is nothing.
[[nodiscard]] std::string program_name(const char* path);

/// Prints a path's characters up to the first ".".
void print_program_name(const char* path);

/// Name, version, build date, maker.
void print_banner(const std::string& name);

/// "Usage: ", the name, and all switches.
void print_usage(const std::string& name, const DeviceFacts& device);
