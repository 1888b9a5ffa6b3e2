/// The command line of a program of Windows, which gets it as one text.
#pragma once

#include <string>
#include <string_view>
#include <vector>

/// The program's name and its arguments, by the rules of the C runtime: blanks and tabs separate,
/// quotes hold together, a doubled quote between quotes stands for one, so does backslash and
/// quote; backslashes before a quote count half, all others as they are. No wildcards.
///
/// The system's own function would bring the library of windows and menus into the process: a
/// program that has it is not told of the end of the user's session any more.
[[nodiscard]] std::vector<std::wstring> split_command_line(std::wstring_view line);
