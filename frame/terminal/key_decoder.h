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
/// form, in rxvt's forms, and Alt as a leading ESC; 8-bit introducers of sequences as well, as
/// bytes and in UTF-8. Sequences that mean nothing here are swallowed whole: the letter that ends
/// one must never pass for a typed letter.
class KeyDecoder
{
public:
    /// Takes the next byte. Whole keys appear in `keys`. A byte is `late` when it may have been
    /// typed long before it was read: an ESC in front of it tells nothing about Alt then and was
    /// the Esc key, unless the two begin a cursor or function key.
    void feed(unsigned char byte, bool late = false);

    /// The terminal sends a sequence at once; when no byte follows for patience_ms(), a lone ESC
    /// was the Esc key, and a sequence is torn: it means nothing any more. Its remainder is
    /// swallowed, too, up to its end; that is given up after a second more, or after 16 bytes.
    void expire();

    /// True while a sequence stands open.
    [[nodiscard]] bool is_open() const { return state_ != State::ground; }

    /// True while the remainder of a torn sequence is swallowed.
    [[nodiscard]] bool is_torn() const { return torn_; }

    /// How long to wait for the next byte of the open sequence, from the last byte on that came
    /// before it was torn.
    [[nodiscard]] int patience_ms() const
    {
        return state_ == State::escape ? escape_patience_ms : torn_ ? 1500 : 500;
    }
    static constexpr int escape_patience_ms = 50;

    std::deque<int> keys;

private:
    enum class State {
        ground,
        escape,           ///< after ESC
        control_sequence, ///< after ESC [
        single_shift,     ///< after ESC O
        linux_function,   ///< after ESC [ [
        charset,          ///< after ESC ( and the like, or ESC N
        text,             ///< after ESC ] and the like, up to BEL or ESC backslash
        utf8,
        skip, ///< the three bytes of an old mouse report
    };

    void feed_ground(unsigned char byte);
    void feed_escape(unsigned char byte);
    [[nodiscard]] bool open_sequence(unsigned char introducer);
    void feed_text(unsigned char byte);
    void feed_control_sequence(unsigned char byte);
    void finish_control_sequence(unsigned char final_byte);
    void feed_linux_function(unsigned char byte);
    void feed_single_shift(unsigned char byte);
    void finish_single_shift(unsigned char final_byte);
    void feed_utf8(unsigned char byte);
    void release_bytes();
    void give(int code);
    void end_sequence();

    State state_ = State::ground;
    bool alt_ = false;  ///< an ESC preceded the sequence or the UTF-8 character
    bool late_ = false; ///< the byte that is being fed
    bool torn_ = false;
    int torn_bytes_ = 0; ///< swallowed since the sequence was torn
    std::string bytes_;
    std::size_t bytes_to_skip_ = 0; ///< of a mouse report, of a character in a text
};
