#include "frame/platform/posix/posix.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <csignal>
#include <ctime>
#include <iterator>
#include <span>
#include <unistd.h>

namespace platform
{

namespace
{

volatile std::sig_atomic_t window_resized = 0;
volatile std::sig_atomic_t program_resumed = 0;

/// Half a second after a request: whether something keeps the program from ending.
timer_t reminder = {};
bool have_reminder = false;
constexpr int reminder_signal = SIGURG; // which nobody uses, and whose default is harmless

/// What is the program's own fault; sent from outside, each is a request like others.
constexpr int crash_signals[] = {SIGSEGV, SIGBUS, SIGFPE, SIGILL, SIGABRT, SIGTRAP, SIGSYS};

/// Those whose default does not end a process, or that cannot be caught.
constexpr int other_signals[] = {SIGKILL, SIGSTOP, SIGTSTP, SIGTTIN, SIGTTOU,
                                 SIGCONT, SIGCHLD, SIGURG,  SIGWINCH};

/// Ours whoever handled them before us.
constexpr int own_signals[] = {SIGHUP, SIGINT, SIGQUIT, SIGTERM, SIGPIPE, SIGXFSZ};

bool is_among(int number, std::span<const int> numbers)
{
    return std::find(numbers.begin(), numbers.end(), number) != numbers.end();
}

bool is_from_outside(const siginfo_t& info)
{
    return info.si_code <= 0 && info.si_pid != getpid();
}

void remind_later()
{
    constexpr auto time_ns = StopRequests::same_wish_ms * 1'000'000;
    const itimerspec time = {.it_interval = {}, .it_value = {.tv_sec = 0, .tv_nsec = time_ns}};
    if (have_reminder)
        timer_settime(reminder, 0, &time, nullptr);
}

/// Below what is on the screen, which is painted again behind it.
void tell_in_handler(std::string_view text)
{
    if (posix::tell_below_screen(text))
        program_resumed = 1;
}

/// The last thing before an end on the spot: tells of settings that stay changed, gives the
/// terminal back, and only then does what else is to be done, which may fail.
void leave(ForcedEnd end, std::string_view notice)
{
    const LastAct* const last_act = posix::requests.last_act();
    if (posix::requests.is_protected())
        tell_in_handler(notice);
    if (last_act != nullptr && !last_act->told.empty())
        tell_in_handler(last_act->told);
    posix::hand_terminal_back();
    if (last_act != nullptr)
        last_act->act(end);
}

void drop_if_typed(int number, const siginfo_t& info)
{
    const bool is_key = number == SIGINT || number == SIGQUIT || number == SIGTSTP;
    if (is_key && info.si_code == SI_KERNEL)
        posix::drop_typed_before_signal();
}

void on_stop_request(int number, siginfo_t* info, void*)
{
    // A closed pipe and a file that reached its limit are told by the write.
    if ((number == SIGPIPE || number == SIGXFSZ) && !is_from_outside(*info))
        return;
    const int saved_errno = errno;
    drop_if_typed(number, *info);
    // A closing terminal hangs up twice: once by the system, once by the shell.
    const bool from_system = number == SIGHUP || number == SIGXCPU;
    switch (posix::requests.take(number, posix::now_ms(), from_system)) {
    case StopRequests::Answer::nothing:
        break;
    case StopRequests::Answer::in_order:
        remind_later();
        break;
    case StopRequests::Answer::tell:
        tell_in_handler(posix::requests.notice().text());
        remind_later();
        break;
    case StopRequests::Answer::at_once:
        leave(ForcedEnd::asked_for, left_notice);
        _exit(128 + number);
    }
    errno = saved_errno;
}

void on_reminder(int, siginfo_t* info, void*)
{
    const int saved_errno = errno;
    if (info->si_code == SI_TIMER && posix::requests.remind(posix::now_ms()))
        tell_in_handler(posix::requests.notice().text());
    errno = saved_errno;
}

void on_window_change(int, siginfo_t*, void*)
{
    window_resized = 1;
}

void take_terminal_again()
{
    if (posix::take_terminal_again())
        program_resumed = 1;
}

void on_continue(int, siginfo_t*, void*)
{
    const int saved_errno = errno;
    take_terminal_again();
    errno = saved_errno;
}

/// Ctrl-Z: the shell gets a clean terminal, the program its own one back when it goes on. The stop
/// itself is the system's: it knows whether there is a shell that could ever continue us.
void on_terminal_stop(int number, siginfo_t* info, void*)
{
    const int saved_errno = errno;
    drop_if_typed(number, *info);
    if (posix::requests.is_protected()) {
        tell_in_handler(not_stopped_notice);
        errno = saved_errno;
        return;
    }
    posix::hand_terminal_back();
    struct sigaction ours = {};
    struct sigaction standard = {};
    standard.sa_handler = SIG_DFL;
    sigset_t this_signal, before;
    sigemptyset(&this_signal);
    sigaddset(&this_signal, number);
    sigaction(number, &standard, &ours);
    raise(number);
    sigprocmask(SIG_UNBLOCK, &this_signal, &before); // stops here
    sigprocmask(SIG_SETMASK, &before, nullptr);
    sigaction(number, &ours, nullptr);
    take_terminal_again();
    errno = saved_errno;
}

/// Where a crash handler runs when the program's own stack is full.
alignas(16) std::array<char, 65536> spare_stack;

/// Leaves the one of a sanitizer's runtime as it is.
void provide_spare_stack()
{
    stack_t known = {};
    if (sigaltstack(nullptr, &known) != 0 || (known.ss_flags & SS_DISABLE) == 0)
        return;
    const stack_t spare = {
        .ss_sp = spare_stack.data(), .ss_flags = 0, .ss_size = spare_stack.size()};
    sigaltstack(&spare, nullptr);
}

/// The last thing that a crash does: the terminal must not stay behind unusable.
void on_crash(int number, siginfo_t* info, void* context)
{
    if (is_from_outside(*info)) {
        on_stop_request(number, info, context);
        return;
    }
    leave(ForcedEnd::crash, crash_notice);
    std::signal(number, SIG_DFL);
    raise(number);
}

using Handler = void (*)(int, siginfo_t*, void*);

struct Watched {
    Handler handler;
    int flags = 0;          ///< with SA_RESTART an interrupted system call goes on
    bool alone = false;     ///< no other signal comes in between
    bool only_free = false; ///< not when somebody else handles it
};

void watch(int number, Watched watched)
{
    struct sigaction action = {};
    if (sigaction(number, nullptr, &action) != 0)
        return;
    // nohup and the like: what our parent had us ignore stays ignored.
    if (action.sa_handler == SIG_IGN || (watched.only_free && action.sa_handler != SIG_DFL))
        return;
    action = {};
    action.sa_sigaction = watched.handler;
    action.sa_flags = watched.flags | SA_SIGINFO;
    if (watched.alone)
        sigfillset(&action.sa_mask);
    else
        sigemptyset(&action.sa_mask);
    sigaction(number, &action, nullptr);
}

/// Tells whether a stop request lets an interrupted system call go on.
void restart_after_stop_request(bool restart)
{
    for (int number = 1; number <= SIGRTMAX; ++number) {
        struct sigaction action = {};
        if (sigaction(number, nullptr, &action) != 0 ||
            (action.sa_sigaction != on_stop_request && action.sa_sigaction != on_crash))
            continue;
        action.sa_flags = restart ? action.sa_flags | SA_RESTART : action.sa_flags & ~SA_RESTART;
        sigaction(number, &action, nullptr);
    }
}

} // namespace

namespace posix
{

constinit StopRequests requests;

void watch_signals()
{
    sigevent event = {};
    event.sigev_notify = SIGEV_SIGNAL;
    event.sigev_signo = reminder_signal;
    have_reminder = timer_create(CLOCK_MONOTONIC, &event, &reminder) == 0;
    provide_spare_stack();
    for (int number = 1; number <= SIGRTMAX; ++number) {
        if (is_among(number, crash_signals))
            watch(number,
                  {.handler = on_crash, .flags = SA_ONSTACK, .alone = true, .only_free = true});
        else if (!is_among(number, other_signals)) // breaks off what waits for a pipe
            watch(number, {.handler = on_stop_request,
                           .alone = true,
                           .only_free = !is_among(number, own_signals)});
    }
    if (output_is_terminal())
        watch(SIGWINCH, {.handler = on_window_change, .flags = SA_RESTART});
    watch(SIGTSTP, {.handler = on_terminal_stop, .flags = SA_RESTART, .alone = true});
    watch(SIGCONT, {.handler = on_continue, .flags = SA_RESTART, .alone = true});
    watch(reminder_signal, {.handler = on_reminder, .flags = SA_RESTART, .alone = true});
}

void request_stop(int number)
{
    requests.request(number);
}

bool stop_is_due()
{
    return requests.number() != 0;
}

bool signal_is_due()
{
    return stop_is_due() || window_resized != 0 || program_resumed != 0;
}

HeldSignals::HeldSignals()
{
    sigset_t all;
    sigfillset(&all);
    sigprocmask(SIG_SETMASK, &all, &before_);
}

HeldSignals::~HeldSignals()
{
    sigprocmask(SIG_SETMASK, &before_, nullptr);
}

int HeldSignals::poll(std::span<pollfd> entries, std::int64_t timeout_ms) const
{
    const timespec time = {.tv_sec = static_cast<time_t>(timeout_ms / 1000),
                           .tv_nsec = static_cast<long>(timeout_ms % 1000 * 1'000'000)};
    return ppoll(entries.data(), entries.size(), timeout_ms < 0 ? nullptr : &time, &before_);
}

bool screen_is_lost()
{
    return program_resumed != 0;
}

void note_lost_screen()
{
    program_resumed = 1;
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
    static void (*before[])(int) = {SIG_DFL, SIG_DFL};
    constexpr int background_signals[] = {SIGTTIN, SIGTTOU};
    if (on == posix::requests.is_protected())
        return;
    posix::requests.protect(on);
    // In the background, too, nothing stops it: writing goes on, and reading fails.
    for (std::size_t i = 0; i < std::size(background_signals); ++i) {
        if (on)
            before[i] = std::signal(background_signals[i], SIG_IGN);
        else
            std::signal(background_signals[i], before[i]);
    }
}

void set_last_act(const LastAct* last_act)
{
    posix::requests.set_last_act(last_act);
}

void begin_writing_file()
{
    if (posix::requests.files_being_written(1) == 1)
        restart_after_stop_request(true);
}

void end_writing_file()
{
    if (posix::requests.files_being_written(-1) == 0)
        restart_after_stop_request(false);
}

int stop_signal()
{
    return posix::requests.number();
}

} // namespace platform
