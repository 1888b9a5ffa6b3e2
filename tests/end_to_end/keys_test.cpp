// What the user types, as a terminal sends it.
#include <string>

#include <gtest/gtest.h>

#include "tests/end_to_end/controller_run.h"

namespace
{

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
