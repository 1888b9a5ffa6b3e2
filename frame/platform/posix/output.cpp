#include "frame/platform/posix/posix.h"

#include <cerrno>
#include <csignal>
#include <fcntl.h>
#include <poll.h>
#include <string>
#include <unistd.h>
#include <utility>

namespace platform
{

namespace
{

/// Standard output opened once more, for writing without a wait: the mode belongs to the opening,
/// and the one that we were given is the shell's, too.
int reopened_output = -1;
bool output_reopening_tried = false;

/// What was not taken during a protected run.
std::string unsent;

/// Nobody receives our output any more.
void output_has_gone(int error)
{
    posix::request_stop(error == EIO ? SIGHUP : SIGPIPE);
}

bool reopen_output()
{
    if (!output_reopening_tried) {
        output_reopening_tried = true;
        reopened_output = open("/proc/self/fd/1", O_WRONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC);
    }
    return reopened_output >= 0;
}

bool wait_for_room(int timeout_ms)
{
    pollfd entry = {.fd = STDOUT_FILENO, .events = POLLOUT, .revents = 0};
    return poll(&entry, 1, timeout_ms) > 0;
}

/// Writes what goes at once. What nobody receives any more counts as written.
std::size_t write_at_once(std::string_view bytes)
{
    constexpr std::size_t cautious_size = 256; // fits mostly, where there is room at all
    if (!reopen_output()) {                    // not ours to open
        if (!wait_for_room(0))
            return 0;
        bytes = bytes.substr(0, cautious_size);
    }
    const int descriptor = posix::unblocked_output();
    const ssize_t written = write(descriptor, bytes.data(), bytes.size());
    if (written >= 0)
        return static_cast<std::size_t>(written);
    if (errno == EINTR || errno == EAGAIN || errno == EWOULDBLOCK)
        return 0;
    output_has_gone(errno);
    return bytes.size();
}

/// Writes everything, waiting as long as it takes; when the program is asked to end, no longer than
/// a moment for each text. False when nobody receives it any more.
bool write_patiently(std::string_view bytes)
{
    constexpr int last_patience_ms = 100;
    while (!bytes.empty()) {
        if (output_is_terminal() || stop_signal() != 0) {
            bytes.remove_prefix(write_at_once(bytes));
            if (!bytes.empty() && !wait_for_room(stop_signal() != 0 ? last_patience_ms : -1) &&
                stop_signal() != 0)
                return true; // it does not keep the program from its end
            continue;
        }
        const ssize_t written = write(STDOUT_FILENO, bytes.data(), bytes.size());
        if (written >= 0) {
            bytes.remove_prefix(static_cast<std::size_t>(written));
            continue;
        }
        if (errno == EAGAIN || errno == EWOULDBLOCK) {
            (void)wait_for_room(1000);
        } else if (errno != EINTR) {
            output_has_gone(errno);
            return false;
        }
    }
    return stop_signal() != SIGHUP && stop_signal() != SIGPIPE;
}

} // namespace

namespace posix
{

int unblocked_output()
{
    return reopened_output >= 0 ? reopened_output : STDOUT_FILENO;
}

void close_reopened_output()
{
    if (reopened_output >= 0)
        close(reopened_output);
    reopened_output = -1;
    output_reopening_tried = false;
}

} // namespace posix

bool write_output(std::string_view bytes)
{
    posix::note_screen_use();
    if (!posix::run_is_protected() && unsent.empty())
        return write_patiently(bytes);
    unsent += bytes;
    if (posix::run_is_protected())
        unsent.erase(0, write_at_once(unsent));
    else
        return write_patiently(std::exchange(unsent, {}));
    return true;
}

std::size_t write_some_output(std::string_view bytes)
{
    posix::note_screen_use();
    if (!unsent.empty())
        unsent.erase(0, write_at_once(unsent));
    return unsent.empty() ? write_at_once(bytes) : 0;
}

} // namespace platform
