// Keys of a Windows console, from its records to the program's key codes.
#include "frame/platform/windows/keys.h"
#include "frame/terminal/key_decoder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <vector>

namespace
{

using testing::ElementsAre;
using testing::ElementsAreArray;

constexpr DWORD alt = LEFT_ALT_PRESSED;
constexpr DWORD control = RIGHT_CTRL_PRESSED;
constexpr DWORD shift = SHIFT_PRESSED;
constexpr DWORD alt_gr = RIGHT_ALT_PRESSED | LEFT_CTRL_PRESSED;

KEY_EVENT_RECORD pressed(WORD key, wchar_t character = 0, DWORD state = 0)
{
    KEY_EVENT_RECORD record = {};
    record.bKeyDown = TRUE;
    record.wRepeatCount = 1;
    record.wVirtualKeyCode = key;
    record.uChar.UnicodeChar = character;
    record.dwControlKeyState = state | NUMLOCK_ON;
    return record;
}

std::deque<int> codes_of(const std::vector<KEY_EVENT_RECORD>& records)
{
    ConsoleKeys keys;
    KeyDecoder decoder;
    for (const KEY_EVENT_RECORD& record : records) {
        for (const char byte : keys.bytes_of(record))
            decoder.feed(static_cast<unsigned char>(byte));
        EXPECT_FALSE(decoder.is_open()) << "a key must not wait for the next one";
    }
    return decoder.keys;
}

TEST(ConsoleKeys, ModifiersAreToldApart)
{
    struct {
        WORD key;
        wchar_t character;
        DWORD state;
        std::vector<int> codes; ///< none = the key means nothing
    } const cases[] = {
        {'A', L'a', 0, {'a'}},
        {'A', L'A', shift, {'A'}},
        {'A', 1, control, {1}},
        {'A', L'a', alt, {key::extended(0x1E)}},
        {'A', 0, alt | control, {}},
        {'O', L'o', alt, {key::extended(0x18)}},
        {'X', L'X', alt | shift, {key::extended(0x2D)}},
        {VK_OEM_4, L'[', alt, {}},
        {'1', L'1', alt, {}},
        {'8', L'[', alt_gr, {'['}},
        {'E', 0x20AC, alt_gr, {}}, // the euro sign, which code page 437 has not
        {VK_OEM_7, 0xE4, 0, {0x84}},
        {'2', 0, control, {key::extended(0x03)}},
        {VK_UP, 0, 0, {key::extended(0x48)}},
        {VK_UP, 0, shift, {}},
        {VK_DOWN, 0, alt | ENHANCED_KEY, {key::extended(0xA0)}},
        {VK_PRIOR, 0, control, {key::extended(0x84)}},
        {VK_PRIOR, 0, control | shift, {}},
        {VK_DELETE, 0, alt, {key::extended(0xA3)}},
        {VK_F1, 0, 0, {key::extended(0x3B)}},
        {VK_F12, 0, alt, {key::extended(0x8C)}},
        {VK_TAB, L'\t', 0, {'\t'}},
        {VK_TAB, L'\t', shift, {key::extended(0x0F)}},
        {VK_TAB, 0, control, {}},
        {VK_RETURN, L'\r', 0, {key::enter}},
        {VK_ESCAPE, 0x1B, 0, {key::escape}},
        {VK_SHIFT, 0, shift, {}},
    };
    for (const auto& c : cases)
        EXPECT_THAT(codes_of({pressed(c.key, c.character, c.state)}), ElementsAreArray(c.codes))
            << c.key << " with state " << c.state;
}

TEST(ConsoleKeys, OneKeyIsNeverTheBeginningOfAnother)
{
    const KEY_EVENT_RECORD escape = pressed(VK_ESCAPE, 0x1B);
    EXPECT_THAT(
        codes_of({escape, pressed('A', L'a'), escape, pressed(VK_OEM_4, L'['), pressed('A', L'A')}),
        ElementsAre(key::escape, 'a', key::escape, '[', 'A'));
}

TEST(ConsoleKeys, RepeatedReleasedAndComposed)
{
    KEY_EVENT_RECORD held = pressed('A', L'a');
    held.wRepeatCount = 3;
    KEY_EVENT_RECORD released = pressed('A', L'a');
    released.bKeyDown = FALSE;
    KEY_EVENT_RECORD composed = pressed(VK_MENU, 0xB0); // the end of Alt 2 4 8
    composed.bKeyDown = FALSE;
    EXPECT_THAT(codes_of({held, released, composed}), ElementsAre('a', 'a', 'a', 0xF8));

    ConsoleKeys keys;
    EXPECT_EQ(keys.bytes_of(pressed(VK_PACKET, 0xD83D)), "");
    EXPECT_EQ(keys.bytes_of(pressed(VK_PACKET, 0xDE00)), "\xF0\x9F\x98\x80");
    EXPECT_EQ(keys.bytes_of(pressed(VK_PACKET, 0xDE00)), "") << "half a character";
}

} // namespace
