#include "frame/terminal/keys.h"

#include "frame/platform/platform.h"
#include "frame/terminal/console.h"

#include <algorithm>
#include <array>
#include <span>

namespace
{

/// What would still belong to the last answer.
enum class ToDrop { nothing, line_end, line_feed };

struct Keyboard {
    KeyDecoder decoder;
    bool started = false;
    bool ended = false; ///< standard input has no more bytes
    ToDrop to_drop = ToDrop::nothing;
    bool look_again = true;      ///< the last look found a key
    std::int64_t emptied_ms = 0; ///< nothing waited then any more
    std::int64_t last_byte_ms = 0;
};

Keyboard keyboard;

/// Drops the line end that belongs to the last answer.
void drop_answered_line_end()
{
    std::deque<int>& keys = keyboard.decoder.keys;
    while (keyboard.to_drop != ToDrop::nothing && !keys.empty()) {
        const int key = keys.front();
        const bool is_enter = key == key::enter && keyboard.to_drop == ToDrop::line_end;
        if (is_enter || key == key::line_feed)
            keys.pop_front();
        // On a terminal Enter is one key; elsewhere it may be the first half of CR LF.
        keyboard.to_drop =
            is_enter && !platform::input_is_terminal() ? ToDrop::line_feed : ToDrop::nothing;
    }
}

void start_reading()
{
    if (keyboard.started)
        return;
    keyboard.started = true;
    platform::start_raw_input();
}

/// Only a terminal sends sequences; elsewhere a byte is a key.
void take(std::span<const unsigned char> bytes, bool from_terminal, bool late)
{
    for (const unsigned char byte : bytes) {
        if (from_terminal)
            keyboard.decoder.feed(byte, late);
        else
            keyboard.decoder.keys.push_back(byte);
    }
}

/// Reads what is waiting, or waits up to `timeout_ms` (negative = as long as it takes) for it. When
/// nobody has looked for a while it does not wait: what was typed meanwhile comes first, and is
/// told from what will be typed.
void look(std::int64_t timeout_ms)
{
    start_reading();
    const bool terminal = platform::input_is_terminal();
    KeyDecoder& decoder = keyboard.decoder;
    const std::int64_t start_ms = platform::tick_ms();
    const bool late = terminal && start_ms - keyboard.emptied_ms > KeyDecoder::escape_patience_ms;
    if (late)
        timeout_ms = 0;
    if (decoder.is_open()) {
        const std::int64_t patience =
            std::max<std::int64_t>(keyboard.last_byte_ms + decoder.patience_ms() - start_ms, 0);
        timeout_ms = timeout_ms < 0 ? patience : std::min(timeout_ms, patience);
    }
    std::array<unsigned char, 64> bytes = {};
    std::size_t count = 0;
    // A pipe is read byte by byte: the rest of it may be meant for another program.
    const std::size_t size = terminal ? bytes.size() : 1;
    const platform::InputResult result =
        platform::read_input(bytes.data(), size, count, timeout_ms);
    const std::int64_t now = platform::tick_ms();
    if (count < size)
        keyboard.emptied_ms = now;
    switch (result) {
    case platform::InputResult::bytes:
        take({bytes.data(), count}, terminal, late);
        if (!decoder.is_torn())
            keyboard.last_byte_ms = now;
        break;
    case platform::InputResult::nothing:
        if (decoder.is_open() && now - keyboard.last_byte_ms >= decoder.patience_ms())
            decoder.expire();
        break;
    case platform::InputResult::ended:
        keyboard.ended = true;
        break;
    }
    drop_answered_line_end();
}

bool key_input_is_over()
{
    return keyboard.ended || platform::stop_signal() != 0;
}

bool key_or_end_is_there()
{
    return !keyboard.decoder.keys.empty() || key_input_is_over();
}

} // namespace

void start_keys()
{
    keyboard = {};
}

void hide_typed_keys()
{
    start_reading();
}

bool key_waiting()
{
    drop_answered_line_end();
    if (key_or_end_is_there())
        return true;
    if (!keyboard.look_again && platform::tick_ms() == keyboard.emptied_ms)
        return false;
    look(0);
    keyboard.look_again = key_or_end_is_there();
    return keyboard.look_again;
}

bool escape_waiting()
{
    const KeyDecoder& decoder = keyboard.decoder;
    if (!platform::input_is_terminal())
        return false;
    std::size_t seen = 0;
    do {
        seen = decoder.keys.size();
        look(0);
        while (decoder.is_open() && !decoder.is_torn() && !key_input_is_over())
            look(decoder.patience_ms());
    } while (decoder.keys.size() > seen);
    return platform::stop_signal() != 0 ||
           std::find(decoder.keys.begin(), decoder.keys.end(), key::escape) != decoder.keys.end();
}

void expect_line_end()
{
    keyboard.to_drop = ToDrop::line_end;
}

void wait_for_key()
{
    drop_answered_line_end();
    while (!key_or_end_is_there()) {
        console.flush_for_wait(); // again after each change of the window
        look(-1);
    }
}

bool wait_for_key_until(std::int64_t deadline_ms)
{
    drop_answered_line_end();
    while (!key_or_end_is_there()) {
        console.flush_for_wait();
        const std::int64_t left = deadline_ms - platform::tick_ms();
        look(std::max<std::int64_t>(left, 0)); // even when the deadline was over before
        if (left <= 0)
            return key_or_end_is_there();
    }
    return true;
}

int read_key()
{
    wait_for_key();
    keyboard.look_again = true;
    std::deque<int>& keys = keyboard.decoder.keys;
    if (platform::stop_signal() != 0 || keys.empty())
        return key::escape;
    const int key = keys.front();
    keys.pop_front();
    return key;
}

void flush_keys()
{
    if (!platform::input_is_terminal())
        return;
    look(0); // takes a sequence that is under way
    platform::drop_input();
    keyboard.decoder.keys.clear();
    if (keyboard.decoder.is_open()) {
        keyboard.decoder.expire();
        keyboard.decoder.keys.clear();
    }
}

std::optional<char> read_answer()
{
    wait_for_key();
    if (platform::stop_signal() != 0 || keyboard.decoder.keys.empty())
        return std::nullopt;
    const int key = read_key();
    if (key == key::enter) // itself the answer
        keyboard.to_drop = platform::input_is_terminal() ? ToDrop::nothing : ToDrop::line_feed;
    else
        keyboard.to_drop = key == key::line_feed ? ToDrop::nothing : ToDrop::line_end;
    if (key > 0xFF)
        return '\0'; // an extended key is no character, and no answer that anybody asks for
    if (key >= ' ' && key != 0x7F)
        console.print("%c", key);
    return static_cast<char>(key);
}

bool wait_until(std::int64_t deadline_ms, bool blank_aborts)
{
    console.flush_for_wait();
    while (platform::stop_signal() == 0) {
        const std::int64_t left = deadline_ms - platform::tick_ms();
        if (left <= 0)
            return true;
        if (!blank_aborts || keyboard.ended) {
            platform::sleep_ms(left);
            continue;
        }
        look(left);
        std::deque<int>& keys = keyboard.decoder.keys;
        const bool blank = std::find(keys.begin(), keys.end(), ' ') != keys.end();
        keys.clear();
        if (blank)
            return false;
        console.flush_for_wait();
    }
    return false;
}
