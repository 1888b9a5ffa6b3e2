/// Turns the bytes that a terminal sends for its keys into the program's key codes.
#pragma once

#include <cstddef>
#include <deque>
#include <string>

/// Key codes: the character's code (of code page 437 above 7Fh), or 256 + scan code for an
/// extended key.
namespace key
{

constexpr int extended(int scan_code)
{
    return 256 + scan_code;
}

inline constexpr int backspace = 8;
inline constexpr int enter = 13;
inline constexpr int line_feed = 10;
inline constexpr int escape = 27;

} // namespace key

/// Understands xterm, VT, rxvt, Linux console, tmux and PuTTY, with modifiers in the "1;2".."1;8"
/// form, in rxvt's forms, and Alt as a leading ESC. Sequences that mean nothing here are swallowed
/// whole: the letter that ends one must never pass for a typed letter.
class KeyDecoder
{
public:
    /// Takes the next byte. Whole keys appear in `keys`.
    void feed(unsigned char byte);

    /// The terminal sends a sequence at once; when no byte follows for patience_ms(), what stands
    /// open is over: a lone ESC was the Esc key, a torn sequence is dropped.
    void expire();

    /// True while a sequence stands open.
    [[nodiscard]] bool is_open() const { return state_ != State::ground; }

    /// How long to wait for the next byte of the open sequence.
    [[nodiscard]] int patience_ms() const { return state_ == State::escape ? 50 : 500; }

    std::deque<int> keys;

private:
    enum class State {
        ground,
        escape,           ///< after ESC
        control_sequence, ///< after ESC [
        single_shift,     ///< after ESC O
        linux_function,   ///< after ESC [ [
        text,             ///< after ESC ] and the like, up to BEL or ESC backslash
        utf8,
        skip, ///< the three bytes of an old mouse report
    };

    void feed_ground(unsigned char byte);
    void feed_escape(unsigned char byte);
    void feed_control_sequence(unsigned char byte);
    void finish_control_sequence(unsigned char final_byte);
    void finish_single_shift(unsigned char final_byte);
    void feed_utf8(unsigned char byte);
    void release_bytes();
    void end_sequence();

    State state_ = State::ground;
    bool alt_ = false; ///< a second ESC preceded the sequence
    std::string bytes_;
    std::size_t bytes_to_skip_ = 0;
};
