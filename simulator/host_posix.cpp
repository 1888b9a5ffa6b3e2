#include "simulator/host.h"

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace simulator::host
{

namespace
{

/// The end of a wait that is not slept: a sleep may take that much longer than asked for.
constexpr std::int64_t sleep_slack_us = 80;

int lock_file = -1;

std::int64_t clock_us(clockid_t clock)
{
    timespec time{};
    clock_gettime(clock, &time);
    return std::int64_t{time.tv_sec} * 1'000'000 + time.tv_nsec / 1000;
}

std::string reason()
{
    return std::strerror(errno);
}

/// Makes the folders above a file, as far as they are missing.
void make_folders(const std::string& path)
{
    for (std::size_t slash = path.find('/', 1); slash != std::string::npos;
         slash = path.find('/', slash + 1))
        mkdir(path.substr(0, slash).c_str(), 0700);
}

bool write_all(int file, const std::string& bytes)
{
    for (std::size_t done = 0; done < bytes.size();) {
        const ssize_t written = write(file, bytes.data() + done, bytes.size() - done);
        if (written < 0 && errno != EINTR)
            return false;
        if (written > 0)
            done += static_cast<std::size_t>(written);
    }
    return true;
}

/// Makes a renamed file's new name last.
void sync_folder(const std::string& path)
{
    const std::size_t slash = path.rfind('/');
    const std::string folder = slash == std::string::npos ? "." : path.substr(0, slash + 1);
    const int file = open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (file < 0)
        return;
    fsync(file);
    close(file);
}

} // namespace

std::int64_t monotonic_us()
{
    return clock_us(CLOCK_MONOTONIC);
}

std::int64_t wall_clock_us()
{
    return clock_us(CLOCK_REALTIME);
}

std::int64_t local_wall_clock_ms()
{
    const std::int64_t now_ms = wall_clock_us() / 1000;
    const std::time_t seconds = now_ms / 1000;
    std::tm local{};
    localtime_r(&seconds, &local);
    return now_ms + std::int64_t{local.tm_gmtoff} * 1000;
}

void let_time_pass_us(std::int64_t microseconds)
{
    const std::int64_t until_us = monotonic_us() + microseconds;
    const std::int64_t asleep_until_us = until_us - sleep_slack_us;
    const timespec wake_up{static_cast<std::time_t>(asleep_until_us / 1'000'000),
                           static_cast<long>(asleep_until_us % 1'000'000 * 1000)};
    if (microseconds > sleep_slack_us)
        while (clock_nanosleep(CLOCK_MONOTONIC, TIMER_ABSTIME, &wake_up, nullptr) == EINTR) {
        }
    while (monotonic_us() < until_us) {
    }
}

std::optional<std::string> environment(const char* name)
{
    const char* const value = std::getenv(name);
    if (value == nullptr || *value == '\0')
        return std::nullopt;
    return value;
}

std::string default_state_path(unsigned port)
{
    const std::optional<std::string> states = environment("XDG_STATE_HOME");
    const std::optional<std::string> home = environment("HOME");
    std::string folder;
    if (states && states->starts_with('/'))
        folder = *states;
    else if (home)
        folder = *home + "/.local/state";
    else
        return "";
    return folder + "/kov-controller/simulator/COM" + std::to_string(port) + ".state";
}

std::FILE* open_file(const char* name, const char* mode)
{
    return std::fopen(name, mode);
}

Reading read_file(const std::string& path, std::string& bytes, std::string& problem)
{
    bytes.clear();
    const int file = open(path.c_str(), O_RDONLY | O_CLOEXEC);
    if (file < 0) {
        problem = reason();
        return errno == ENOENT ? Reading::missing : Reading::failed;
    }
    char block[16384];
    for (;;) {
        const ssize_t count = read(file, block, sizeof block);
        if (count < 0 && errno == EINTR)
            continue;
        if (count < 0)
            problem = reason();
        if (count <= 0) {
            close(file);
            return count == 0 ? Reading::done : Reading::failed;
        }
        bytes.append(block, static_cast<std::size_t>(count));
    }
}

bool replace_file(const std::string& path, const std::string& bytes, bool durable,
                  std::string& problem)
{
    const std::string temporary = path + ".new";
    int file = open(temporary.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0600);
    if (file < 0 && errno == ENOENT) {
        make_folders(path);
        file = open(temporary.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0600);
    }
    if (file < 0) {
        problem = reason();
        return false;
    }
    bool good = write_all(file, bytes) && (!durable || fsync(file) == 0);
    if (!good)
        problem = reason();
    if (close(file) != 0 && good) {
        problem = reason();
        good = false;
    }
    if (good && rename(temporary.c_str(), path.c_str()) != 0) {
        problem = reason();
        good = false;
    }
    if (!good)
        unlink(temporary.c_str());
    else if (durable)
        sync_folder(path);
    return good;
}

std::optional<std::string> set_aside(const std::string& path)
{
    for (unsigned number = 1; number < 1000; ++number) {
        std::string name = path + ".damaged" + std::to_string(number);
        // A hard link, since it never takes the name of a file that is already there.
        if (link(path.c_str(), name.c_str()) == 0)
            return unlink(path.c_str()) == 0 ? std::optional(std::move(name)) : std::nullopt;
        if (errno != EEXIST)
            return std::nullopt;
    }
    return std::nullopt;
}

Locking lock(const std::string& path, std::int64_t& holder, std::string& problem)
{
    make_folders(path);
    const int file = open(path.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0600);
    if (file < 0) {
        problem = reason();
        return Locking::failed;
    }
    struct flock region {
    };
    region.l_type = F_WRLCK;
    region.l_whence = SEEK_SET;
    if (fcntl(file, F_SETLK, &region) == 0) {
        lock_file = file;
        return Locking::done;
    }
    const bool held = errno == EACCES || errno == EAGAIN;
    problem = reason();
    holder = 0;
    if (held && fcntl(file, F_GETLK, &region) == 0 && region.l_type != F_UNLCK)
        holder = region.l_pid;
    close(file);
    return held ? Locking::held : Locking::failed;
}

void unlock()
{
    if (lock_file >= 0)
        close(lock_file); // which gives the lock back
    lock_file = -1;
}

} // namespace simulator::host
