/// The simulator's host in tests: time passes in no time and files need no disk.
#include "tests/simulator/virtual_host.h"

#include "simulator/host.h"
#include "tests/support/virtual_time.h"

#include <filesystem>
#include <fstream>
#include <iterator>

namespace virtual_host
{

namespace
{
Computer the_computer;
}

Computer& computer()
{
    return the_computer;
}

void reset()
{
    the_computer = Computer{};
}

} // namespace virtual_host

namespace simulator::host
{

using virtual_host::computer;

std::int64_t monotonic_us()
{
    return virtual_time::now_us();
}

std::int64_t wall_clock_us()
{
    return virtual_time::wall_clock_start_ms * 1000 + virtual_time::now_us();
}

std::int64_t local_wall_clock_ms()
{
    return wall_clock_us() / 1000;
}

void let_time_pass_us(std::int64_t microseconds)
{
    virtual_time::advance_us(microseconds);
}

std::optional<std::string> environment(const char* name)
{
    const auto found = computer().environment.find(name);
    if (found == computer().environment.end())
        return std::nullopt;
    return found->second;
}

std::string real_name(const std::string& path)
{
    return path;
}

std::string default_state_path(unsigned port)
{
    return computer().has_home ? "/state/COM" + std::to_string(port) + ".state" : "";
}

std::FILE* open_file(const char* name, const char* mode)
{
    // Nothing stays behind in the folder that the tests happen to run in.
    if (*mode == 'w' && !std::filesystem::path{name}.has_root_directory())
        return std::tmpfile();
    return std::fopen(name, *mode == 'w' ? "wb" : mode); // the same line ends everywhere
}

Reading read_file(const std::string& path, std::string& bytes, std::string& problem)
{
    const auto found = computer().files.find(path);
    if (found != computer().files.end()) {
        bytes = found->second;
        return Reading::done;
    }
    std::ifstream file(path, std::ios::binary);
    problem = "cannot be opened";
    if (!file)
        return Reading::missing;
    bytes.assign(std::istreambuf_iterator<char>(file), {});
    return Reading::done;
}

bool replace_file(const std::string& path, const std::string& bytes, bool, std::string& problem)
{
    if (computer().disk_full) {
        problem = "No space left on device";
        return false;
    }
    computer().files[path] = bytes;
    return true;
}

std::optional<std::string> set_aside(const std::string& path)
{
    const std::string name = path + ".damaged1";
    auto file = computer().files.extract(path);
    file.key() = name;
    computer().files.insert(std::move(file));
    return name;
}

Locking lock(const std::string& path, std::int64_t&, std::string&)
{
    computer().own_lock = path;
    return Locking::done;
}

void unlock()
{
    computer().own_lock.clear();
}

} // namespace simulator::host
