/// Another program: found and run as a shell does. Texts are UTF-8.
#pragma once

#include <string>
#include <vector>

namespace journal
{

/// Exit statuses of what cannot be run and of what is not found, as shells have them.
inline constexpr int cannot_run = 126;
inline constexpr int not_found = 127;

struct FoundProgram {
    std::string file; ///< empty = there is none
    std::string problem;
    int status = 0; ///< to end with where there is none
};

/// The file of a program that is named as on a command line, by the name that a shell would give
/// it: a script sees it.
[[nodiscard]] FoundProgram find_program(const std::string& name);

/// The same file by its own name, absolute.
[[nodiscard]] std::string without_links(const std::string& file);

/// The folder in which this program stands, without links.
[[nodiscard]] std::string own_folder();

/// The same file by a name that is good in every folder.
[[nodiscard]] std::string absolute(const std::string& name);

/// For this program and those that it runs. An empty value removes it.
void set_environment(const char* name, const std::string& value);

/// Has the system's loader look for shared libraries in this folder first, where a variable can
/// tell it.
void put_in_front_of_libraries(const std::string& folder);

/// Gives terminal, signals and standard streams to a program and ends with its exit status: it
/// takes the place of this process, where the system can do that. Returns only when the program
/// cannot be started, or has ended: its status.
[[nodiscard]] int run_program(const std::string& file, const std::vector<std::string>& arguments,
                              std::string& problem);

} // namespace journal
