#include "frame/platform/posix/posix.h"

#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <ctime>
#include <fcntl.h>
#include <iterator>
#include <poll.h>
#include <unistd.h>
#include <utility>

namespace platform
{

namespace
{

/// Waits for input (for nothing but time, with descriptor -1); true when there is some. Returns
/// early when a signal comes, at once when `is_due` tells of one that has not been dealt with.
bool wait_for_input(int descriptor, std::int64_t timeout_ms, bool (*is_due)())
{
    // A reader of our output that has gone away would only be noticed by the next write, which a
    // display in a pipe puts off to its end.
    pollfd entries[] = {
        // a negative descriptor is left out
        {.fd = descriptor, .events = POLLIN, .revents = 0},
        {.fd = output_is_terminal() ? -1 : STDOUT_FILENO, .events = 0, .revents = 0}};
    const auto look_at_results = [&entries](int result) {
        if (result > 0 && (entries[1].revents & POLLERR) != 0)
            posix::request_stop(SIGPIPE);
        return result > 0 && entries[0].revents != 0;
    };
    if (timeout_ms == 0)
        return look_at_results(poll(entries, std::size(entries), 0));
    // A signal just before the wait would go unnoticed until its end.
    const posix::HeldSignals held;
    return !is_due() && look_at_results(held.poll(entries, timeout_ms));
}

} // namespace

void start()
{
    // A file that somebody opens later must never take the place of a closed standard stream: the
    // console's text would go into it. For a program that takes our place it stays closed.
    int descriptor = 0;
    while (descriptor >= 0 && descriptor <= STDERR_FILENO)
        descriptor = open("/dev/null", O_RDWR | O_CLOEXEC);
    if (descriptor >= 0)
        close(descriptor);
    posix::note_terminal_modes();
    posix::watch_signals();
    std::atexit(restore_terminal); // also when the device library ends the process
}

std::span<char*> arguments(int count, char** values)
{
    return {values, static_cast<std::size_t>(count)};
}

std::int64_t posix::now_ms()
{
    timespec now = {};
    clock_gettime(CLOCK_MONOTONIC, &now);
    return std::int64_t{now.tv_sec} * 1000 + now.tv_nsec / 1'000'000;
}

std::int64_t tick_ms()
{
    const std::int64_t now = posix::now_ms();
    posix::requests.looked_at_clock(now);
    return now;
}

LocalTime local_time()
{
    timespec now = {};
    clock_gettime(CLOCK_REALTIME, &now);
    std::tm local = {};
    localtime_r(&now.tv_sec, &local);
    return {.year = local.tm_year + 1900,
            .month = local.tm_mon + 1,
            .day = local.tm_mday,
            .weekday = local.tm_wday,
            .hour = local.tm_hour,
            .minute = local.tm_min,
            .second = local.tm_sec,
            .millisecond = static_cast<int>(now.tv_nsec / 1'000'000)};
}

void sleep_ms(std::int64_t milliseconds)
{
    const std::int64_t end = tick_ms() + milliseconds;
    for (std::int64_t left = milliseconds; left > 0 && !posix::stop_is_due();
         left = end - tick_ms())
        wait_for_input(-1, left, posix::stop_is_due);
}

void rest_ms(std::int64_t milliseconds)
{
    timespec left = {.tv_sec = static_cast<time_t>(milliseconds / 1000),
                     .tv_nsec = static_cast<long>(milliseconds % 1000 * 1'000'000)};
    while (nanosleep(&left, &left) != 0 && errno == EINTR) {
    }
}

InputResult read_input(unsigned char* buffer, std::size_t size, std::size_t& count,
                       std::int64_t timeout_ms)
{
    count = 0;
    if (!posix::keys_are_ours()) {
        constexpr std::int64_t look_again_ms = 250;
        const bool longer = timeout_ms < 0 || timeout_ms > look_again_ms;
        (void)wait_for_input(-1, longer ? look_again_ms : timeout_ms, posix::signal_is_due);
        return InputResult::nothing;
    }
    if (!wait_for_input(STDIN_FILENO, timeout_ms, posix::signal_is_due))
        return InputResult::nothing;
    const ssize_t got = read(STDIN_FILENO, buffer, size);
    if (got > 0) {
        count = static_cast<std::size_t>(got);
        return InputResult::bytes;
    }
    if (got < 0 && (errno == EINTR || errno == EAGAIN || posix::is_in_background(STDIN_FILENO)))
        return InputResult::nothing;
    // A terminal that has no more input has gone.
    if (input_is_terminal())
        posix::request_stop(SIGHUP);
    return InputResult::ended;
}

std::thread start_thread(std::function<void()> work)
{
    sigset_t all, before; // a thread inherits what is blocked
    sigfillset(&all);
    pthread_sigmask(SIG_SETMASK, &all, &before);
    std::thread thread{std::move(work)};
    pthread_sigmask(SIG_SETMASK, &before, nullptr);
    return thread;
}

const char* environment(const char* name)
{
    return std::getenv(name);
}

} // namespace platform
