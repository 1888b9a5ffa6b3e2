#include "frame/platform/posix/posix.h"

#include <cerrno>
#include <csignal>
#include <sys/time.h>
#include <unistd.h>

namespace platform
{

namespace
{

volatile std::sig_atomic_t requested_stop = 0;
volatile std::sig_atomic_t window_resized = 0;
volatile std::sig_atomic_t program_resumed = 0;
volatile std::sig_atomic_t run_protected = 0;

constexpr int stop_signals[] = {SIGINT, SIGTERM, SIGHUP, SIGQUIT};
int files_being_written = 0;

void on_stop_request(int signal_number)
{
    const int saved_errno = errno;
    if (requested_stop != 0) {
        // A closing terminal hangs up twice: once by the system, once by the shell.
        if (run_protected != 0 || (requested_stop == SIGHUP && signal_number == SIGHUP))
            return;
        posix::hand_terminal_back();
        _exit(128 + signal_number);
    }
    requested_stop = signal_number;
    errno = saved_errno;
}

void on_window_change(int)
{
    window_resized = 1;
}

void take_terminal_again()
{
    if (posix::take_terminal_again())
        program_resumed = 1;
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
    posix::hand_terminal_back();
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
    posix::hand_terminal_back();
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

} // namespace

namespace posix
{

void watch_signals()
{
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
}

void request_stop(int signal_number)
{
    if (requested_stop == 0)
        requested_stop = signal_number;
}

bool stop_is_due()
{
    return requested_stop != 0;
}

bool signal_is_due()
{
    return requested_stop != 0 || window_resized != 0 || program_resumed != 0;
}

bool run_is_protected()
{
    return run_protected != 0;
}

} // namespace posix

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

void protect_run(bool on)
{
    run_protected = on ? 1 : 0;
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

int stop_signal()
{
    return requested_stop;
}

} // namespace platform
