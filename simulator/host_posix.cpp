#include "simulator/host.h"

#include <algorithm>
#include <cerrno>
#include <climits>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

namespace simulator::host
{

namespace
{

/// The end of a wait that is not slept: a sleep may take that much longer than asked for.
constexpr std::int64_t sleep_slack_us = 80;

int lock_file = -1;
int locked_file = -1; ///< what the lock is for, as far as it is there

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

/// With the slash at its end; empty for a name without a folder.
std::string folder_of(const std::string& path)
{
    return path.substr(0, path.rfind('/') + 1);
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
    const std::string folder = folder_of(path);
    const int file =
        open(folder.empty() ? "." : folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (file < 0)
        return;
    fsync(file);
    close(file);
}

/// Makes a file that was not there; a remainder or a link of that name goes.
int create_new(const std::string& name)
{
    int file = -1;
    for (int tries = 0; tries < 3 && file < 0; ++tries) {
        file = open(name.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, 0600);
        if (file < 0 && errno == ENOENT)
            make_folders(name);
        else if (file < 0 && (errno != EEXIST || unlink(name.c_str()) != 0))
            break;
    }
    return file;
}

/// Why a file that was opened is not read; empty = it may be.
std::string unreadable(int file)
{
    struct stat status {
    };
    if (fstat(file, &status) != 0)
        return reason();
    if (!S_ISREG(status.st_mode))
        return "it is no regular file";
    return status.st_size > largest_file ? "it is too large" : "";
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

std::string real_name(const std::string& path)
{
    const auto real = [](const std::string& name) {
        char* const found = realpath(name.empty() ? "." : name.c_str(), nullptr);
        std::string result = found != nullptr ? found : "";
        std::free(found);
        return result;
    };
    std::string name = path;
    constexpr int most_links = 40;
    for (int links = 0; links < most_links; ++links) {
        std::string result = real(name);
        if (!result.empty())
            return result;
        // It is not there; a link may lead to where it will be.
        char target[PATH_MAX];
        const ssize_t length = readlink(name.c_str(), target, sizeof target);
        if (length < 0) {
            make_folders(name);
            result = real(folder_of(name));
            return result.empty() ? path : result + '/' + name.substr(folder_of(name).size());
        }
        const std::string next(target, static_cast<std::size_t>(length));
        name = next.starts_with('/') ? next : folder_of(name).append(next);
    }
    return path;
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
    const int file = open(path.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC); // a FIFO blocks
    if (file < 0) {
        problem = reason();
        return errno == ENOENT ? Reading::missing : Reading::failed;
    }
    problem = unreadable(file);
    if (!problem.empty()) {
        close(file);
        return Reading::failed;
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
    const int file = create_new(temporary);
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
    holder = 0;
    make_folders(path);
    const int file =
        open((path + ".lock").c_str(), O_RDWR | O_CREAT | O_NOFOLLOW | O_CLOEXEC, 0600);
    if (file < 0) {
        problem = reason();
        return Locking::failed;
    }
    struct flock region {
    };
    region.l_type = F_WRLCK;
    region.l_whence = SEEK_SET;
    if (fcntl(file, F_SETLK, &region) != 0) {
        const bool held = errno == EACCES || errno == EAGAIN;
        problem = reason();
        if (held && fcntl(file, F_GETLK, &region) == 0 && region.l_type != F_UNLCK)
            holder = region.l_pid;
        close(file);
        return held ? Locking::held : Locking::failed;
    }
    lock_file = file;
    // The same file may have another name, by a hard link.
    locked_file = open(path.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC);
    if (locked_file >= 0 && flock(locked_file, LOCK_EX | LOCK_NB) != 0 && errno == EWOULDBLOCK) {
        unlock();
        return Locking::held;
    }
    return Locking::done;
}

void unlock()
{
    for (int* const file : {&locked_file, &lock_file}) {
        if (*file >= 0)
            close(*file); // which gives the lock back
        *file = -1;
    }
}

} // namespace simulator::host
