// The live displays as they stand on terminals of several sizes.
#include <ostream>
#include <string>
#include <tuple>

#include <gtest/gtest.h>

#include "tests/end_to_end/controller_run.h"

static std::ostream& operator<<(std::ostream& stream, const TerminalSize& size)
{
    return stream << size.columns << 'x' << size.rows;
}

namespace
{

struct Display {
    const char* command;
    const char* shown; ///< on the screen when the values are
    const char* lines;

    [[nodiscard]] bool is_continuous() const { return command[1] == 'P'; }
    friend std::ostream& operator<<(std::ostream& stream, const Display& display)
    {
        return stream << display.command;
    }
};

// clang-format off
const Display displays[] = {
    {"-PK", "24.000V",
     "Device housekeeping, press {W}Esc {.}to quit: Polling rate:{W}####### {.}cycles/s, Mean response time:{W}######ms{.}\n"
     "  Voltages:  24V: {W}24.000V  {.}5V0: {C}4.800V  {.}3V3: {M}3.400V  {.}Temperature CPU:  {M}+65.5°C  {.}PSU:   {C}-1.0°C{.}\n"},
    {"-PL", "off",
     "Press {W}Esc {.}to quit\n"
     "LED data of the base device: Red: {M}off{.}, Green:  {G}on{.}, Blue: {M}off{.}, Color: {G}LED{.}\n"},
    {"-PB", "50.00",
     "Fan data, press {W}Esc {.}to quit:\n"
     "  state OK: {G}Y        {.}set:  {W}4100rpm     {.}measured:  {W}4095rpm     {.}PWM control: {W}50.00%{.}\n"},
    {"-PU", "1:02:05.25",
     "Press {W}Esc {.}to quit:\n"
     "Device uptime: {W}1:02:05.25 sec.{.}, total: {W}25:01:01.00 sec.{.}, Operation time: {W}59.99 sec.{.}, total: {W}1:00:00.00 sec.{.}\n"},
    {"-PC", "12.5%",
     "CPU data, press {W}Esc {.}to quit:   Load: {W}12.5%   {.}Frequency: {W}168.00MHz{.}\n"},
    {"-pk", "Program completed",
     "Device housekeeping:\n"
     "  Voltages:  24V: {W}24.000V  {.}5V0: {C}4.800V  {.}3V3: {M}3.400V  {.}Temperature CPU:  {M}+65.5°C  {.}PSU:   {C}-1.0°C{.}\n"},
};
// clang-format on

constexpr TerminalSize sizes[] = {
    {.columns = 80, .rows = 25}, {.columns = 132, .rows = 60}, {.columns = 200, .rows = 50}};

using Parameters = std::tuple<Display, TerminalSize, bool>;

class Displays : public testing::TestWithParam<Parameters>
{
};

TEST_P(Displays, StandWhereTheyBelong)
{
    const auto& [display, size, on_last_row] = GetParam();
    ControllerRun run{"3 " + std::string{display.command} + " -T"};
    run.size = size;
    run.on_screen = "older line\r\n$ KOV-Controller\r\n";
    if (on_last_row)
        run.start_on_last_row();
    PseudoTerminal terminal{run};
    const std::string before = transcript(terminal.screen);

    ASSERT_TRUE(terminal.shows(display.shown)) << terminal.screen.screen();
    if (display.is_continuous()) {
        EXPECT_FALSE(terminal.screen.cursor_visible());
        EXPECT_TRUE(terminal.modes_are_raw());
        terminal.type("\033");
    }
    EXPECT_EQ(terminal.exit_status(), 0);
    EXPECT_EQ(transcript(terminal.screen),
              before + "{W}COM3 {.}opened for the communication stream\n" +
                  clipped(display.lines, size.columns) + "Program completed\n");
    EXPECT_EQ(terminal.screen.cursor_column(), 1);
    EXPECT_EQ(terminal.screen.cursor_hidings(), 1);
    expect_terminal_restored(terminal);
}

INSTANTIATE_TEST_SUITE_P(, Displays,
                         testing::Combine(testing::ValuesIn(displays), testing::ValuesIn(sizes),
                                          testing::Bool()));

TEST(Resize, ShowsMoreOrLessOfTheSameLines)
{
    ControllerRun run{"3 -PE -PK -T"};
    run.on_screen = "older line\r\n";
    PseudoTerminal terminal{run};
    ASSERT_TRUE(terminal.shows("Temperature CPU:"));
    const std::string before = "older line\n"
                               "{W}COM3 {.}opened for the communication stream";
    const auto display = [](int columns) {
        return "\nDevice type: {W}8ED6h{.}\n" + clipped(displays[0].lines, columns);
    };
    for (const TerminalSize size : {TerminalSize{132, 25}, TerminalSize{50, 25},
                                    TerminalSize{45, 12}, TerminalSize{160, 60}}) {
        terminal.resize(size);
        EXPECT_TRUE(terminal.wait_until([&] {
            return transcript(terminal.screen) == before + display(size.columns);
        })) << size
            << '\n'
            << transcript(terminal.screen);
    }
    terminal.type("\033");
    EXPECT_EQ(terminal.exit_status(), 0);
    // The last key is echoed two rows above the display's header.
    EXPECT_EQ(transcript(terminal.screen), before + "01Bh" + display(160) + "Program completed\n");
    expect_terminal_restored(terminal);
}

} // namespace
