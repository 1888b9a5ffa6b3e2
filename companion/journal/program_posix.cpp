#include "companion/journal/program.h"

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <sys/stat.h>
#include <unistd.h>

namespace journal
{

namespace
{

bool is_program(const std::string& file)
{
    struct stat about = {};
    return stat(file.c_str(), &about) == 0 && S_ISREG(about.st_mode) &&
           access(file.c_str(), X_OK) == 0;
}

} // namespace

FoundProgram find_program(const std::string& name)
{
    if (name.find('/') != std::string::npos) {
        if (is_program(name))
            return {.file = name};
        if (access(name.c_str(), F_OK) != 0)
            return {.problem = std::strerror(errno), .status = not_found};
        return {.problem = "it is no program", .status = cannot_run};
    }
    const char* const variable = std::getenv("PATH");
    const std::string path = variable != nullptr ? variable : "/usr/local/bin:/usr/bin:/bin";
    for (std::size_t at = 0; at <= path.size();) {
        const std::size_t end = std::min(path.find(':', at), path.size());
        const std::string folder = path.substr(at, end - at);
        const std::string file = (folder.empty() ? "." : folder) + '/' + name;
        if (is_program(file))
            return {.file = file};
        at = end + 1;
    }
    return {.problem = "there is no such program", .status = not_found};
}

std::string without_links(const std::string& file)
{
    std::error_code failed;
    const std::filesystem::path path = std::filesystem::canonical(file, failed);
    return failed ? file : path.string();
}

std::string own_folder()
{
    std::error_code failed;
    return std::filesystem::read_symlink("/proc/self/exe", failed).parent_path().string();
}

std::string absolute(const std::string& name)
{
    std::error_code failed;
    const std::filesystem::path path = std::filesystem::absolute(name, failed);
    return failed ? name : path.string();
}

void set_environment(const char* name, const std::string& value)
{
    if (value.empty())
        unsetenv(name);
    else
        setenv(name, value.c_str(), 1);
}

void put_in_front_of_libraries(const std::string& folder)
{
    const char* const before = std::getenv("LD_LIBRARY_PATH");
    const std::string rest = before != nullptr && *before != '\0' ? ':' + std::string{before} : "";
    setenv("LD_LIBRARY_PATH", (folder + rest).c_str(), 1);
}

int run_program(const std::string& file, const std::vector<std::string>& arguments,
                std::string& problem)
{
    std::vector<char*> pointers;
    pointers.reserve(arguments.size() + 1);
    for (const std::string& argument : arguments)
        pointers.push_back(const_cast<char*>(argument.c_str())); // which execv() does not change
    pointers.push_back(nullptr);
    execv(file.c_str(), pointers.data());
    problem = std::strerror(errno);
    return cannot_run;
}

} // namespace journal
