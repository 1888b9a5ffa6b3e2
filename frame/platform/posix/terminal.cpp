#include "frame/platform/posix/posix.h"

#include <array>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <poll.h>
#include <sys/ioctl.h>
#include <termios.h>
#include <unistd.h>

namespace platform
{

namespace
{

// Read by the signal handlers: written before they are installed, or with a single store.
termios original_modes;
termios raw_modes;
volatile std::sig_atomic_t have_original_modes = 0;
volatile std::sig_atomic_t raw_input_wanted = 0; ///< by the program
volatile std::sig_atomic_t raw_input_active = 0; ///< on the terminal, or about to be
volatile std::sig_atomic_t screen_wanted = 0;
volatile std::sig_atomic_t screen_in_use = 0;
volatile std::sig_atomic_t in_background = 0; ///< when keys were last looked for

/// Leaves the screen without colour, with a visible cursor below everything that is on it, and
/// then shows the text in lines of its own. Without a wait, where that is possible: it may be the
/// terminal that holds everything up.
void leave_screen(std::string_view text)
{
    const int rows = posix::rows_to_leave();
    std::array<char, 1024> bytes;
    std::size_t size = 0;
    const auto add = [&](std::string_view piece) {
        size += piece.copy(bytes.data() + size, bytes.size() - size);
    };
    add("\033[0m\033[?25h");
    for (int row = 0; row < rows; ++row)
        add("\r\n");
    if (!text.empty() && rows == 0)
        add("\r\n");
    add(text);
    (void)!write(posix::unblocked_output(), bytes.data(), size);
    posix::note_cursor_below_screen();
}

/// Noted before it is done: a signal that comes in between has to take it back.
void set_raw_modes()
{
    raw_input_active = 1;
    if (tcsetattr(STDIN_FILENO, TCSANOW, &raw_modes) != 0)
        raw_input_active = 0;
}

} // namespace

namespace posix
{

void note_terminal_modes()
{
    if (isatty(STDIN_FILENO) != 0 && tcgetattr(STDIN_FILENO, &original_modes) == 0) {
        raw_modes = original_modes;
        // Signals stay on the keyboard (ISIG) and output processing stays as it is.
        raw_modes.c_iflag &= ~static_cast<tcflag_t>(ICRNL | INLCR | IGNCR | IXON | ISTRIP);
        raw_modes.c_lflag &= ~static_cast<tcflag_t>(ICANON | ECHO | ECHONL | IEXTEN);
        // A key that is a signal must not drop half a picture on its way to the screen.
        raw_modes.c_lflag |= NOFLSH;
        raw_modes.c_cc[VMIN] = 1;
        raw_modes.c_cc[VTIME] = 0;
        have_original_modes = 1;
    }
}

void note_screen_use()
{
    if (output_is_terminal()) {
        screen_wanted = 1;
        screen_in_use = 1;
    }
}

void drop_typed_before_signal()
{
    if (raw_input_active != 0 && !is_in_background(STDIN_FILENO))
        tcflush(STDIN_FILENO, TCIFLUSH);
}

bool is_in_background(int descriptor)
{
    const pid_t foreground = tcgetpgrp(descriptor);
    return foreground >= 0 && foreground != getpgrp();
}

bool keys_are_ours()
{
    if (have_original_modes == 0)
        return true;
    if (is_in_background(STDIN_FILENO)) {
        raw_input_active = 0; // by now the modes are those of whoever has the terminal
        in_background = 1;
        // A SIGCONT in between may have made it ours, which those two lines have undone.
        if (is_in_background(STDIN_FILENO))
            return false;
    }
    if (in_background != 0 && take_terminal_again())
        note_lost_screen();
    return true;
}

void hand_terminal_back()
{
    // Each flag falls when its work is done: a signal in between does it once more.
    if (screen_in_use != 0) {
        leave_screen("");
        screen_in_use = 0;
    }
    if (raw_input_active != 0) {
        if (!is_in_background(STDIN_FILENO))
            tcsetattr(STDIN_FILENO, TCSANOW, &original_modes);
        raw_input_active = 0;
    }
}

bool take_terminal_again()
{
    // In the background the terminal is somebody else's; the next SIGCONT may come with the
    // foreground.
    if (have_original_modes != 0 && is_in_background(STDIN_FILENO))
        return false;
    in_background = 0;
    if (raw_input_wanted != 0)
        set_raw_modes();
    if (screen_wanted != 0)
        screen_in_use = 1;
    return screen_wanted != 0;
}

bool tell_below_screen(std::string_view text)
{
    std::array<char, 256> line;
    std::size_t size = text.copy(line.data(), line.size() - 2);
    if (output_is_terminal())
        line[size++] = '\r';
    line[size++] = '\n';
    if (output_is_terminal()) {
        leave_screen({line.data(), size});
        return true;
    }
    pollfd entry = {.fd = STDERR_FILENO, .events = POLLOUT, .revents = 0};
    if (poll(&entry, 1, 0) > 0)
        (void)!write(STDERR_FILENO, line.data(), size);
    return false;
}

} // namespace posix

void restore_terminal()
{
    raw_input_wanted = 0;
    screen_wanted = 0;
    posix::hand_terminal_back();
    posix::close_reopened_output();
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

bool input_is_terminal()
{
    return have_original_modes != 0;
}

void start_raw_input()
{
    if (have_original_modes == 0)
        return;
    raw_input_wanted = 1;
    if (posix::is_in_background(STDIN_FILENO)) {
        in_background = 1;
        return;
    }
    if (raw_input_active == 0)
        set_raw_modes();
}

void drop_input()
{
    if (have_original_modes != 0 && !posix::is_in_background(STDIN_FILENO))
        tcflush(STDIN_FILENO, TCIFLUSH);
}

} // namespace platform
