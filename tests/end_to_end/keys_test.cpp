// What the user types, as a terminal sends it.
#include <string>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/end_to_end/controller_run.h"

using testing::HasSubstr;
using testing::Not;

namespace
{

TEST(Keys, AreEchoedByTheHousekeepingDisplay)
{
    // So slow that each echo stands for a while.
    ControllerRun run{"3 -PE -PT -PK -T", "latency 150\n"};
    PseudoTerminal terminal{run};
    ASSERT_TRUE(terminal.shows("24.000V"));
    const std::string above = "Hardware type: 0000F100h";
    ASSERT_EQ(terminal.screen.row(3), above);
    const std::string before_echo = "Device type: 8ED6h                      ";
    const auto echoes = [&](const std::string& text) {
        return terminal.wait_until([&] {
            return terminal.screen.row(2) == before_echo + text && terminal.screen.row(3) == above;
        });
    };

    struct {
        const char* first;
        const char* rest; ///< arrives later
        const char* echo;
    } constexpr cases[] = {
        {"a", "", "'a'"},         {"Z", "", "'Z'"},         {" ", "", "020h"},
        {"\r", "", "00Dh"},       {"\033[A", "", "148h"},   {"\033OB", "", "150h"},
        {"\033[", "A", "148h"},   {"\033[15", "~", "13Fh"}, {"\033[1;", "5D", "173h"},
        {"\xC3", "\xA4", "084h"},
    };
    for (const auto& [first, rest, echo] : cases) {
        terminal.type(first);
        ASSERT_TRUE(terminal.keys_are_taken());
        terminal.type(rest);
        EXPECT_TRUE(echoes(echo)) << "for " << testing::PrintToString(first) << " and " << rest
                                  << ":\n"
                                  << terminal.screen.screen();
        ASSERT_TRUE(terminal.wait_until([&] { return terminal.screen.row(2).size() < 20; }));
    }
    terminal.type("\033");
    EXPECT_EQ(terminal.exit_status(), 0);
    expect_terminal_restored(terminal);
}

TEST(Keys, UnknownSequencesAreNeitherLettersNorEsc)
{
    ControllerRun run{"3 -PE -PT -PK -T"};
    PseudoTerminal terminal{run};
    ASSERT_TRUE(terminal.shows("24.000V"));
    for (const char* sequence : {"\033[1;2A", "\033[200~", "\033[?1;2c", "\033[<0;3;4M", "\033[I",
                                 "\033Ox", "\033[E", "\033]11;rgb:0/0/0\033\\", "\033[M !!"}) {
        const std::size_t sent = terminal.terminal_bytes().size();
        terminal.type(sequence);
        ASSERT_TRUE(terminal.keys_are_taken());
        terminal.type("z");
        ASSERT_TRUE(terminal.wait_until([&] {
            return terminal.terminal_bytes().find("'z'", sent) != std::string::npos;
        })) << testing::PrintToString(sequence);
        const std::string since = terminal.terminal_bytes().substr(sent);
        EXPECT_EQ(since.find('\''), since.find("'z'")) << testing::PrintToString(sequence);
        ASSERT_TRUE(terminal.wait_until([&] { return terminal.screen.row(2).size() < 20; }));
    }
    terminal.type("\033");
    EXPECT_EQ(terminal.exit_status(), 0);
}

/// Answers until the text stands there: what is typed before the question is taken back.
void answer(PseudoTerminal& terminal, const std::string& keys, const std::string& text)
{
    unsigned looks = 0;
    ASSERT_TRUE(terminal.wait_until([&] {
        const bool answered = terminal.screen.row_of(text) != 0;
        constexpr unsigned now_and_then = 50;
        if (!answered && looks++ % now_and_then == 0)
            terminal.type(keys);
        return answered;
    })) << terminal.screen.screen();
}

TEST(WrongDevice, IsUsedOnlyWhenTheUserSaysSo)
{
    constexpr const char* identification = "Product identification: ";
    struct {
        const char* keys;
        const char* echo;
        bool used;
    } constexpr cases[] = {
        {"y", "Y", true},
        {"Y", "Y", true},
        {"n", "N", false},
        {"\033", "interrupted", false},
        {"\r\n q1\033[Ay", "Y", true}, // none of these is an answer, Enter neither
    };
    for (const auto& [keys, echo, used] : cases) {
        SCOPED_TRACE(testing::PrintToString(keys));
        const ControllerRun run{"3 -PI -T", "reply GetDevType.type 1234h\n"};
        PseudoTerminal terminal{run};
        ASSERT_TRUE(terminal.shows("proceed anyway (Y/N)?"));
        ASSERT_TRUE(terminal.wait_until([&] { return terminal.modes_are_raw(); }));
        answer(terminal, keys, "Program completed");
        EXPECT_EQ(terminal.exit_status(), 0);
        EXPECT_EQ(terminal.screen.row(2),
                  "Wrong device type, expected 8ED6h, found 1234h, proceed anyway (Y/N)?");
        EXPECT_EQ(terminal.screen.row(3), echo);
        EXPECT_EQ(terminal.screen.row_of(identification), used ? 4 : 0);
        expect_terminal_restored(terminal);
    }
}

} // namespace
