#include "companion/journal/new_file.h"

#include "frame/platform/platform.h"

namespace journal
{

namespace
{

/// "run.jsonl" with "-17" before its last dot.
std::string with_number(const std::string& name, std::uint64_t number)
{
    const std::size_t slash = name.find_last_of("/\\");
    const std::size_t dot = name.rfind('.');
    const bool has_dot = dot != std::string::npos && (slash == std::string::npos || dot > slash);
    const std::size_t at = has_dot ? dot : name.size();
    return name.substr(0, at) + '-' + std::to_string(number) + name.substr(at);
}

} // namespace

bool open_new(host::OutputFile& file, std::string& name, std::uint64_t process)
{
    constexpr std::uint64_t most_attempts = 1000;
    const std::string numbered = with_number(name, process);
    // Systems give numbers of processes again, in containers after each start.
    for (std::uint64_t attempt = 0; attempt < most_attempts; ++attempt) {
        const std::string free = attempt == 0   ? name
                                 : attempt == 1 ? numbered
                                                : with_number(numbered, attempt);
        if (file.open(free, host::OutputFile::Opening::create)) {
            name = free;
            return true;
        }
        if (!platform::is_there(free))
            break;
    }
    return false;
}

} // namespace journal
