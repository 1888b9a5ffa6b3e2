/// One trial of the program: a command line, an instrument, keys at given times, and what came of
/// it. Everything starts afresh with each Trial; time is virtual.
///
///     Trial trial;
///     trial.instrument("reply GetEnable.enable 0");
///     trial.run("3 -u -T");
///     EXPECT_EQ(trial.display(), "Device is {Y}disabled{.}\n");
///
/// Colours are marks in the text: {W} bright white, {M} light magenta, {C} light cyan, {G} light
/// green, {Y} yellow, {R} light red, {B} light blue, {K} dark grey, {.} back to grey.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "tests/support/virtual_platform.h"

class Trial
{
public:
    Trial();
    ~Trial();
    Trial(const Trial&) = delete;
    Trial& operator=(const Trial&) = delete;

    /// One line of the simulator's scenario language; a wrong one fails the test.
    void instrument(std::string_view line);

    /// Keys that the user types when the clock shows that time.
    void type(std::int64_t at_ms, std::string_view keys);

    /// Standard input is a pipe that holds these bytes.
    void pipe_in(std::string_view bytes);

    /// Runs a command line (without the program's name). Blanks separate arguments; '' quote.
    void run(std::string_view command_line);

    /// The whole screen with colour marks, a line end behind each line, trailing blanks cut.
    [[nodiscard]] std::string screen() const;

    /// The screen without "COM3 opened for the communication stream" and "Program completed".
    [[nodiscard]] std::string display() const;

    /// What left the program for standard output.
    [[nodiscard]] const std::string& output() const { return virtual_platform.output; }

    int exit_status = 0;
    std::vector<std::string> calls; ///< "GetModuleState(1)", without the library's prefix
};

/// What stands in the error report of a library function at the start of virtual time.
[[nodiscard]] std::string error_line(std::string_view function, std::string_view time,
                                     std::string_view message);
