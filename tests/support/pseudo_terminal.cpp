#include "tests/support/pseudo_terminal.h"

#include <array>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <iterator>
#include <poll.h>
#include <sstream>
#include <stdexcept>
#include <sys/ioctl.h>
#include <sys/wait.h>
#include <tuple>
#include <unistd.h>
#include <vector>

namespace
{

constexpr auto patience = std::chrono::seconds{20};

[[nodiscard]] int checked(int result, const char* what)
{
    if (result < 0)
        throw std::runtime_error{std::string{what} + ": " + std::strerror(errno)};
    return result;
}

winsize window(TerminalSize size)
{
    return {.ws_row = static_cast<unsigned short>(size.rows),
            .ws_col = static_cast<unsigned short>(size.columns),
            .ws_xpixel = 0,
            .ws_ypixel = 0};
}

std::array<int, 2> new_pipe()
{
    std::array<int, 2> ends = {};
    (void)checked(pipe2(ends.data(), O_CLOEXEC), "pipe");
    return ends;
}

void close_once(int& descriptor)
{
    if (descriptor >= 0)
        close(descriptor);
    descriptor = -1;
}

std::vector<char*> pointers_to(std::vector<std::string>& texts)
{
    std::vector<char*> pointers;
    for (std::string& text : texts)
        pointers.push_back(text.data());
    pointers.push_back(nullptr);
    return pointers;
}

std::vector<std::string> arguments_of(const Launch& launch)
{
    std::istringstream words{launch.program + ' ' + launch.arguments};
    return {std::istream_iterator<std::string>{words}, {}};
}

std::vector<std::string> environment_of(const Launch& launch)
{
    std::vector<std::string> environment;
    for (const auto& [name, value] : launch.environment)
        environment.push_back(name + '=' + value);
    for (const char* name : {"ASAN_OPTIONS", "LSAN_OPTIONS", "UBSAN_OPTIONS"}) {
        if (const char* value = std::getenv(name))
            environment.push_back(std::string{name} + '=' + value);
    }
    return environment;
}

// ---- A shell with job control, after fork(): system calls only ----

// A program whose parent is no shell in its own session would not be stopped by Ctrl-Z.
constexpr int status_descriptor = 3;
volatile pid_t job = 0;

void pass_on_to_job(int number)
{
    if (job > 0)
        kill(-job, number);
}

void bring_job_to_foreground(int)
{
    tcsetpgrp(STDERR_FILENO, job);
}

[[noreturn]] void become_job(char* const* arguments, char* const* environment, bool in_background)
{
    setpgid(0, 0);
    if (!in_background)
        tcsetpgrp(STDERR_FILENO, getpid());
    // Whoever runs the tests may ignore signals; an ordinary shell's child does not.
    for (int number = 1; number <= SIGRTMAX; ++number)
        signal(number, SIG_DFL);
    sigset_t none;
    sigemptyset(&none);
    sigprocmask(SIG_SETMASK, &none, nullptr);
    execve(arguments[0], arguments, environment);
    _exit(127);
}

/// Runs the program as its one job; reports its process number and then what becomes of it.
[[noreturn]] void become_shell(char* const* arguments, char* const* environment,
                               const Launch& launch, std::array<int, 4> descriptors)
{
    const char* folder = launch.folder.c_str();
    bool ready = setsid() >= 0 && (*folder == '\0' || chdir(folder) == 0);
    for (int i = 0; i < static_cast<int>(descriptors.size()); ++i)
        ready = ready && dup2(descriptors[static_cast<std::size_t>(i)], i) == i;
    // The terminal hangs up and the pipes end although the shell is there.
    close_range(status_descriptor + 1, ~0U, 0);
    ready = ready && fcntl(status_descriptor, F_SETFD, FD_CLOEXEC) == 0 &&
            ioctl(STDERR_FILENO, TIOCSCTTY, 0) == 0;
    signal(SIGTTOU, SIG_IGN);
    signal(SIGHUP, pass_on_to_job);
    signal(SIGUSR1, bring_job_to_foreground);
    const pid_t child = ready ? fork() : -1;
    if (child == 0)
        become_job(arguments, environment, launch.in_background);
    if (child < 0)
        _exit(127);
    job = child;
    setpgid(child, child);
    dup2(STDERR_FILENO, STDIN_FILENO);
    dup2(STDERR_FILENO, STDOUT_FILENO);
    int status = 0;
    bool reported = write(status_descriptor, &child, sizeof child) == sizeof child;
    while (reported && !WIFSIGNALED(status)) {
        if (waitpid(child, &status, WUNTRACED | WCONTINUED) != child)
            continue;
        reported = write(status_descriptor, &status, sizeof status) == sizeof status;
        if (WIFEXITED(status))
            break;
    }
    _exit(0);
}

} // namespace

PseudoTerminal::PseudoTerminal(const Launch& launch) : screen{launch.size}
{
    screen.feed(launch.on_screen);
    master_ = checked(posix_openpt(O_RDWR | O_NOCTTY | O_CLOEXEC), "posix_openpt");
    if (grantpt(master_) != 0 || unlockpt(master_) != 0)
        throw std::runtime_error{"the pseudo-terminal cannot be unlocked"};
    terminal_ = checked(open(ptsname(master_), O_RDWR | O_NOCTTY | O_CLOEXEC), "open");
    const winsize size = window(launch.size);
    ioctl(terminal_, TIOCSWINSZ, &size);
    original_modes_ = modes();

    using Stream = Launch::Stream;
    const int null_device = checked(open("/dev/null", O_RDWR | O_CLOEXEC), "/dev/null");
    std::array<int, 2> in = {null_device, -1};
    std::array<int, 2> out = {-1, null_device};
    if (launch.input == Stream::pipe) {
        in = new_pipe();
        if (write(in[1], launch.piped_in.data(), launch.piped_in.size()) < 0)
            throw std::runtime_error{"the input pipe takes nothing"};
    }
    if (launch.output == Stream::pipe || launch.output == Stream::closed_pipe)
        out = new_pipe();
    if (launch.output == Stream::closed_pipe)
        close_once(out[0]);
    if (launch.output == Stream::file || launch.output == Stream::new_file) {
        const int mode = launch.output == Stream::file ? O_APPEND : O_TRUNC;
        out[1] =
            checked(open(launch.output_file.c_str(), O_WRONLY | O_CREAT | O_CLOEXEC | mode, 0600),
                    "the output file");
    }
    const int input = launch.input == Stream::terminal ? terminal_ : in[0];
    const int output = launch.output == Stream::terminal ? terminal_ : out[1];

    std::vector<std::string> arguments = arguments_of(launch);
    std::vector<std::string> environment = environment_of(launch);
    const std::vector<char*> argument_pointers = pointers_to(arguments);
    const std::vector<char*> environment_pointers = pointers_to(environment);
    const std::array<int, 2> status = new_pipe();
    shell_ = checked(fork(), "fork");
    if (shell_ == 0)
        become_shell(argument_pointers.data(), environment_pointers.data(), launch,
                     {input, output, terminal_, status[1]});
    close(status[1]);
    status_pipe_ = status[0];
    output_pipe_ = out[0];
    if (read(status_pipe_, &program_, sizeof program_) != sizeof program_)
        throw std::runtime_error{"the program cannot be run"};
    if (out[1] != null_device)
        close(out[1]);
    if (in[0] != null_device)
        close(in[0]);
    close_once(in[1]);
    close(null_device);
}

PseudoTerminal::~PseudoTerminal()
{
    if (!ended_)
        kill(program_, SIGKILL);
    close(status_pipe_);
    waitpid(shell_, nullptr, 0);
    close_terminal();
    close_output_pipe();
}

/// Waits a moment for news of the program and takes them.
void PseudoTerminal::take_news()
{
    constexpr int moment_ms = 20; // a condition may depend on more than the program's output
    std::array<pollfd, 3> entries = {
        pollfd{.fd = master_, .events = POLLIN, .revents = 0},
        pollfd{.fd = output_is_read_ ? output_pipe_ : -1, .events = POLLIN, .revents = 0},
        pollfd{.fd = ended_ ? -1 : status_pipe_, .events = POLLIN, .revents = 0}};
    if (poll(entries.data(), entries.size(), moment_ms) <= 0)
        return;
    std::array<char, 4096> bytes;
    const auto take = [&bytes](const pollfd& entry) {
        const ssize_t count = read(entry.fd, bytes.data(), bytes.size());
        return std::string_view{bytes.data(), static_cast<std::size_t>(count > 0 ? count : 0)};
    };
    if (entries[0].revents != 0) {
        const std::string_view got = take(entries[0]);
        terminal_bytes_ += got;
        screen.feed(got);
    }
    if (entries[1].revents != 0) {
        const std::string_view got = take(entries[1]);
        piped_out_ += got;
        if (got.empty())
            close_output_pipe();
    }
    if (entries[2].revents != 0 && read(status_pipe_, &status_, sizeof status_) == sizeof status_) {
        stopped_ = WIFSTOPPED(status_);
        ended_ = WIFEXITED(status_) || WIFSIGNALED(status_);
    }
}

bool PseudoTerminal::wait_until(const std::function<bool()>& condition)
{
    const auto deadline = std::chrono::steady_clock::now() + patience;
    while (!condition()) {
        if (std::chrono::steady_clock::now() > deadline)
            return false;
        take_news();
    }
    return true;
}

bool PseudoTerminal::shows(std::string_view text)
{
    return wait_until([&] { return screen.row_of(text) != 0; });
}

void PseudoTerminal::take_all()
{
    // Written behind the program's last byte: when it comes out, all of them have.
    constexpr char end_mark = '\0';
    const auto has_room = [this] {
        pollfd entry = {.fd = terminal_, .events = POLLOUT, .revents = 0};
        return poll(&entry, 1, 0) > 0;
    };
    if (terminal_ < 0 || !wait_until(has_room) || write(terminal_, &end_mark, 1) != 1)
        return;
    (void)wait_until([this] { return terminal_bytes_.ends_with(end_mark); });
    terminal_bytes_.pop_back();
}

int PseudoTerminal::exit_status()
{
    if (!wait_until([this] { return ended_; })) {
        kill(program_, SIGKILL);
        (void)wait_until([this] { return ended_; });
    }
    take_all();
    output_is_read_ = true;
    (void)wait_until([this] { return output_pipe_ < 0; });
    return WIFEXITED(status_) ? WEXITSTATUS(status_) : -WTERMSIG(status_);
}

int PseudoTerminal::status_after_repeated(int signal)
{
    (void)wait_until([this, signal] {
        send_signal(signal);
        return ended_;
    });
    return exit_status();
}

bool PseudoTerminal::is_waiting_for_terminal() const
{
    const auto deadline = std::chrono::steady_clock::now() + patience;
    int full_looks = 0; // the program may be about to write the last byte that fits
    while (full_looks < 5 && std::chrono::steady_clock::now() < deadline) {
        pollfd entry = {.fd = terminal_, .events = POLLOUT, .revents = 0};
        full_looks = poll(&entry, 1, 0) == 0 ? full_looks + 1 : 0;
        (void)poll(nullptr, 0, 10);
    }
    return full_looks == 5;
}

void PseudoTerminal::type(std::string_view bytes)
{
    if (write(master_, bytes.data(), bytes.size()) != static_cast<ssize_t>(bytes.size()))
        throw std::runtime_error{"the terminal takes no keys"};
}

bool PseudoTerminal::keys_are_taken()
{
    return wait_until([this] {
        int waiting = 0;
        return ioctl(terminal_, FIONREAD, &waiting) == 0 && waiting == 0;
    });
}

void PseudoTerminal::resize(TerminalSize size)
{
    screen.resize(size);
    const winsize new_window = window(size);
    ioctl(master_, TIOCSWINSZ, &new_window); // tells the program with SIGWINCH
}

void PseudoTerminal::send_signal(int number) const
{
    kill(program_, number);
}

void PseudoTerminal::bring_to_foreground() const
{
    kill(shell_, SIGUSR1);
}

void PseudoTerminal::close_terminal()
{
    close_once(terminal_);
    close_once(master_);
}

void PseudoTerminal::close_output_pipe()
{
    close_once(output_pipe_);
}

void PseudoTerminal::fill_output_pipe()
{
    output_is_read_ = false;
    const std::string name = "/proc/" + std::to_string(program_) + "/fd/1";
    const int pipe = checked(open(name.c_str(), O_WRONLY | O_NONBLOCK | O_CLOEXEC), "the pipe");
    constexpr std::array<char, 512> filling = {};
    while (write(pipe, filling.data(), filling.size()) > 0) {
    }
    while (write(pipe, filling.data(), 1) > 0) {
    }
    close(pipe);
}

termios PseudoTerminal::modes() const
{
    termios modes = {};
    tcgetattr(terminal_, &modes);
    return modes;
}

bool PseudoTerminal::modes_are_original() const
{
    const termios now = modes();
    const termios& then = original_modes_;
    return std::tie(now.c_iflag, now.c_oflag, now.c_cflag, now.c_lflag) ==
               std::tie(then.c_iflag, then.c_oflag, then.c_cflag, then.c_lflag) &&
           std::memcmp(now.c_cc, then.c_cc, sizeof now.c_cc) == 0;
}

bool PseudoTerminal::modes_are_raw() const
{
    return (modes().c_lflag & (ICANON | ECHO)) == 0;
}
