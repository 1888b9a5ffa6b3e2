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

#include "tests/support/virtual_platform.h"

#include <cstddef>
#include <cstdint>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <initializer_list>
#include <string>
#include <string_view>
#include <vector>

using testing::EndsWith;
using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;

/// A line of the simulator's scenario language.
struct ScenarioLine {
    ScenarioLine(const char* line) : text{line} {}
    ScenarioLine(const std::string& line) : text{line} {}
    std::string_view text;
};

using ScenarioLines = std::initializer_list<ScenarioLine>;

class Trial
{
public:
    Trial() : Trial(ScenarioLines{}) {}
    /// On an instrument that is set up with these lines.
    Trial(ScenarioLines lines);
    ~Trial();
    Trial(const Trial&) = delete;
    Trial& operator=(const Trial&) = delete;

    /// Sets the instrument up with one more line; a wrong one fails the test.
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

    /// How many calls begin like this: "GetModuleState(1)", "SetMemoryData(".
    [[nodiscard]] std::ptrdiff_t calls_of(std::string_view beginning) const;

    int exit_status = 0;
    std::vector<std::string> calls; ///< "GetModuleState(1)", without the library's prefix
};

/// A trial of an instrument on which an acceptance test is short: measurements come fast, and of
/// the HV-supplies only one is there, with ten targets of 1 V for each polarity.
struct QuickTrial : Trial {
    QuickTrial();
};

/// What these switches display on an instrument that is set up with these lines.
[[nodiscard]] std::string display_of(const std::string& switches, ScenarioLines lines = {});

/// The same where each answer takes 10 ms and the user types Esc at that time.
[[nodiscard]] std::string live_display_of(const std::string& switches, std::int64_t escape_ms,
                                          ScenarioLines lines = {});

/// What switches show on an instrument that is set up with a line, and one of their calls.
struct Shown {
    std::string_view line; ///< may be empty
    std::string switches;
    testing::Matcher<std::string> display;
    const char* call = nullptr; ///< null = whatever they are
};

void expect_shown(std::initializer_list<Shown> cases);

/// What stands in the error report of a library function at the start of virtual time.
[[nodiscard]] std::string error_line(std::string_view function, std::string_view time,
                                     std::string_view message);
