#include "companion/journal/host.h"

#include <array>
#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <dlfcn.h>
#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

namespace journal::host
{

namespace
{

std::int64_t microseconds(clockid_t clock)
{
    timespec now = {};
    clock_gettime(clock, &now);
    return std::int64_t{now.tv_sec} * 1'000'000 + now.tv_nsec / 1000;
}

/// Of the local time. It changes with a minute, if ever, and is not cheap to find.
int offset_minutes(time_t seconds)
{
    struct Found {
        time_t minute = -1;
        int offset = 0;
    };
    thread_local Found found;
    if (const time_t minute = seconds / 60; minute != found.minute) {
        std::tm local = {};
        localtime_r(&seconds, &local);
        found = {minute, static_cast<int>(local.tm_gmtoff / 60)};
    }
    return found.offset;
}

Moment now()
{
    const std::int64_t us = microseconds(CLOCK_REALTIME);
    return {.us = us, .offset_minutes = offset_minutes(static_cast<time_t>(us / 1'000'000))};
}

std::int64_t steady_us()
{
    return microseconds(CLOCK_MONOTONIC);
}

void rest_us(std::int64_t us)
{
    const std::int64_t end = steady_us() + us;
    const timespec until = {.tv_sec = static_cast<time_t>(end / 1'000'000),
                            .tv_nsec = static_cast<long>(end % 1'000'000 * 1000)};
    while (clock_nanosleep(CLOCK_MONOTONIC, TIMER_ABSTIME, &until, nullptr) == EINTR) {
    }
}

/// The same file away from the standard streams, which a program may have closed. Negative, with
/// `errno`, when there was none or no place is left.
int moved_away(int descriptor)
{
    int moved = descriptor;
    if (descriptor >= 0) {
        moved = fcntl(descriptor, F_DUPFD_CLOEXEC, 64);
        if (moved < 0)
            moved = fcntl(descriptor, F_DUPFD_CLOEXEC, STDERR_FILENO + 1);
        const int why = errno;
        close(descriptor);
        errno = why;
    }
    return moved;
}

/// Failures to write raise no signal for as long as it exists.
class NoSignals
{
public:
    NoSignals()
    {
        sigemptyset(&ours_);
        sigaddset(&ours_, SIGPIPE);
        sigaddset(&ours_, SIGXFSZ);
        pthread_sigmask(SIG_BLOCK, &ours_, &before_);
    }
    ~NoSignals()
    {
        if (failed_) {
            sigset_t pending;
            sigpending(&pending);
            const timespec at_once = {};
            if (sigismember(&pending, SIGPIPE) != 0 || sigismember(&pending, SIGXFSZ) != 0)
                sigtimedwait(&ours_, nullptr, &at_once);
        }
        pthread_sigmask(SIG_SETMASK, &before_, nullptr);
    }
    NoSignals(const NoSignals&) = delete;
    NoSignals& operator=(const NoSignals&) = delete;

    void note_failure() { failed_ = true; }

private:
    sigset_t ours_, before_;
    bool failed_ = false;
};

} // namespace

const Clock& clock()
{
    static constexpr Clock system_clock = {now, steady_us, rest_us};
    return system_clock;
}

std::uint64_t process_id()
{
    return static_cast<std::uint64_t>(getpid());
}

std::optional<std::string> environment(const char* name)
{
    const char* const value = std::getenv(name);
    if (value == nullptr || *value == '\0')
        return std::nullopt;
    return value;
}

std::vector<std::string> command_line()
{
    std::vector<std::string> words;
    std::FILE* const file = std::fopen("/proc/self/cmdline", "re");
    if (file == nullptr)
        return words;
    bool in_word = false;
    for (int c = std::fgetc(file); c != EOF; c = std::fgetc(file)) {
        if (!in_word)
            words.emplace_back();
        in_word = c != '\0';
        if (in_word)
            words.back() += static_cast<char>(c);
    }
    std::fclose(file);
    return words;
}

bool is_same_file(const std::string& one, const std::string& other)
{
    struct stat a = {}, b = {};
    return stat(one.c_str(), &a) == 0 && stat(other.c_str(), &b) == 0 && a.st_dev == b.st_dev &&
           a.st_ino == b.st_ino;
}

std::string own_file()
{
    Dl_info about = {};
    static const char here = 0;
    if (dladdr(&here, &about) == 0 || about.dli_fname == nullptr)
        return {};
    return about.dli_fname;
}

std::FILE* open_to_read(const std::string& name)
{
    const int descriptor = moved_away(open(name.c_str(), O_RDONLY | O_CLOEXEC));
    return descriptor < 0 ? nullptr : fdopen(descriptor, "r");
}

void tell(std::string_view line)
{
    const std::string text = std::string{line} + '\n';
    NoSignals none;
    if (::write(STDERR_FILENO, text.data(), text.size()) < 0)
        none.note_failure(); // there is nobody else to tell
}

bool error_output_is_terminal()
{
    return isatty(STDERR_FILENO) != 0;
}

OutputFile::~OutputFile()
{
    close();
}

bool OutputFile::open(const std::string& name, Opening opening, std::uint64_t expected_size)
{
    const auto fail = [this](const char* why) {
        problem_ = why;
        close();
        return false;
    };
    name_ = name;
    int flags = O_WRONLY | O_APPEND | O_NONBLOCK | O_CLOEXEC | O_NOCTTY;
    if (opening != Opening::go_on)
        flags |= O_CREAT;
    if (opening == Opening::create)
        flags |= O_EXCL;
    handle_ = moved_away(::open(name.c_str(), flags, 0666));
    if (handle_ < 0)
        return fail(std::strerror(errno));
    struct stat about = {};
    if (fstat(static_cast<int>(handle_), &about) != 0)
        return fail(std::strerror(errno));
    device_ = about.st_dev;
    inode_ = about.st_ino;
    if (!S_ISREG(about.st_mode))
        return true;
    if (flock(static_cast<int>(handle_), LOCK_EX | LOCK_NB) != 0 && errno == EWOULDBLOCK)
        return fail("another process writes it");
    if (opening == Opening::go_on && static_cast<std::uint64_t>(about.st_size) != expected_size)
        return fail("another process has written it");
    if (opening == Opening::replace && ftruncate(static_cast<int>(handle_), 0) != 0)
        return fail(std::strerror(errno));
    return true;
}

/// A program that closes all descriptors closes ours, too, and may get its number for a file.
bool OutputFile::is_ours() const
{
    struct stat about = {};
    return fstat(static_cast<int>(handle_), &about) == 0 && about.st_dev == device_ &&
           about.st_ino == inode_;
}

bool OutputFile::write(std::string_view bytes)
{
    if (!is_ours()) {
        handle_ = moved_away(::open(name_.c_str(), O_WRONLY | O_APPEND | O_NONBLOCK | O_CLOEXEC));
        if (handle_ < 0) {
            problem_ = std::strerror(errno);
            return false;
        }
        if (!is_ours()) {
            problem_ = "it is another file now";
            return false;
        }
    }
    NoSignals none;
    while (!bytes.empty()) {
        const ssize_t went = ::write(static_cast<int>(handle_), bytes.data(), bytes.size());
        if (went >= 0) {
            bytes.remove_prefix(static_cast<std::size_t>(went));
        } else if (errno != EINTR) {
            problem_ = std::strerror(errno);
            none.note_failure();
            return false;
        }
    }
    return true;
}

void OutputFile::close()
{
    if (handle_ >= 0 && is_ours())
        ::close(static_cast<int>(handle_));
    handle_ = -1;
}

} // namespace journal::host
