// The live displays as they stand on terminals of several sizes, what is typed there, and whose
// library they ask.
#include "tests/end_to_end/controller_run.h"

#include <gtest/gtest.h>
#include <ostream>
#include <string>

static std::ostream& operator<<(std::ostream& stream, const TerminalSize& size)
{
    return stream << size.columns << 'x' << size.rows;
}

namespace
{

constexpr const char* opened = "COM3 opened for the communication stream\n";
constexpr const char* marked_values =
    "  Voltages:  24V: {W}24.000V  {.}5V0: {C}4.800V  {.}3V3: {M}3.400V  {.}"
    "Temperature CPU:  {M}+65.5\xC2\xB0"
    "C  {.}PSU:   {C}-1.0\xC2\xB0"
    "C{.}";

/// The display of the housekeeping as a terminal of that many columns shows it.
std::string display(int columns)
{
    if (columns <= 50)
        return "Device housekeeping, press Esc to quit:\n"
               "    Polling rate:####### cycles/s,\n"
               "    Mean response time:######ms\n"
               "  Voltages:  24V: 24.000V  5V0: 4.800V\n"
               "    3V3: 3.400V  Temperature CPU:  +65.5\u00B0C\n"
               "    PSU:   -1.0\u00B0C\n";
    if (columns <= 100)
        return "Device housekeeping, press Esc to quit: Polling rate:####### cycles/s,\n"
               "    Mean response time:######ms\n"
               "  Voltages:  24V: 24.000V  5V0: 4.800V  3V3: 3.400V  "
               "Temperature CPU:  +65.5\u00B0C\n"
               "    PSU:   -1.0\u00B0C\n";
    return std::string{"Device housekeeping, press Esc to quit: Polling rate:####### cycles/s, "
                       "Mean response time:######ms\n"} +
           housekeeping_values;
}

TEST(Display, StandsWhereItBelongs)
{
    struct {
        TerminalSize size;
        int older_lines;
    } constexpr starts[] = {{{80, 25}, 2}, {{80, 25}, 24}, {{132, 60}, 2}, {{200, 50}, 49}};
    for (const auto& [size, older_lines] : starts) {
        SCOPED_TRACE(testing::Message() << size << " below " << older_lines);
        ControllerRun run{"3 -PK -T"};
        run.size = size;
        std::string before;
        for (int line = 1; line <= older_lines; ++line)
            before += "older line " + std::to_string(line) + '\n';
        run.on_screen = "\033[20h" + before; // LF ends the line
        PseudoTerminal terminal{run};
        ASSERT_TRUE(terminal.shows("24.000V")) << terminal.screen.screen();
        EXPECT_FALSE(terminal.screen.cursor_visible());
        EXPECT_TRUE(terminal.modes_are_raw());
        if (size.columns > 100) {
            EXPECT_EQ(terminal.screen.marked_row(terminal.screen.row_of("24.000V")), marked_values);
        }
        terminal.type("\033");
        EXPECT_EQ(terminal.exit_status(), 0);
        EXPECT_EQ(transcript(terminal.screen),
                  before + opened + display(size.columns) + completed + '\n');
        EXPECT_EQ(terminal.screen.cursor().column, 1);
        EXPECT_EQ(terminal.screen.cursor_hidings(), 1);
        expect_terminal_restored(terminal);
    }
}

TEST(Display, BehindARefusedFullScreenIsFoldedAsAnyOther)
{
    ControllerRun run{"3 -q -n -pk -T"};
    run.size = {.columns = 80, .rows = 25};
    PseudoTerminal terminal{run};
    EXPECT_EQ(terminal.exit_status(), 0);
    const std::string text = transcript(terminal.screen);
    EXPECT_EQ(
        text.substr(text.find("This window")),
        "This window has a width of 80 and a height of 25 characters.\n"
        "Device housekeeping:\n"
        "  Voltages:  24V: 24.000V  5V0: 4.800V  3V3: 3.400V  Temperature CPU:  +65.5\u00B0C\n"
        "    PSU:   -1.0\u00B0C\n");
}

TEST(Resize, ShowsMoreOrLessOfTheSameLines)
{
    // So slow that no picture for the size before is on its way when the size changes.
    const ControllerRun run{"3 -PE -PK -T", "latency 100\n"};
    PseudoTerminal terminal{run};
    ASSERT_TRUE(terminal.shows("Temperature CPU:"));
    const std::string type = "Device type: 8ED6h";
    for (const TerminalSize size : {TerminalSize{132, 25}, TerminalSize{50, 25},
                                    TerminalSize{45, 12}, TerminalSize{160, 60}}) {
        terminal.resize(size);
        EXPECT_TRUE(terminal.wait_until([&] {
            return transcript(terminal.screen) == opened + type + '\n' + display(size.columns);
        })) << size
            << '\n'
            << transcript(terminal.screen);
    }
    terminal.type("\033");
    EXPECT_EQ(terminal.exit_status(), 0);
    // The last key is echoed two rows above the display's header.
    EXPECT_EQ(transcript(terminal.screen), "COM3 opened for the communication stream01Bh\n" + type +
                                               '\n' + display(160) + completed + '\n');
    expect_terminal_restored(terminal);
}

TEST(Keys, AreEchoedByTheHousekeepingDisplay)
{
    // So slow that each echo stands for a while.
    const ControllerRun run{"3 -PE -PT -PK -T", "latency 150\n"};
    PseudoTerminal terminal{run};
    ASSERT_TRUE(terminal.shows("24.000V"));
    struct {
        const char* first;
        const char* rest; ///< arrives later
        const char* echo;
    } constexpr cases[] = {
        {"a", "", "'a'"},       {"\r", "", "00Dh"},        {"\033[A", "", "148h"},
        {"\033[", "A", "148h"}, {"\033[1;", "5D", "173h"}, {"\xC3", "\xA4", "084h"},
    };
    for (const auto& [first, rest, echo] : cases) {
        terminal.type(first);
        ASSERT_TRUE(terminal.keys_are_taken());
        terminal.type(rest);
        const std::string echoed = "Device type: 8ED6h                      " + std::string{echo};
        EXPECT_TRUE(terminal.wait_until([&] { return terminal.screen.row(2) == echoed; }))
            << echoed << '\n'
            << terminal.screen.screen();
        EXPECT_EQ(terminal.screen.row(3), "Hardware type: 0000F100h");
        ASSERT_TRUE(terminal.wait_until([&] { return terminal.screen.row(2).size() < 20; }));
    }
    terminal.type("\033");
    EXPECT_EQ(terminal.exit_status(), 0);
    expect_terminal_restored(terminal);
}

} // namespace
