#include "frame/platform/posix/posix.h"

#include <csignal>
#include <cstdlib>
#include <cstring>
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
volatile std::sig_atomic_t raw_input_active = 0; ///< on the terminal
volatile std::sig_atomic_t screen_wanted = 0;
volatile std::sig_atomic_t screen_in_use = 0;
volatile std::sig_atomic_t rows_to_leave = 0;

constexpr char neutral_screen[] = "\033[0m\033[?25h"; // no colour, cursor visible

/// Somebody else has the terminal. One that is not our session's knows neither background nor
/// foreground: it is for all that have it open.
bool is_in_background()
{
    const pid_t foreground = tcgetpgrp(STDIN_FILENO);
    return foreground >= 0 && foreground != getpgrp();
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

void hand_terminal_back()
{
    if (screen_in_use != 0) {
        screen_in_use = 0;
        // Without a wait, where that is possible: it may be the terminal that holds everything up.
        const int descriptor = unblocked_output();
        (void)!write(descriptor, neutral_screen, sizeof neutral_screen - 1);
        for (int row = 0; row < rows_to_leave; ++row)
            (void)!write(descriptor, "\r\n", 2);
    }
    if (raw_input_active != 0) {
        raw_input_active = 0;
        tcsetattr(STDIN_FILENO, TCSANOW, &original_modes);
    }
}

bool take_terminal_again()
{
    // In the background the terminal is somebody else's; the next SIGCONT comes with the
    // foreground.
    if (have_original_modes != 0 && is_in_background())
        return false;
    if (raw_input_wanted != 0 && tcsetattr(STDIN_FILENO, TCSANOW, &raw_modes) == 0)
        raw_input_active = 1;
    if (screen_wanted != 0)
        screen_in_use = 1;
    return screen_wanted != 0;
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

void drop_input()
{
    if (have_original_modes != 0)
        tcflush(STDIN_FILENO, TCIFLUSH);
}

} // namespace platform
