#include "frame/platform/posix/posix.h"

#include <cerrno>
#include <csignal>
#include <cstring>
#include <fcntl.h>
#include <string>
#include <sys/socket.h>
#include <sys/stat.h>
#include <unistd.h>

namespace platform
{

namespace
{

/// How standard output is written to without a wait.
enum class Way {
    unknown,
    plainly,  ///< a file takes what it gets, at the place where we were given it
    reopened, ///< the mode belongs to the opening, and the one that we were given is the shell's,
              ///< too
    as_socket,
    cautiously, ///< where opening is not allowed
};

Way way = Way::unknown;
bool output_held = false;
std::string failure; ///< of the first write that failed; nothing is written after it
// Read by the signal handlers.
volatile std::sig_atomic_t reopened_output = -1;
volatile std::sig_atomic_t rows_below = 0;

Way find_way()
{
    struct stat status = {};
    if (fstat(STDOUT_FILENO, &status) != 0 || S_ISREG(status.st_mode) || S_ISBLK(status.st_mode))
        return Way::plainly;
    if (S_ISSOCK(status.st_mode))
        return Way::as_socket;
    reopened_output = open("/proc/self/fd/1", O_WRONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC);
    return reopened_output >= 0 ? Way::reopened : Way::cautiously;
}

pollfd room()
{
    return {.fd = STDOUT_FILENO, .events = POLLOUT, .revents = 0};
}

ssize_t write_without_wait(std::string_view bytes)
{
    constexpr std::size_t cautious_size = 256; // fits mostly, where there is room at all
    if (way == Way::as_socket)
        return send(STDOUT_FILENO, bytes.data(), bytes.size(), MSG_DONTWAIT);
    if (pollfd entry = room(); way == Way::cautiously) {
        bytes = bytes.substr(0, cautious_size);
        if (poll(&entry, 1, 0) <= 0)
            return 0;
    }
    return write(posix::unblocked_output(), bytes.data(), bytes.size());
}

/// Writes what goes at once. What nobody receives any more counts as written.
std::size_t write_at_once(std::string_view bytes)
{
    if (bytes.empty() || !failure.empty())
        return bytes.size();
    const ssize_t written = write_without_wait(bytes);
    if (written >= 0)
        return static_cast<std::size_t>(written);
    if (errno == EINTR || errno == EAGAIN || errno == EWOULDBLOCK)
        return 0;
    if (errno == EPIPE || errno == ECONNRESET)
        posix::request_stop(SIGPIPE);
    else if (errno == EIO && isatty(STDOUT_FILENO) != 0)
        posix::request_stop(SIGHUP);
    else
        failure = std::strerror(errno);
    return bytes.size();
}

/// Writes to a file; nothing but a request to end the program breaks that off when its disk hangs.
/// How much was taken: all, or nothing while output is held.
std::size_t write_to_file(std::string_view bytes)
{
    if (output_held)
        return 0;
    std::string_view rest = bytes;
    do {
        rest.remove_prefix(write_at_once(rest));
    } while (!rest.empty() && !posix::stop_is_due());
    return bytes.size();
}

} // namespace

namespace posix
{

int unblocked_output()
{
    const int reopened = reopened_output;
    return reopened >= 0 ? reopened : STDOUT_FILENO;
}

void close_reopened_output()
{
    const int reopened = reopened_output;
    way = Way::unknown;
    reopened_output = -1; // first: a signal in between still has something to tell
    if (reopened >= 0)
        close(reopened);
}

int rows_to_leave()
{
    return rows_below;
}

void note_cursor_below_screen()
{
    rows_below = 0;
}

} // namespace posix

std::size_t write_output(std::string_view bytes, int rows_to_leave)
{
    constexpr int last_patience_ms = 100;
    posix::note_screen_use();
    std::string_view rest = bytes;
    if (way == Way::unknown)
        way = find_way();
    if (way == Way::plainly)
        return write_to_file(bytes);
    for (;;) {
        // A stop or a notice never comes between a look at the screen's state and the write.
        const posix::HeldSignals held;
        if (posix::screen_is_lost())
            break;
        rest.remove_prefix(write_at_once(rest));
        if (rest.empty())
            rows_below = rows_to_leave;
        if (rest.empty() || posix::requests.is_protected())
            break;
        // When the program is asked to end, this keeps it no longer than a moment for each text.
        const bool stops = posix::stop_is_due();
        pollfd entry = room();
        if (held.poll({&entry, 1}, stops ? last_patience_ms : -1) == 0 && stops)
            return bytes.size();
    }
    return bytes.size() - rest.size();
}

std::size_t write_some_output(std::string_view bytes, int rows_to_leave)
{
    posix::note_screen_use();
    if (way == Way::unknown)
        way = find_way();
    const posix::HeldSignals held;
    if (posix::screen_is_lost() || posix::is_in_background(STDOUT_FILENO))
        return 0;
    const std::size_t written = write_at_once(bytes);
    if (written == bytes.size())
        rows_below = rows_to_leave;
    return written;
}

bool output_is_utf8()
{
    for (const char* name : {"LC_ALL", "LC_CTYPE", "LANG"}) { // the first that is set decides
        const char* value = environment(name);
        if (value == nullptr || *value == '\0')
            continue;
        const std::string_view locale = value;
        for (const char* const encoding : {"UTF-8", "utf-8", "UTF8", "utf8"}) {
            if (locale.find(encoding) != std::string_view::npos)
                return true;
        }
        return false;
    }
    return false;
}

void hold_output(bool on)
{
    output_held = on;
}

std::string output_failure()
{
    return failure;
}

void tell_error(std::string_view text)
{
    std::string line{text};
    line += '\n';
    (void)!write(STDERR_FILENO, line.data(), line.size());
}

} // namespace platform
