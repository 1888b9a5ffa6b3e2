/// Runs a program on a pseudo-terminal whose bytes an emulator renders, as a user at a terminal
/// runs it. Whatever waits gives up after a time that only a hanging program needs.
#pragma once

#include "tests/support/terminal_emulator.h"

#include <functional>
#include <map>
#include <string>
#include <string_view>
#include <sys/types.h>
#include <termios.h>

struct Launch {
    enum class Stream {
        terminal,
        pipe,
        null_device,
        closed_pipe, ///< of which nobody reads what is written
        file,        ///< of that name; appended to when it is there, as with ">>"
        new_file,    ///< as with ">"
    };

    std::string program;
    std::string arguments; ///< separated by blanks
    /// Nothing else is inherited but the options of the sanitizers.
    std::map<std::string, std::string> environment = {};
    std::string folder = {}; ///< working directory; empty = the present one
    TerminalSize size = {};
    std::string on_screen = {}; ///< what stands on the screen before the program starts
    Stream input = Stream::terminal;
    Stream output = Stream::terminal;
    std::string piped_in = {}; ///< what the input pipe holds before its end
    std::string output_file = {};
    bool in_background = false; ///< as with "&"
};

class PseudoTerminal
{
public:
    explicit PseudoTerminal(const Launch& launch);
    ~PseudoTerminal();
    PseudoTerminal(const PseudoTerminal&) = delete;
    PseudoTerminal& operator=(const PseudoTerminal&) = delete;

    TerminalEmulator screen;

    /// Waits until the condition holds; looks whenever the program wrote something.
    [[nodiscard]] bool wait_until(const std::function<bool()>& condition);
    /// Waits until a row of the screen holds the text.
    [[nodiscard]] bool shows(std::string_view text);
    /// Waits until nothing fits into the terminal any more, while nobody takes what it holds.
    [[nodiscard]] bool is_waiting_for_terminal() const;
    /// Takes what the terminal holds, of a program that writes nothing now.
    void take_all();
    /// Waits until the program was stopped by a signal.
    [[nodiscard]] bool is_stopped()
    {
        return wait_until([this] { return stopped_; });
    }
    [[nodiscard]] bool has_ended() const { return ended_; }
    /// Waits for the program's end and for its last output: its exit status, or minus the number
    /// of the signal that killed it. A program that hangs is killed with SIGKILL.
    [[nodiscard]] int exit_status();

    /// Sends a signal until the program has ended: its exit status. One repeat is not enough, since
    /// within half a second it is the same wish.
    [[nodiscard]] int status_after_repeated(int signal);

    void type(std::string_view bytes);
    /// Waits until the program has read what was typed.
    [[nodiscard]] bool keys_are_taken();
    void resize(TerminalSize size);
    void send_signal(int number) const;
    /// As "fg" does with a job that runs in the background.
    void bring_to_foreground() const;
    /// The user closes the terminal's window.
    void close_terminal();
    /// Nobody reads the output pipe any more.
    void close_output_pipe();
    /// The same, but the pipe stays there, full.
    void fill_output_pipe();

    /// True while the terminal works as it did when the program started.
    [[nodiscard]] bool modes_are_original() const;
    /// True when keys come singly and unseen.
    [[nodiscard]] bool modes_are_raw() const;
    /// What came out of the output pipe.
    [[nodiscard]] const std::string& piped_out() const { return piped_out_; }
    /// All bytes that the terminal got.
    [[nodiscard]] const std::string& terminal_bytes() const { return terminal_bytes_; }

private:
    void take_news();
    [[nodiscard]] termios modes() const;

    pid_t shell_ = -1; ///< the program's parent, which has nothing else to do
    pid_t program_ = -1;
    int master_ = -1;
    int terminal_ = -1; ///< keeps the terminal there when the program has ended
    int output_pipe_ = -1;
    bool output_is_read_ = true;
    int status_pipe_ = -1; ///< what the shell tells of the program
    termios original_modes_ = {};
    bool stopped_ = false;
    bool ended_ = false;
    int status_ = 0;
    std::string piped_out_;
    std::string terminal_bytes_;
};
