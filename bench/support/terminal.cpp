#include "bench/support/terminal.h"

#include "frame/platform/platform.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <fcntl.h>
#include <sys/ioctl.h>
#include <termios.h>
#include <unistd.h>

namespace bench
{

namespace
{

/// Reads until nobody has the terminal open any more, at that rate.
void drain(int master, const std::atomic<int>& bytes_per_second)
{
    using Clock = std::chrono::steady_clock;
    std::array<char, 65536> bytes;
    Clock::time_point due = Clock::now();
    for (;;) {
        const int rate = bytes_per_second;
        constexpr int reads_per_second = 250;
        const std::size_t most =
            rate > 0 ? static_cast<std::size_t>(rate / reads_per_second) : bytes.size();
        const ssize_t count = read(master, bytes.data(), most);
        if (count <= 0)
            return;
        if (rate == 0)
            continue;
        // What was not used while there was nothing to read is lost.
        due = std::max(due, Clock::now() - std::chrono::milliseconds{1000 / reads_per_second}) +
              std::chrono::microseconds{count * 1'000'000 / rate};
        std::this_thread::sleep_until(due);
    }
}

/// Without a terminal nothing can be measured.
int checked(int result, const char* what)
{
    if (result >= 0)
        return result;
    std::perror(what);
    std::exit(EXIT_FAILURE);
}

} // namespace

Terminal::Terminal(TerminalKind kind) : bytes_per_second_{kind.bytes_per_second}
{
    std::fflush(stdout);
    master_ = checked(posix_openpt(O_RDWR | O_NOCTTY | O_CLOEXEC), "no pseudo-terminal");
    checked(grantpt(master_), "grantpt");
    checked(unlockpt(master_), "unlockpt");
    const int terminal = checked(open(ptsname(master_), O_RDWR | O_NOCTTY | O_CLOEXEC), "terminal");
    const winsize size = {.ws_row = static_cast<unsigned short>(kind.rows),
                          .ws_col = terminal_columns,
                          .ws_xpixel = 0,
                          .ws_ypixel = 0};
    checked(ioctl(terminal, TIOCSWINSZ, &size), "window size");
    saved_input_ = checked(fcntl(STDIN_FILENO, F_DUPFD_CLOEXEC, 3), "standard input");
    saved_output_ = checked(fcntl(STDOUT_FILENO, F_DUPFD_CLOEXEC, 3), "standard output");
    checked(dup2(terminal, STDIN_FILENO), "standard input");
    checked(dup2(terminal, STDOUT_FILENO), "standard output");
    close(terminal);
    reader_ = std::thread{[this] { drain(master_, bytes_per_second_); }};
}

Terminal::~Terminal()
{
    bytes_per_second_ = 0; // nothing is measured any more
    platform::restore_terminal();
    std::fflush(stdout);
    dup2(saved_input_, STDIN_FILENO);
    dup2(saved_output_, STDOUT_FILENO); // nobody has the terminal open now: the reader ends
    close(saved_input_);
    close(saved_output_);
    reader_.join();
    close(master_);
}

void Terminal::type(char key) const
{
    (void)!write(master_, &key, 1);
}

} // namespace bench
