/// A pseudo-terminal in the place of standard input and output, drained by a reader thread.
#pragma once

#include <atomic>
#include <thread>

namespace bench
{

inline constexpr int terminal_columns = 200;

struct TerminalKind {
    int rows = 50;
    int bytes_per_second = 0; ///< that it takes; 0 = as many as there are
};

/// Standard input and output are the terminal for as long as this exists.
class Terminal
{
public:
    explicit Terminal(TerminalKind kind = {});
    ~Terminal();
    Terminal(const Terminal&) = delete;
    Terminal& operator=(const Terminal&) = delete;

    /// Types a key. Callable while a display runs.
    void type(char key) const;

private:
    int master_ = -1;
    int saved_input_ = -1;
    int saved_output_ = -1;
    std::atomic<int> bytes_per_second_;
    std::thread reader_;
};

} // namespace bench
