#include "frame/terminal/key_decoder.h"

#include "frame/terminal/characters.h"
#include "frame/terminal/scan_codes.h"

#include <array>
#include <cctype>
#include <string_view>

namespace
{

constexpr unsigned char esc = 27;
constexpr std::size_t longest_sequence = 32;

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

/// The modifier of a sequence before which an ESC of its own may stand for Alt.
Modifier with_alt(Modifier modifier, bool alt)
{
    if (!alt)
        return modifier;
    return modifier == Modifier::none ? Modifier::alt : Modifier::other;
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
    if (byte == esc && state_ != State::escape && state_ != State::utf8)
        end_sequence(); // what stood open will never be finished
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
        feed_single_shift(byte);
        break;
    case State::linux_function:
        feed_linux_function(byte);
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
        keys.push_back(key::extended(scan_code::control_at));
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
            keys.push_back(key::extended(alt_letter(static_cast<char>(byte))));
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
    ScanCodes codes;
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
        codes.plain = scan_code::back_tab;
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
    if (const int code = codes.with(with_alt(modifier, alt_)); readable && code != 0)
        give(key::extended(code));
    end_sequence();
}

void KeyDecoder::feed_linux_function(unsigned char byte)
{
    if (byte >= 'A' && byte <= 'E')
        give(key::extended(function_key(byte - 'A' + 1).plain));
    end_sequence();
}

void KeyDecoder::feed_single_shift(unsigned char byte)
{
    if ((byte >= '0' && byte <= '9') || byte == ';')
        bytes_ += static_cast<char>(byte);
    else
        finish_single_shift(byte);
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
    if (final_byte == 'M' && bytes_.empty() && !alt_)
        give(key::enter); // on the keypad
    else if (const int code = codes.with(with_alt(modifier, alt_));
             readable && number == 1 && code != 0)
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
    // cppcheck-suppress containerOutOfBounds ; there is at least the byte just added
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
