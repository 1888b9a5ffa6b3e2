#include "bench/terminal.h"

#include <array>
#include <cstdio>
#include <cstdlib>

#include <fcntl.h>
#include <sys/ioctl.h>
#include <termios.h>
#include <unistd.h>

#include "frame/platform.h"

namespace bench
{

namespace
{

/// Reads until nobody has the terminal open any more.
void drain(int master)
{
    std::array<char, 65536> bytes;
    while (read(master, bytes.data(), bytes.size()) > 0) {
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

Terminal::Terminal()
{
    std::fflush(stdout);
    master_ = checked(posix_openpt(O_RDWR | O_NOCTTY | O_CLOEXEC), "no pseudo-terminal");
    checked(grantpt(master_), "grantpt");
    checked(unlockpt(master_), "unlockpt");
    const int terminal = checked(open(ptsname(master_), O_RDWR | O_NOCTTY | O_CLOEXEC), "terminal");
    const winsize size = {
        .ws_row = terminal_rows, .ws_col = terminal_columns, .ws_xpixel = 0, .ws_ypixel = 0};
    checked(ioctl(terminal, TIOCSWINSZ, &size), "window size");
    saved_input_ = checked(fcntl(STDIN_FILENO, F_DUPFD_CLOEXEC, 3), "standard input");
    saved_output_ = checked(fcntl(STDOUT_FILENO, F_DUPFD_CLOEXEC, 3), "standard output");
    checked(dup2(terminal, STDIN_FILENO), "standard input");
    checked(dup2(terminal, STDOUT_FILENO), "standard output");
    close(terminal);
    reader_ = std::thread{drain, master_};
}

Terminal::~Terminal()
{
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
