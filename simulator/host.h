/// What the simulated instrument needs of the computer it runs on: clocks, files that are replaced
/// in one go, a lock that dies with its process, environment variables. One source file per
/// operating system implements it; the tests link one whose clock moves only when told.
#pragma once

#include <cstdint>
#include <cstdio>
#include <optional>
#include <string>

namespace simulator::host
{

/// Microseconds of a clock that never steps, from an arbitrary origin.
std::int64_t monotonic_us();

/// Microseconds since 1970-01-01 00:00 UTC; steps when the clock is set.
std::int64_t wall_clock_us();

/// Milliseconds since 1970-01-01 00:00 as the local clock on the wall shows it.
std::int64_t local_wall_clock_ms();

/// Returns when that much time has passed. Sleeps for most of it and ends to the microsecond.
void let_time_pass_us(std::int64_t microseconds);

/// An environment variable; nothing when it is not set or empty.
std::optional<std::string> environment(const char* name);

/// The one absolute name of a file, whatever relative names and links lead to it; its folder is
/// made where needed. The name as it is where that cannot be found out.
std::string real_name(const std::string& path);

/// Where the state of the instrument at that COM port is kept unless somebody names another file;
/// empty when the user has no place for it.
std::string default_state_path(unsigned port);

/// Opens a file as std::fopen() does; file names are UTF-8, here as everywhere.
std::FILE* open_file(const char* name, const char* mode);

enum class Reading { done, missing, failed };

/// What is larger, or no regular file, is not read: it is nobody's state and nobody's scenario.
inline constexpr std::int64_t largest_file = 4 << 20;

/// Reads a whole file; `problem` says why when it failed.
[[nodiscard]] Reading read_file(const std::string& path, std::string& bytes, std::string& problem);

/// Replaces a file as a whole, making its folder where needed: after an interruption either the
/// old or the new content stands there. `durable` waits until the disk has it. Nothing is ever
/// written through a link that somebody laid in the place of the new content.
[[nodiscard]] bool replace_file(const std::string& path, const std::string& bytes, bool durable,
                                std::string& problem);

/// Gives a file a free name beside its own and returns it; nothing when that fails.
std::optional<std::string> set_aside(const std::string& path);

enum class Locking { done, held, failed };

/// Takes the one lock of this process, that of a file: of PATH.lock beside it, which is made where
/// needed. When another process has it, `holder` is its process id; 0 = not known, since it has the
/// same file by another name. The lock ends with unlock() or with the process.
[[nodiscard]] Locking lock(const std::string& path, std::int64_t& holder, std::string& problem);
void unlock();

} // namespace simulator::host
