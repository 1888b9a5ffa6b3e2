#include "frame/keys.h"

#include <gtest/gtest.h>

#include "frame/console.h"
#include "frame/questions.h"
#include "tests/support/trial.h"
#include "tests/support/virtual_time.h"

namespace
{

std::vector<int> decode(std::string_view bytes)
{
    KeyDecoder decoder;
    for (const char byte : bytes)
        decoder.feed(static_cast<unsigned char>(byte));
    decoder.expire();
    return {decoder.keys.begin(), decoder.keys.end()};
}

using Codes = std::vector<int>;

TEST(KeyDecoder, KeysOfTheTerminals)
{
    const struct {
        const char* bytes;
        int scan_code; ///< 0 = swallowed
    } cases[] = {
        // clang-format off
        {"\033[A", 0x48}, {"\033OA", 0x48}, {"\033[B", 0x50}, {"\033[5~", 0x49},
        {"\033[6~", 0x51}, {"\033[1;5A", 0x8D}, {"\033[1;5B", 0x91}, {"\033[1;3A", 0x98},
        {"\033[1;3B", 0xA0}, {"\033[5;3~", 0x99}, {"\033[6;3~", 0xA1}, {"\033[5;5~", 0x84},
        {"\033[6;5~", 0x76}, {"\033\033[A", 0x98}, {"\033\033OB", 0xA0}, {"\033\033[5~", 0x99},
        {"\033Oa", 0x8D}, {"\033[5^", 0x84}, {"\033[6^", 0x76}, {"\033[[A", 0x3B},
        {"\033OP", 0x3B}, {"\033[11~", 0x3B}, {"\033[24~", 0x86}, {"\033[1~", 0x47},
        {"\033[H", 0x47}, {"\033[3~", 0x53}, {"\033a", 0x1E}, {"\033Z", 0x2C},
        // Not one of the program's keys: never the letter at the end, never the key without Shift.
        {"\033[1;2A", 0}, {"\033[1;4A", 0}, {"\033[1;6A", 0}, {"\033[1;7A", 0},
        {"\033[1;8A", 0}, {"\033[a", 0}, {"\033[5$", 0}, {"\033[5@", 0}, {"\033[5;2~", 0},
        {"\033\033[1;5A", 0}, {"\033[200~", 0}, {"\033[99A", 0}, {"\033[?1;2c", 0},
        {"\033[I", 0}, {"\033[<0;5;5M", 0}, {"\033[M Aa", 0}, {"\033]0;SAS\a", 0},
        {"\033]0;SAS\033\\", 0}, {"\033PAAA\033\\", 0}, {"\033[", 0}, {"\033[1;", 0},
        {"\033O", 0}, {"\033]0;A", 0},
        // clang-format on
    };
    for (const auto& c : cases) {
        const Codes expected = c.scan_code == 0 ? Codes{} : Codes{256 + c.scan_code};
        EXPECT_EQ(decode(c.bytes), expected) << testing::PrintToString(std::string{c.bytes});
    }
}

TEST(KeyDecoder, PlainKeys)
{
    EXPECT_EQ(decode("aA \r\t"), (Codes{'a', 'A', ' ', 13, 9}));
    EXPECT_EQ(decode("\x7F"), Codes{8});
    EXPECT_EQ(decode("\033"), Codes{27});
    EXPECT_EQ(decode("\033\033"), (Codes{27, 27}));
    EXPECT_EQ(decode("\xC3\xA4"), Codes{0x84}) << "a letter of the code page";
    EXPECT_EQ(decode("\xE2\x82\xAC"), Codes{}) << "a letter that it does not have";
    EXPECT_EQ(decode("\xE4"
                     "a"),
              (Codes{0xE4, 'a'}))
        << "no UTF-8 at all";
    EXPECT_EQ(decode("\033[1;2Ax\033[Ay"), (Codes{'x', 256 + 0x48, 'y'}));
    EXPECT_EQ(decode("\033[1\033[B"), Codes{256 + 0x50}) << "torn by the next sequence";
}

/// The keys that read_key() gives until the clock shows `until_ms`.
Codes keys_until(std::int64_t until_ms)
{
    console.start();
    start_keys();
    Codes codes;
    while (wait_for_key_until(until_ms))
        codes.push_back(read_key());
    return codes;
}

TEST(Keyboard, ALoneEscIsEscAndATornSequenceIsNone)
{
    Trial trial;
    trial.type(10, "\033");
    trial.type(200, "\033[");
    trial.type(400, "1;2");
    trial.type(500, "A");
    trial.type(1000, "\033[");
    trial.type(2000, "x");
    EXPECT_EQ(keys_until(3000), (Codes{27, 'x'}));
}

TEST(Keyboard, OutsideOfATerminalKeysAreBytesAndTheEndIsEsc)
{
    Trial trial;
    trial.pipe_in("\033[A");
    console.start();
    start_keys();
    EXPECT_EQ(read_key(), 27);
    EXPECT_EQ(read_key(), '[');
    flush_keys(); // keeps what was piped in
    EXPECT_EQ(read_key(), 'A');
    EXPECT_FALSE(input_has_ended());
    EXPECT_EQ(read_key(), 27);
    EXPECT_TRUE(input_has_ended());
    EXPECT_EQ(read_answer(), std::nullopt);
}

TEST(Keyboard, TheLineEndBehindAnAnswerBelongsToIt)
{
    for (const char* line_end : {"", "\n", "\r", "\r\n"}) {
        SCOPED_TRACE(testing::PrintToString(std::string{line_end}));
        Trial trial;
        trial.pipe_in(std::string{"y"} + line_end + "n" + line_end);
        console.start();
        start_keys();
        EXPECT_EQ(read_answer(), 'y');
        EXPECT_EQ(read_answer(), 'n');
        EXPECT_EQ(read_answer(), std::nullopt);
        EXPECT_EQ(trial.screen(), "yn\n");
    }
    Trial trial; // an empty line is an answer, too; on a terminal Enter may come later
    trial.type(5, "\r");
    trial.type(10, "y");
    trial.type(20, "\r");
    trial.type(30, "n");
    console.start();
    start_keys();
    EXPECT_EQ(read_answer(), '\r');
    EXPECT_EQ(read_answer(), 'y');
    EXPECT_EQ(read_answer(), 'n');
}

TEST(Keyboard, QuestionsTakeYesNoAndEscOnly)
{
    const struct {
        const char* keys;
        YesNo answer;
        const char* screen;
    } cases[] = {
        {"y", YesNo::yes, "Y\n"},
        {"N", YesNo::no, "N\n"},
        {"ax1\r\033[An", YesNo::no, "N\n"},
        {"\033", YesNo::interrupted, "{Y}interrupted{.}\n"},
    };
    for (const auto& c : cases) {
        Trial trial;
        trial.type(0, "yyyy"); // typed ahead: not meant for this question
        trial.type(10, c.keys);
        console.start();
        start_keys();
        EXPECT_EQ(ask_yes_no(), c.answer) << c.keys;
        EXPECT_EQ(trial.screen(), c.screen);
        EXPECT_FALSE(key_waiting());
    }
    Trial piped; // the line end of the first answer is not the second answer
    piped.pipe_in("y\nn\n");
    console.start();
    start_keys();
    EXPECT_EQ(ask_yes_no(), YesNo::yes);
    EXPECT_EQ(read_answer(), 'n');
    const Trial trial;
    console.start();
    print_wrong_value("module address");
    EXPECT_EQ(trial.screen(), "{Y}Wrong module address specified{.}\n");
}

TEST(Keyboard, TimedWaits)
{
    Trial trial;
    trial.type(10, "x\033");
    trial.type(70, " ");
    console.start();
    start_keys();
    EXPECT_TRUE(wait_until(40, true));
    EXPECT_EQ(virtual_time::now_us(), 40'000);
    EXPECT_FALSE(wait_until(100, true));
    EXPECT_EQ(virtual_time::now_us(), 70'000);
    EXPECT_TRUE(wait_until(200, false));
    virtual_platform.signals = {{250, 15}};
    EXPECT_FALSE(wait_until(300, false)) << "a request to end the program ends every wait";
    EXPECT_EQ(virtual_time::now_us(), 250'000);
    EXPECT_EQ(read_key(), 27);
}

TEST(Keyboard, IsLookedAtOncePerMillisecond)
{
    Trial trial;
    start_keys();
    EXPECT_FALSE(key_waiting());
    trial.type(0, "ab");
    EXPECT_FALSE(key_waiting()) << "looked already in this millisecond";
    virtual_time::advance_us(1000);
    EXPECT_TRUE(key_waiting());
}

} // namespace
