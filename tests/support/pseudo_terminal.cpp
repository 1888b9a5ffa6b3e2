#include "tests/support/pseudo_terminal.h"

#include <array>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <stdexcept>
#include <vector>

#include <fcntl.h>
#include <poll.h>
#include <sys/ioctl.h>
#include <sys/wait.h>
#include <unistd.h>

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
    std::vector<std::string> arguments = {launch.program};
    std::string_view rest = launch.arguments;
    while (!rest.empty()) {
        const std::size_t end = std::min(rest.find(' '), rest.size());
        arguments.emplace_back(rest.substr(0, end));
        rest.remove_prefix(std::min(end + 1, rest.size()));
    }
    return arguments;
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

/// The part of the child up to the program's start: system calls only.
[[noreturn]] void become(char* const* arguments, char* const* environment, const char* folder,
                         int input, int output, int terminal)
{
    // Whoever runs the tests may ignore signals; an ordinary shell's child does not.
    for (const int number : {SIGHUP, SIGINT, SIGQUIT, SIGTERM, SIGPIPE, SIGTSTP, SIGCONT})
        signal(number, SIG_DFL);
    sigset_t none;
    sigemptyset(&none);
    sigprocmask(SIG_SETMASK, &none, nullptr);
    const bool ready = setsid() >= 0 && ioctl(terminal, TIOCSCTTY, 0) == 0 && dup2(input, 0) >= 0 &&
                       dup2(output, 1) >= 0 && dup2(terminal, 2) >= 0 &&
                       (*folder == '\0' || chdir(folder) == 0);
    if (ready)
        execve(arguments[0], arguments, environment);
    _exit(127);
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
    tcgetattr(terminal_, &original_modes_);

    const int null_device = checked(open("/dev/null", O_RDWR | O_CLOEXEC), "/dev/null");
    std::array<int, 2> in = {null_device, -1};
    std::array<int, 2> out = {-1, null_device};
    if (launch.input == Launch::Stream::pipe) {
        (void)checked(pipe2(in.data(), O_CLOEXEC), "pipe");
        if (write(in[1], launch.piped_in.data(), launch.piped_in.size()) < 0)
            throw std::runtime_error{"the input pipe takes nothing"};
    }
    if (launch.output == Launch::Stream::pipe || launch.output == Launch::Stream::closed_pipe)
        (void)checked(pipe2(out.data(), O_CLOEXEC), "pipe");
    if (launch.output == Launch::Stream::closed_pipe) {
        close(out[0]);
        out[0] = -1;
    }
    const int input = launch.input == Launch::Stream::terminal ? terminal_ : in[0];
    const int output = launch.output == Launch::Stream::terminal ? terminal_ : out[1];

    std::vector<std::string> arguments = arguments_of(launch);
    std::vector<std::string> environment = environment_of(launch);
    const std::vector<char*> argument_pointers = pointers_to(arguments);
    const std::vector<char*> environment_pointers = pointers_to(environment);
    child_ = checked(fork(), "fork");
    if (child_ == 0)
        become(argument_pointers.data(), environment_pointers.data(), launch.folder.c_str(), input,
               output, terminal_);
    if (launch.input == Launch::Stream::pipe) {
        close(in[0]);
        close(in[1]);
    }
    if (out[1] != null_device)
        close(out[1]);
    output_pipe_ = out[0];
    close(null_device);
}

PseudoTerminal::~PseudoTerminal()
{
    take_status();
    if (!ended_) {
        kill(child_, SIGKILL);
        waitpid(child_, nullptr, 0);
    }
    close_terminal();
    close_output_pipe();
}

/// Reads what the program wrote; waits a little for it.
void PseudoTerminal::take_output(int timeout_ms)
{
    std::array<pollfd, 2> entries = {pollfd{.fd = master_, .events = POLLIN, .revents = 0},
                                     pollfd{.fd = output_pipe_, .events = POLLIN, .revents = 0}};
    if (poll(entries.data(), entries.size(), timeout_ms) <= 0)
        return;
    std::array<char, 4096> bytes;
    for (const pollfd& entry : entries) {
        if ((entry.revents & (POLLIN | POLLHUP)) == 0)
            continue;
        const ssize_t count = read(entry.fd, bytes.data(), bytes.size());
        const std::string_view got{bytes.data(), static_cast<std::size_t>(count > 0 ? count : 0)};
        if (entry.fd == master_) {
            terminal_bytes_ += got;
            screen.feed(got);
        } else if (count > 0) {
            piped_out_ += got;
        } else {
            close_output_pipe();
        }
    }
}

void PseudoTerminal::take_status()
{
    if (ended_ || waitpid(child_, &status_, WNOHANG | WUNTRACED | WCONTINUED) != child_)
        return;
    stopped_ = WIFSTOPPED(status_);
    ended_ = WIFEXITED(status_) || WIFSIGNALED(status_);
}

bool PseudoTerminal::wait_until(const std::function<bool()>& condition)
{
    const auto deadline = std::chrono::steady_clock::now() + patience;
    while (!condition()) {
        if (std::chrono::steady_clock::now() > deadline)
            return false;
        constexpr int moment_ms = 10; // an end or a stop makes no descriptor ready
        take_output(moment_ms);
        take_status();
    }
    return true;
}

bool PseudoTerminal::shows(std::string_view text)
{
    return wait_until([&] { return screen.row_of(text) != 0; });
}

bool PseudoTerminal::is_stopped()
{
    return wait_until([this] { return stopped_; });
}

int PseudoTerminal::exit_status()
{
    if (!wait_until([this] { return ended_; })) {
        kill(child_, SIGKILL);
        (void)wait_until([this] { return ended_; });
    }
    // Written behind the program's last byte: when it comes out, all of them have.
    constexpr char end_mark = '\0';
    if (terminal_ >= 0 && write(terminal_, &end_mark, 1) == 1) {
        (void)wait_until([this] { return terminal_bytes_.ends_with(end_mark); });
        terminal_bytes_.pop_back();
    }
    (void)wait_until([this] { return output_pipe_ < 0; });
    return WIFEXITED(status_) ? WEXITSTATUS(status_) : -WTERMSIG(status_);
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
    kill(child_, number);
}

void PseudoTerminal::close_terminal()
{
    for (int* descriptor : {&terminal_, &master_}) {
        if (*descriptor >= 0)
            close(*descriptor);
        *descriptor = -1;
    }
}

void PseudoTerminal::close_output_pipe()
{
    if (output_pipe_ >= 0)
        close(output_pipe_);
    output_pipe_ = -1;
}

bool PseudoTerminal::modes_are_original() const
{
    termios modes = {};
    tcgetattr(terminal_, &modes);
    return modes.c_iflag == original_modes_.c_iflag && modes.c_oflag == original_modes_.c_oflag &&
           modes.c_cflag == original_modes_.c_cflag && modes.c_lflag == original_modes_.c_lflag &&
           std::memcmp(modes.c_cc, original_modes_.c_cc, sizeof modes.c_cc) == 0;
}

bool PseudoTerminal::modes_are_raw() const
{
    termios modes = {};
    tcgetattr(terminal_, &modes);
    return (modes.c_lflag & (ICANON | ECHO)) == 0;
}
