#include "frame/platform.h"

#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <string>
#include <utility>

#include <fcntl.h>
#include <poll.h>
#include <sys/ioctl.h>
#include <sys/time.h>
#include <termios.h>
#include <unistd.h>

namespace platform
{

namespace
{

volatile std::sig_atomic_t requested_stop = 0;
volatile std::sig_atomic_t window_resized = 0;
volatile std::sig_atomic_t program_resumed = 0;

// Read by the signal handlers: written before they are installed, or with a single store.
termios original_modes;
termios raw_modes;
volatile std::sig_atomic_t have_original_modes = 0;
volatile std::sig_atomic_t raw_input_wanted = 0; ///< by the program
volatile std::sig_atomic_t raw_input_active = 0; ///< on the terminal
volatile std::sig_atomic_t screen_wanted = 0;
volatile std::sig_atomic_t screen_in_use = 0;
volatile std::sig_atomic_t rows_to_leave = 0;

volatile std::sig_atomic_t run_is_protected = 0;

/// Standard output opened once more, for writing without a wait: the mode belongs to the opening,
/// and the one that we were given is the shell's, too.
int reopened_output = -1;
bool output_reopening_tried = false;

constexpr int stop_signals[] = {SIGINT, SIGTERM, SIGHUP, SIGQUIT};
int files_being_written = 0;

constexpr char neutral_screen[] = "\033[0m\033[?25h"; // no colour, cursor visible

/// Only calls what a signal handler may call.
void hand_terminal_back()
{
    if (screen_in_use != 0) {
        screen_in_use = 0;
        // Without a wait, where that is possible: it may be the terminal that holds everything up.
        const int descriptor = reopened_output >= 0 ? reopened_output : STDOUT_FILENO;
        (void)!write(descriptor, neutral_screen, sizeof neutral_screen - 1);
        for (int row = 0; row < rows_to_leave; ++row)
            (void)!write(descriptor, "\r\n", 2);
    }
    if (raw_input_active != 0) {
        raw_input_active = 0;
        tcsetattr(STDIN_FILENO, TCSANOW, &original_modes);
    }
}

void on_stop_request(int signal_number)
{
    const int saved_errno = errno;
    if (requested_stop != 0) {
        // A closing terminal hangs up twice: once by the system, once by the shell.
        if (run_is_protected != 0 || (requested_stop == SIGHUP && signal_number == SIGHUP))
            return;
        hand_terminal_back();
        _exit(128 + signal_number);
    }
    requested_stop = signal_number;
    errno = saved_errno;
}

void on_window_change(int)
{
    window_resized = 1;
}

/// Somebody else has the terminal. One that is not our session's knows neither background nor
/// foreground: it is for all that have it open.
bool is_in_background()
{
    const pid_t foreground = tcgetpgrp(STDIN_FILENO);
    return foreground >= 0 && foreground != getpgrp();
}

/// After a stop: the terminal as the program wants it, and everything painted again.
void take_terminal_again()
{
    // In the background the terminal is somebody else's; the next SIGCONT comes with the
    // foreground.
    if (have_original_modes != 0 && is_in_background())
        return;
    if (raw_input_wanted != 0 && tcsetattr(STDIN_FILENO, TCSANOW, &raw_modes) == 0)
        raw_input_active = 1;
    if (screen_wanted != 0) {
        screen_in_use = 1;
        program_resumed = 1;
    }
}

void on_continue(int)
{
    const int saved_errno = errno;
    take_terminal_again();
    errno = saved_errno;
}

/// Ctrl-Z: the shell gets a clean terminal, the program its own one back when it goes on. The stop
/// itself is the system's: it knows whether there is a shell that could ever continue us.
void on_terminal_stop(int signal_number)
{
    const int saved_errno = errno;
    hand_terminal_back();
    struct sigaction ours = {};
    struct sigaction standard = {};
    standard.sa_handler = SIG_DFL;
    sigset_t this_signal, before;
    sigemptyset(&this_signal);
    sigaddset(&this_signal, signal_number);
    sigaction(signal_number, &standard, &ours);
    raise(signal_number);
    sigprocmask(SIG_UNBLOCK, &this_signal, &before); // stops here
    sigprocmask(SIG_SETMASK, &before, nullptr);
    sigaction(signal_number, &ours, nullptr);
    take_terminal_again();
    errno = saved_errno;
}

/// The last thing that a crash does: the terminal must not stay behind unusable.
void on_crash(int signal_number)
{
    hand_terminal_back();
    std::signal(signal_number, SIG_DFL);
    raise(signal_number);
}

/// A system call that the signal interrupts goes on behind it with SA_RESTART among the `flags`;
/// waits always wake up.
void watch(int signal_number, void (*handler)(int), int flags, bool only_default = false)
{
    struct sigaction action = {};
    if (sigaction(signal_number, nullptr, &action) != 0)
        return;
    // nohup and the like: what our parent had us ignore stays ignored.
    if (action.sa_handler == SIG_IGN || (only_default && action.sa_handler != SIG_DFL))
        return;
    action = {};
    action.sa_handler = handler;
    action.sa_flags = flags;
    sigemptyset(&action.sa_mask);
    sigaction(signal_number, &action, nullptr);
}

/// Tells whether a stop request lets an interrupted system call go on.
void restart_after_stop_request(bool restart)
{
    for (const int signal_number : stop_signals) {
        struct sigaction action = {};
        sigaction(signal_number, nullptr, &action);
        action.sa_flags = restart ? SA_RESTART : 0;
        sigaction(signal_number, &action, nullptr);
    }
}

void request_stop(int signal_number)
{
    if (requested_stop == 0)
        requested_stop = signal_number;
}

void note_screen_use()
{
    if (output_is_terminal()) {
        screen_wanted = 1;
        screen_in_use = 1;
    }
}

/// Nobody receives our output any more.
void output_has_gone(int error)
{
    request_stop(error == EIO ? SIGHUP : SIGPIPE);
}

void close_reopened_output()
{
    if (reopened_output >= 0)
        close(reopened_output);
    reopened_output = -1;
    output_reopening_tried = false;
}

bool signal_is_due()
{
    return requested_stop != 0 || window_resized != 0 || program_resumed != 0;
}

bool stop_is_due()
{
    return requested_stop != 0;
}

/// Waits for input (for nothing but time, with descriptor -1); true when there is some. Returns
/// early when a signal comes, at once when `is_due` tells of one that has not been dealt with.
bool wait_for_input(int descriptor, std::int64_t timeout_ms, bool (*is_due)())
{
    // A reader of our output that has gone away would only be noticed by the next write, which a
    // display in a pipe puts off to its end.
    pollfd entries[] = {
        {.fd = descriptor, .events = POLLIN, .revents = 0},
        {.fd = output_is_terminal() ? -1 : STDOUT_FILENO, .events = 0, .revents = 0}};
    constexpr nfds_t count = 2; // a negative descriptor is left out
    const auto look_at_results = [&entries](int result) {
        if (result > 0 && (entries[1].revents & POLLERR) != 0)
            request_stop(SIGPIPE);
        return result > 0 && entries[0].revents != 0;
    };
    if (timeout_ms == 0)
        return look_at_results(poll(entries, count, 0));
    // A signal just before the wait would go unnoticed until its end: the signals are held back
    // while it is looked for, and let through by the wait itself.
    sigset_t all, before;
    sigfillset(&all);
    sigprocmask(SIG_SETMASK, &all, &before);
    int result = 0;
    if (!is_due()) {
        const timespec time = {.tv_sec = static_cast<time_t>(timeout_ms / 1000),
                               .tv_nsec = static_cast<long>(timeout_ms % 1000 * 1'000'000)};
        result = ppoll(entries, count, timeout_ms < 0 ? nullptr : &time, &before);
    }
    sigprocmask(SIG_SETMASK, &before, nullptr);
    return look_at_results(result);
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
    const int descriptor = reopened_output >= 0 ? reopened_output : STDOUT_FILENO;
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
        if (output_is_terminal() || requested_stop != 0) {
            bytes.remove_prefix(write_at_once(bytes));
            if (!bytes.empty() && !wait_for_room(requested_stop != 0 ? last_patience_ms : -1) &&
                requested_stop != 0)
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
    return requested_stop != SIGHUP && requested_stop != SIGPIPE;
}

/// What was not taken during a protected run.
std::string unsent;

} // namespace

void start()
{
    // A file that somebody opens later must never take the place of a closed standard stream: the
    // console's text would go into it.
    int descriptor = open("/dev/null", O_RDWR);
    while (descriptor >= 0 && descriptor <= STDERR_FILENO)
        descriptor = open("/dev/null", O_RDWR);
    if (descriptor >= 0)
        close(descriptor);
    if (isatty(STDIN_FILENO) != 0 && tcgetattr(STDIN_FILENO, &original_modes) == 0) {
        raw_modes = original_modes;
        // Signals stay on the keyboard (ISIG) and output processing stays as it is.
        raw_modes.c_iflag &= ~static_cast<tcflag_t>(ICRNL | INLCR | IGNCR | IXON | ISTRIP);
        raw_modes.c_lflag &= ~static_cast<tcflag_t>(ICANON | ECHO | ECHONL | IEXTEN);
        raw_modes.c_cc[VMIN] = 1;
        raw_modes.c_cc[VTIME] = 0;
        have_original_modes = 1;
    }
    for (const int signal_number : stop_signals)
        watch(signal_number, on_stop_request, 0); // breaks off what waits for a pipe
    if (output_is_terminal())
        watch(SIGWINCH, on_window_change, SA_RESTART);
    watch(SIGTSTP, on_terminal_stop, SA_RESTART);
    watch(SIGCONT, on_continue, SA_RESTART);
    for (const int signal_number : {SIGSEGV, SIGBUS, SIGFPE, SIGILL, SIGABRT})
        watch(signal_number, on_crash, 0, true);
    // A closed pipe and a file that reached its limit are told by the write.
    std::signal(SIGPIPE, SIG_IGN);
    std::signal(SIGXFSZ, SIG_IGN);
    std::atexit(restore_terminal); // also when the device library ends the process
}

std::span<char*> arguments(int count, char** values)
{
    return {values, static_cast<std::size_t>(count)};
}

void restore_terminal()
{
    raw_input_wanted = 0;
    screen_wanted = 0;
    hand_terminal_back();
    close_reopened_output();
}

std::int64_t tick_ms()
{
    timespec now = {};
    clock_gettime(CLOCK_MONOTONIC, &now);
    return std::int64_t{now.tv_sec} * 1000 + now.tv_nsec / 1'000'000;
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
    for (std::int64_t left = milliseconds; left > 0 && !stop_is_due(); left = end - tick_ms())
        wait_for_input(-1, left, stop_is_due);
}

bool output_is_terminal()
{
    static const bool answer = [] {
        const char* type = std::getenv("TERM");
        return isatty(STDOUT_FILENO) != 0 && type != nullptr && *type != '\0' &&
               std::strcmp(type, "dumb") != 0;
    }();
    return answer;
}

WindowSize window_size()
{
    winsize size = {};
    if (ioctl(STDOUT_FILENO, TIOCGWINSZ, &size) != 0 || size.ws_col == 0 || size.ws_row == 0)
        return {.columns = 80, .rows = 25};
    return {.columns = size.ws_col, .rows = size.ws_row};
}

WindowChange take_window_change()
{
    if (program_resumed != 0) {
        program_resumed = 0;
        window_resized = 0;
        return WindowChange::resumed;
    }
    if (window_resized != 0) {
        window_resized = 0;
        return WindowChange::resized;
    }
    return WindowChange::none;
}

bool write_output(std::string_view bytes)
{
    note_screen_use();
    if (run_is_protected == 0 && unsent.empty())
        return write_patiently(bytes);
    unsent += bytes;
    if (run_is_protected != 0)
        unsent.erase(0, write_at_once(unsent));
    else
        return write_patiently(std::exchange(unsent, {}));
    return true;
}

std::size_t write_some_output(std::string_view bytes)
{
    note_screen_use();
    if (!unsent.empty())
        unsent.erase(0, write_at_once(unsent));
    return unsent.empty() ? write_at_once(bytes) : 0;
}

void protect_run(bool on)
{
    run_is_protected = on ? 1 : 0;
}

void note_rows_to_leave(int rows)
{
    rows_to_leave = rows;
}

bool input_is_terminal()
{
    return have_original_modes != 0;
}

void start_raw_input()
{
    if (have_original_modes == 0)
        return;
    raw_input_wanted = 1;
    if (is_in_background())
        return; // in the background: when it is continued in the foreground
    if (raw_input_active == 0 && tcsetattr(STDIN_FILENO, TCSANOW, &raw_modes) == 0)
        raw_input_active = 1;
}

InputResult read_input(unsigned char* buffer, std::size_t size, std::size_t& count,
                       std::int64_t timeout_ms)
{
    count = 0;
    if (!wait_for_input(STDIN_FILENO, timeout_ms, signal_is_due))
        return InputResult::nothing;
    const ssize_t got = read(STDIN_FILENO, buffer, size);
    if (got > 0) {
        count = static_cast<std::size_t>(got);
        return InputResult::bytes;
    }
    if (got < 0 && (errno == EINTR || errno == EAGAIN))
        return InputResult::nothing;
    // A terminal that has no more input has gone.
    if (have_original_modes != 0)
        request_stop(SIGHUP);
    return InputResult::ended;
}

void drop_input()
{
    if (have_original_modes != 0)
        tcflush(STDIN_FILENO, TCIFLUSH);
}

void begin_writing_file()
{
    if (files_being_written++ == 0)
        restart_after_stop_request(true);
}

void end_writing_file()
{
    if (--files_being_written == 0)
        restart_after_stop_request(false);
}

std::FILE* open_file(const char* name, const char* mode)
{
    return std::fopen(name, mode);
}

bool store_file(std::FILE* file)
{
    // Pipes and devices refuse: they have nothing to wait for.
    return fdatasync(fileno(file)) == 0 || errno == EINVAL || errno == ENOTSUP;
}

int stop_signal()
{
    return requested_stop;
}

const char* environment(const char* name)
{
    return std::getenv(name);
}

} // namespace platform
