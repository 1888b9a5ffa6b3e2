#include "frame/terminal/console.h"
#include "frame/terminal/keys.h"
#include "frame/terminal/questions.h"
#include "tests/support/trial.h"
#include "tests/support/virtual_time.h"

namespace
{

using Codes = std::vector<int>;

Codes decode(std::string_view bytes, bool late = false)
{
    KeyDecoder decoder;
    for (const char byte : bytes)
        decoder.feed(static_cast<unsigned char>(byte), late);
    decoder.expire();
    return {decoder.keys.begin(), decoder.keys.end()};
}

constexpr int up = key::extended(0x48), down = key::extended(0x50), page_up = key::extended(0x49);

TEST(KeyDecoder, KeysOfTheTerminals)
{
    // clang-format off
    const struct {
        int code;
        std::vector<std::string> bytes;
    } cases[] = {
        {up, {"\033[A", "\033OA", "\x9B" "A", "\x8F" "A", "\033[1\x9B" "A"}},
        {down, {"\033[B"}},
        {page_up, {"\033[5~"}},
        {key::extended(0x51), {"\033[6~"}},
        {key::extended(0x8D), {"\033[1;5A", "\033Oa", "\xC2\x9B" "1;5A"}},
        {key::extended(0x91), {"\033[1;5B"}},
        {key::extended(0x98), {"\033[1;3A", "\033\033[A", "\033\x9B" "A", "\033\xC2\x9B" "A"}},
        {key::extended(0xA0), {"\033[1;3B", "\033\033OB"}},
        {key::extended(0x99), {"\033[5;3~", "\033\033[5~"}},
        {key::extended(0xA1), {"\033[6;3~"}},
        {key::extended(0x84), {"\033[5;5~", "\033[5^"}},
        {key::extended(0x76), {"\033[6;5~", "\033[6^"}},
        {key::extended(0x3B), {"\033[[A", "\033OP", "\033[11~"}},
        {key::extended(0x86), {"\033[24~"}},
        {key::extended(0x47), {"\033[1~", "\033[H"}},
        {key::extended(0x53), {"\033[3~"}},
        {key::extended(0x1E), {"\033a"}},
        {key::extended(0x2C), {"\033Z"}},
        {'A', {"A"}},
        {13, {"\r"}},
        {9, {"\t"}},
        {8, {"\x7F"}},
        {27, {"\033"}},
        {0x84, {"\xC3\xA4"}}, // a letter of the code page
        {0x8E, {"\xC3\x84\xC3\x9B"}}, // not what begins a sequence
        {down, {"\033[1\033[B"}}, // torn by the next sequence
    };
    // Not one of the program's keys: never the letter at the end, never the key without Shift.
    const std::vector<std::string> swallowed = {
        "\033[1;2A", "\033[1;4A", "\033[1;6A", "\033[1;7A", "\033[1;8A", "\033[a", "\033[5$",
        "\033[5@", "\033[5;2~", "\033\033[1;5A", "\033[200~", "\033[99A", "\033[?1;2c", "\033[I",
        "\033[<0;5;5M", "\033[M Aa", "\033]0;SAS\a", "\033]0;SAS\033\\", "\033PAAA\033\\", "\033[",
        "\033[1;", "\033O", "\033]0;A", "\033]0;\xC3\x9C" "A\a", "\x90" "A\x9C", "\x9D" "A\a",
        "\xC2\x90" "A\xC2\x9C", "\x8E" "A", "\033NA", "\033(A", "\033)A", "\033#A", "\033 A",
        "\033[\r1A", "\033\xC3\x9B", "\xE2\x82\xAC",
    };
    // clang-format on
    for (const auto& c : cases) {
        for (const std::string& bytes : c.bytes)
            EXPECT_EQ(decode(bytes), Codes{c.code}) << testing::PrintToString(bytes);
    }
    for (const std::string& bytes : swallowed)
        EXPECT_EQ(decode(bytes), Codes{}) << testing::PrintToString(bytes);
    EXPECT_EQ(decode("\033\033"), (Codes{27, 27}));
    EXPECT_EQ(decode("\033[1;2Ax\033[Ay"), (Codes{'x', up, 'y'}));
    // No UTF-8 at all.
    EXPECT_EQ(decode(std::string{"\xE4"} + 'a'), (Codes{0xE4, 'a'}));
    EXPECT_EQ(decode(std::string{"\xE4\x9B"} + 'A'), (Codes{0xE4, up}));
}

TEST(KeyDecoder, LateKeysAreNoAltCombinations)
{
    const struct {
        std::string bytes;
        Codes keys;
    } cases[] = {
        {"\033[A", {up}},
        {"\033OA", {up}},
        {"\033[1;3A", {key::extended(0x98)}},
        {"\033\033[5~", {27, page_up}},
        {std::string{"\033\x9B"} + "5~", {27, page_up}}, // an 8-bit PgUp
        {"\033\033\033", {27, 27, 27}},
        {"\033a", {27, 'a'}},
        {"\033 ", {27, ' '}},
        {"\033\xC3\x84", {27, 0x8E}},
        {"\033PA\033\\", {27}}, // still no A
    };
    for (const auto& c : cases)
        EXPECT_EQ(decode(c.bytes, true), c.keys) << testing::PrintToString(c.bytes);
}

TEST(KeyDecoder, TheRemainderOfATornSequenceIsSwallowed)
{
    const struct {
        const char* begin;
        const char* remainder;
        Codes keys;
    } cases[] = {
        {"\033[", "Ax", {'x'}},      {"\033O", "Ax", {'x'}},
        {"\033[1;", "5Ax", {'x'}},   {"\033[[", "Ax", {'x'}},
        {"\033[M", "AAAx", {'x'}},   {"\033[", "MAAAx", {'x'}},
        {"\033]0;", "AS\ax", {'x'}}, {"\033[", "\033[A", {0x148}},
        {"\033[", "\033", {27}},     {"\033[", "1234567890123456x", {'x'}},
    };
    for (const auto& c : cases) {
        KeyDecoder decoder;
        for (const std::string_view part : {c.begin, c.remainder}) {
            for (const char byte : part)
                decoder.feed(static_cast<unsigned char>(byte));
            decoder.expire();
        }
        EXPECT_EQ((Codes{decoder.keys.begin(), decoder.keys.end()}), c.keys) << c.begin;
    }
}

/// A keyboard that somebody looks at.
struct KeyTrial : Trial {
    KeyTrial()
    {
        console.start();
        start_keys();
    }
};

/// The keys that read_key() gives until the clock shows `until_ms`.
Codes keys_until(std::int64_t until_ms)
{
    Codes codes;
    while (wait_for_key_until(until_ms))
        codes.push_back(read_key());
    return codes;
}

TEST(Keyboard, ALoneEscIsEscAndATornSequenceIsNone)
{
    KeyTrial trial;
    trial.type(10, "\033");
    trial.type(200, "\033[");
    trial.type(400, "1;2");
    trial.type(500, "A");
    trial.type(1000, "\033[");
    trial.type(1600, "A");
    trial.type(1700, "x");
    trial.type(2000, "\033[");
    trial.type(3600, "y"); // by now nobody waits for the remainder
    EXPECT_EQ(keys_until(4000), (Codes{27, 'x', 'y'}));
}

TEST(Keyboard, KeysTypedWhileNobodyLooksAreKeysOfTheirOwn)
{
    const std::string filler(70, 'x'); // more than is read at once
    KeyTrial trial;
    trial.type(100, filler + "\033");
    trial.type(700, "\033[5~");
    trial.type(1005, "\033\033[5~"); // while somebody waits
    trial.type(1100, "\033");
    trial.type(1600, "a");
    EXPECT_FALSE(key_waiting());
    EXPECT_TRUE(wait_until(1000, false));
    Codes codes = keys_until(1110);
    codes.erase(codes.begin(), codes.begin() + 70);
    EXPECT_EQ(codes, (Codes{27, page_up, key::extended(0x99)}));
    EXPECT_TRUE(wait_until(2000, false));
    EXPECT_EQ(keys_until(3000), (Codes{27, 'a'}));
}

TEST(Keyboard, OutsideOfATerminalKeysAreBytesAndTheEndIsEsc)
{
    KeyTrial trial;
    trial.pipe_in("\033[A");
    EXPECT_EQ(read_key(), 27);
    EXPECT_EQ(read_key(), '[');
    flush_keys(); // keeps what was piped in
    EXPECT_EQ(read_key(), 'A');
    EXPECT_EQ(read_key(), 27);
    EXPECT_EQ(read_answer(), std::nullopt);
}

TEST(Keyboard, TheLineEndBehindAnAnswerBelongsToIt)
{
    for (const std::string line_end : {"", "\n", "\r", "\r\n"}) {
        SCOPED_TRACE(testing::PrintToString(line_end));
        KeyTrial trial;
        trial.pipe_in("y" + line_end + "n" + line_end);
        EXPECT_EQ(read_answer(), 'y');
        EXPECT_EQ(read_answer(), 'n');
        EXPECT_EQ(read_answer(), std::nullopt);
        EXPECT_EQ(trial.screen(), "yn\n");
    }
    KeyTrial trial; // an empty line is an answer, too; on a terminal Enter may come later
    trial.type(5, "\r");
    trial.type(10, "y");
    trial.type(20, "\r");
    trial.type(30, "n");
    for (const char answer : {'\r', 'y', 'n'})
        EXPECT_EQ(read_answer(), answer);
    KeyTrial piped; // and no answer to the next question
    piped.pipe_in("y\nn\n");
    EXPECT_EQ(ask_yes_no(), YesNo::yes);
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
        KeyTrial trial;
        trial.type(0, "yyyy\033"); // typed ahead: not meant for this question
        trial.type(10, c.keys);
        EXPECT_EQ(ask_yes_no(), c.answer) << c.keys;
        EXPECT_EQ(trial.screen(), c.screen);
        EXPECT_FALSE(key_waiting());
    }
}

TEST(Keyboard, TimedWaits)
{
    KeyTrial trial;
    trial.type(10, "x\033");
    trial.type(70, " ");
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
    KeyTrial trial;
    EXPECT_FALSE(key_waiting());
    trial.type(0, "ab");
    EXPECT_FALSE(key_waiting()) << "looked already in this millisecond";
    virtual_time::advance_us(1000);
    EXPECT_TRUE(key_waiting());
}

} // namespace
