#include "frame/key_decoder.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <cstdlib>
#include <string_view>

#include "frame/characters.h"

namespace
{

constexpr unsigned char esc = 27;
constexpr std::size_t longest_sequence = 32;

enum class Modifier { none, shift, alt, control, other };

/// Scan codes of a key: alone, with Shift, Ctrl and Alt; 0 = means nothing here. Shift with a
/// cursor key has no code of its own and must not pass for the key alone.
struct ScanCodes {
    int plain, shift, control, alt;
};

constexpr ScanCodes up = {0x48, 0, 0x8D, 0x98};
constexpr ScanCodes down = {0x50, 0, 0x91, 0xA0};
constexpr ScanCodes left = {0x4B, 0, 0x73, 0x9B};
constexpr ScanCodes right = {0x4D, 0, 0x74, 0x9D};
constexpr ScanCodes home = {0x47, 0, 0x77, 0x97};
constexpr ScanCodes end = {0x4F, 0, 0x75, 0x9F};
constexpr ScanCodes page_up = {0x49, 0, 0x84, 0x99};
constexpr ScanCodes page_down = {0x51, 0, 0x76, 0xA1};
constexpr ScanCodes insert = {0x52, 0, 0x92, 0xA2};
constexpr ScanCodes remove = {0x53, 0, 0x93, 0xA3};
constexpr ScanCodes none = {0, 0, 0, 0};
constexpr int back_tab = 0x0F;
constexpr int control_at = 0x03;

constexpr ScanCodes function_key(int number)
{
    if (number <= 10)
        return {0x3A + number, 0x53 + number, 0x5D + number, 0x67 + number};
    const int further = number - 11; // F11 and F12 came later
    return {0x85 + further, 0x87 + further, 0x89 + further, 0x8B + further};
}

/// Scan codes of Alt with the letters A..Z.
constexpr std::array<int, 26> alt_letters = {
    0x1E, 0x30, 0x2E, 0x20, 0x12, 0x21, 0x22, 0x23, 0x17, 0x24, 0x25, 0x26, 0x32,
    0x31, 0x18, 0x19, 0x10, 0x13, 0x1F, 0x14, 0x16, 0x2F, 0x11, 0x2D, 0x15, 0x2C,
};

ScanCodes cursor_key(char letter)
{
    switch (letter) {
    case 'A':
        return up;
    case 'B':
        return down;
    case 'C':
        return right;
    case 'D':
        return left;
    case 'F':
        return end;
    case 'H':
        return home;
    case 'P':
    case 'Q':
    case 'R':
    case 'S':
        return function_key(letter - 'P' + 1);
    default:
        return none;
    }
}

/// The keys whose sequence ends in "~" and tells them by number.
ScanCodes numbered_key(int number)
{
    switch (number) {
    case 1:
    case 7:
        return home;
    case 2:
        return insert;
    case 3:
        return remove;
    case 4:
    case 8:
        return end;
    case 5:
        return page_up;
    case 6:
        return page_down;
    default:
        if (number >= 11 && number <= 15)
            return function_key(number - 10);
        if (number >= 17 && number <= 21)
            return function_key(number - 11);
        if (number == 23 || number == 24)
            return function_key(number - 12);
        return none;
    }
}

int code_of(const ScanCodes& codes, Modifier modifier)
{
    switch (modifier) {
    case Modifier::none:
        return codes.plain;
    case Modifier::shift:
        return codes.shift;
    case Modifier::control:
        return codes.control;
    case Modifier::alt:
        return codes.alt;
    case Modifier::other:
        break;
    }
    return 0;
}

/// The modifier parameter: 1 + Shift + 2 Alt + 4 Ctrl.
Modifier modifier_of(int parameter)
{
    switch (parameter) {
    case 1:
        return Modifier::none;
    case 2:
        return Modifier::shift;
    case 3:
        return Modifier::alt;
    case 5:
        return Modifier::control;
    default:
        return Modifier::other;
    }
}

/// "5;3" -> 5 and 3; a missing number is 1, one that is no number makes the result false.
bool read_parameters(std::string_view text, int& first, int& second)
{
    std::array<int, 2> numbers = {1, 1};
    std::size_t index = 0;
    int digits = 0;
    for (const char c : text) {
        if (c == ';' && index == 0) {
            ++index;
            digits = 0;
        } else if (c >= '0' && c <= '9' && digits < 4) {
            numbers[index] = (digits++ == 0 ? 0 : numbers[index] * 10) + (c - '0');
        } else {
            return false;
        }
    }
    first = numbers[0];
    second = numbers[1];
    return true;
}

/// How many bytes a UTF-8 character has that begins with this one; 1 = it begins none.
std::size_t utf8_length(unsigned char lead)
{
    if (lead < 0xC2 || lead > 0xF4)
        return 1;
    return lead >= 0xF0 ? 4 : lead >= 0xE0 ? 3 : 2;
}

bool continues_utf8(unsigned char byte)
{
    return (byte & 0xC0) == 0x80;
}

/// What follows ESC in the 7-bit form of an 8-bit introducer (its code as a byte or a character);
/// 0 = it is none.
unsigned char introducer_of(char32_t code)
{
    constexpr std::u32string_view introducers = U"\x8E\x8F\x90\x98\x9B\x9D\x9E\x9F";
    const bool is_one = introducers.find(code) != std::u32string_view::npos;
    return is_one ? static_cast<unsigned char>(code - 0x40) : 0;
}

/// The bytes between ESC and the final byte that choose a character set and the like.
bool is_intermediate(unsigned char byte)
{
    return byte >= 0x20 && byte <= 0x2F;
}

} // namespace

void KeyDecoder::give(int code)
{
    if (!torn_)
        keys.push_back(code);
}

void KeyDecoder::end_sequence()
{
    state_ = State::ground;
    alt_ = false;
    torn_ = false;
    bytes_.clear();
    bytes_to_skip_ = 0;
}

void KeyDecoder::expire()
{
    switch (state_) {
    case State::ground:
        break;
    case State::escape:
        if (alt_)
            keys.push_back(key::escape);
        keys.push_back(key::escape);
        end_sequence();
        break;
    case State::charset: // may have been Alt+( and the like
        end_sequence();
        break;
    case State::utf8:
        release_bytes();
        break;
    default:
        if (torn_)
            end_sequence();
        torn_ = is_open();
        torn_bytes_ = 0;
        break;
    }
}

void KeyDecoder::feed(unsigned char byte, bool late)
{
    constexpr int longest_remainder = 16;
    late_ = late;
    if (torn_ && ++torn_bytes_ > longest_remainder)
        end_sequence();
    const bool takes_any_byte =
        state_ == State::text || state_ == State::utf8 || state_ == State::skip;
    if (const unsigned char introducer = introducer_of(byte); introducer != 0 && !takes_any_byte) {
        feed(esc, late);
        (void)open_sequence(introducer);
        return;
    }
    const bool starts_over =
        byte == esc && state_ != State::ground && state_ != State::escape && state_ != State::utf8;
    if (starts_over) // what stood open will never be finished
        end_sequence();
    switch (state_) {
    case State::ground:
        feed_ground(byte);
        break;
    case State::escape:
        feed_escape(byte);
        break;
    case State::control_sequence:
        feed_control_sequence(byte);
        break;
    case State::single_shift:
        if ((byte >= '0' && byte <= '9') || byte == ';')
            bytes_ += static_cast<char>(byte);
        else
            finish_single_shift(byte);
        break;
    case State::linux_function:
        if (byte >= 'A' && byte <= 'E')
            give(key::extended(function_key(byte - 'A' + 1).plain));
        end_sequence();
        break;
    case State::charset:
        if (!is_intermediate(byte))
            end_sequence();
        break;
    case State::text:
        feed_text(byte);
        break;
    case State::utf8:
        feed_utf8(byte);
        break;
    case State::skip:
        if (--bytes_to_skip_ == 0)
            end_sequence();
        break;
    }
}

void KeyDecoder::feed_ground(unsigned char byte)
{
    if (byte == esc) {
        state_ = State::escape;
    } else if (utf8_length(byte) > 1) {
        state_ = State::utf8;
        bytes_ = static_cast<char>(byte);
    } else if (byte == 0) {
        keys.push_back(key::extended(control_at));
    } else {
        keys.push_back(byte == 0x7F ? key::backspace : byte);
    }
}

bool KeyDecoder::open_sequence(unsigned char introducer)
{
    switch (introducer) {
    case '[':
        state_ = State::control_sequence;
        return true;
    case 'O':
        state_ = State::single_shift;
        return true;
    case 'N':
        state_ = State::charset;
        return true;
    case ']':
    case 'P':
    case 'X':
    case '^':
    case '_':
        state_ = State::text;
        return true;
    default:
        if (is_intermediate(introducer))
            state_ = State::charset;
        return is_intermediate(introducer);
    }
}

void KeyDecoder::feed_escape(unsigned char byte)
{
    if (byte == esc) {
        if (alt_ || late_)
            keys.push_back(key::escape); // the first ESC was a key of its own
        alt_ = !late_;
        return;
    }
    // ESC backslash ends a text.
    const bool was_key = late_ && byte != '[' && byte != 'O' && byte != '\\';
    if (was_key)
        keys.push_back(key::escape);
    // The blank key must not get lost: it aborts.
    if (!(was_key && byte == ' ') && open_sequence(byte))
        return;
    if (alt_)
        keys.push_back(key::escape); // Esc was typed before this Alt combination
    if (was_key) {
        end_sequence();
        feed_ground(byte);
    } else if (utf8_length(byte) > 1) {
        feed_ground(byte);
        alt_ = true;
    } else {
        if (std::isalpha(byte) != 0 && byte < 0x80) {
            const auto index = static_cast<std::size_t>(std::toupper(byte) - 'A');
            keys.push_back(key::extended(alt_letters[index]));
        }
        end_sequence();
    }
}

void KeyDecoder::feed_text(unsigned char byte)
{
    constexpr unsigned char string_terminator = 0x9C; // in UTF-8 behind C2h
    if (bytes_to_skip_ > 0 && continues_utf8(byte))
        --bytes_to_skip_;
    else if (byte == '\a' || byte == string_terminator)
        end_sequence();
    else
        bytes_to_skip_ = byte == 0xC2 ? 0 : utf8_length(byte) - 1;
}

void KeyDecoder::feed_control_sequence(unsigned char byte)
{
    if (bytes_.empty() && byte == '[') {
        state_ = State::linux_function;
        return;
    }
    const bool rxvt_shift = byte == '$' && !bytes_.empty() && bytes_.front() != '?';
    if ((byte >= 0x40 && byte <= 0x7E) || rxvt_shift) {
        finish_control_sequence(byte);
        return;
    }
    if (bytes_.size() < longest_sequence) // also what is no parameter: nobody can read it then
        bytes_ += static_cast<char>(byte);
}

void KeyDecoder::finish_control_sequence(unsigned char final_byte)
{
    if (final_byte == 'M' && bytes_.empty()) {
        state_ = State::skip;
        bytes_to_skip_ = 3;
        return;
    }
    int number = 1;
    int modifier_parameter = 1;
    const bool readable = read_parameters(bytes_, number, modifier_parameter);
    ScanCodes codes = none;
    Modifier modifier = modifier_of(modifier_parameter);
    switch (final_byte) {
    case '~':
        codes = numbered_key(bytes_.empty() ? 0 : number);
        break;
    case '^': // rxvt: Ctrl
    case '$': // rxvt: Shift
        codes = numbered_key(number);
        modifier = final_byte == '^' ? Modifier::control : Modifier::shift;
        break;
    case 'Z':
        codes.plain = back_tab;
        break;
    case 'u': // Esc where its byte alone would be ambiguous
        if (readable && number == esc && modifier == Modifier::none && !alt_)
            keys.push_back(key::escape);
        break;
    default:
        if (number == 1)
            codes = cursor_key(static_cast<char>(final_byte));
        break;
    }
    if (alt_)
        modifier = modifier == Modifier::none ? Modifier::alt : Modifier::other;
    if (const int code = code_of(codes, modifier); readable && code != 0)
        give(key::extended(code));
    end_sequence();
}

void KeyDecoder::finish_single_shift(unsigned char final_byte)
{
    int number = 1;
    int modifier_parameter = 1;
    const bool readable = read_parameters(bytes_, number, modifier_parameter);
    Modifier modifier = modifier_of(modifier_parameter);
    ScanCodes codes = cursor_key(static_cast<char>(final_byte));
    if (final_byte >= 'a' && final_byte <= 'd') { // rxvt: Ctrl with a cursor key
        codes = cursor_key(static_cast<char>(final_byte - 'a' + 'A'));
        modifier = Modifier::control;
    }
    if (alt_)
        modifier = modifier == Modifier::none ? Modifier::alt : Modifier::other;
    if (final_byte == 'M' && bytes_.empty() && !alt_)
        give(key::enter); // on the keypad
    else if (const int code = code_of(codes, modifier); readable && number == 1 && code != 0)
        give(key::extended(code));
    end_sequence();
}

void KeyDecoder::feed_utf8(unsigned char byte)
{
    if (!continues_utf8(byte)) { // not UTF-8 after all
        release_bytes();
        feed(byte, late_);
        return;
    }
    bytes_ += static_cast<char>(byte);
    if (bytes_.size() < utf8_length(static_cast<unsigned char>(bytes_.front())))
        return;
    std::string_view rest = bytes_;
    const char32_t character = take_character(rest);
    if (!rest.empty()) {
        release_bytes();
        return;
    }
    const bool alt = alt_;
    end_sequence();
    if (const unsigned char introducer = introducer_of(character); introducer != 0) {
        alt_ = alt;
        (void)open_sequence(introducer);
    } else if (const unsigned char code = code_page_byte_of(character); code != 0 && !alt) {
        keys.push_back(code);
    }
}

void KeyDecoder::release_bytes()
{
    const std::string bytes = bytes_;
    const bool alt = alt_;
    end_sequence();
    if (!alt)
        keys.push_back(static_cast<unsigned char>(bytes.front()));
    for (const char byte : bytes.substr(1))
        feed(static_cast<unsigned char>(byte), late_);
}
