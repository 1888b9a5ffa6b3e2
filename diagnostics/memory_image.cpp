#include "diagnostics/memory_image.h"

#include "frame/device_call.h"
#include "frame/platform/platform.h"
#include "frame/program.h"
#include "frame/terminal/console.h"
#include "frame/terminal/keys.h"
#include "frame/terminal/questions.h"
#include "frame/text/format.h"

#include <algorithm>
#include <array>
#include <string_view>

namespace
{

constexpr std::uint32_t memory_size = 0x40000;

// ---- The file ----

constexpr std::size_t line_length = 3; // two digits and the line's end
using Line = std::array<char, line_length>;

constexpr std::array<Line, 256> line_of = [] {
    constexpr std::string_view digits = "0123456789ABCDEF";
    std::array<Line, 256> table = {};
    for (std::size_t value = 0; value != table.size(); ++value)
        table[value] = {digits[value >> 4], digits[value & 0xF], '\n'};
    return table;
}();

/// What a character is worth as a digit; others have the high bits set.
constexpr std::array<std::uint8_t, 256> digit_values = [] {
    std::array<std::uint8_t, 256> table = {};
    table.fill(0xFF);
    for (std::uint8_t value = 0; value < 10; ++value)
        table[std::size_t{'0'} + value] = value;
    for (std::uint8_t value = 10; value < 16; ++value)
        table[std::size_t{'A'} + value - 10] = table[std::size_t{'a'} + value - 10] = value;
    return table;
}();

constexpr std::uint8_t no_digit = 0xF0;

std::uint8_t digit_value(char c)
{
    return digit_values[static_cast<unsigned char>(c)];
}

/// Takes blanks and line ends; false when the file ends behind them.
bool skip_blanks(InputFile& file)
{
    constexpr std::string_view blanks = " \t\n\v\f\r";
    for (;;) {
        const std::string_view text = file.ahead(1);
        if (text.empty())
            return false;
        if (blanks.find(text.front()) == std::string_view::npos)
            return true;
        file.skip(1);
    }
}

/// A value that is not written as this program does it.
bool read_other_value(InputFile& file, std::uint8_t& value)
{
    if (!skip_blanks(file))
        return false;
    const std::string_view text = file.ahead(2);
    const std::uint8_t first = digit_value(text[0]);
    if ((first & no_digit) != 0)
        return false;
    const std::uint8_t second = text.size() > 1 ? digit_value(text[1]) : no_digit;
    const bool has_second = (second & no_digit) == 0;
    value = has_second ? static_cast<std::uint8_t>(first << 4 | second) : first;
    file.skip(has_second ? 2 : 1);
    return true;
}

bool read_value(InputFile& file, std::uint8_t& value)
{
    const std::string_view text = file.ahead(line_length);
    if (text.size() >= line_length && text[2] == '\n') {
        const std::uint8_t high = digit_value(text[0]);
        const std::uint8_t low = digit_value(text[1]);
        if (((high | low) & no_digit) == 0) {
            value = static_cast<std::uint8_t>(high << 4 | low);
            file.skip(line_length);
            return true;
        }
    }
    return read_other_value(file, value);
}

// ---- The walk through the memory ----

/// What the walk is about, for the texts.
struct Walk {
    const char* whole; ///< "Saving memory data"
    const char* block; ///< "Getting memory data"
    const char* file_name;
    void (*print_file_error)(const char* file_name);
};

/// How the move of one block ended.
struct Moved {
    Failure failed;
    bool file_failed = false;
};

/// Moves all blocks: `move` gets their addresses. False when it came to no good end, which has been
/// told.
template <class Move>
bool walk_memory(const Walk& walk, Move move)
{
    DisplayScope scope;
    hide_typed_keys(); // they would be echoed into the line that is rewritten
    // The last block reaches beyond the memory's end. It is part of the file format.
    for (std::uint32_t address = 0; address < memory_size; address += memory_block_size) {
        console.clear_line();
        if (address > 0 && platform::stop_signal() != 0) {
            console.print("%s stopped at address: %05Xh, ", walk.whole, address);
            print_interrupted();
            return false;
        }
        console.print("%s, address: %05Xh", walk.block, address);
        console.move_to_column(1);
        console.flush_when_due();
        const Moved moved = move(address);
        if (!moved.failed && !moved.file_failed)
            continue;
        console.print("\r\n");
        scope.end();
        if (moved.failed)
            report_error(moved.failed);
        else
            walk.print_file_error(walk.file_name);
        return false;
    }
    console.clear_line();
    return true;
}

void print_heading(const Walk& walk)
{
    if (!program.quiet)
        console.print("%s (size=%05Xh):\r\n", walk.whole, memory_size);
}

void print_success(const char* what, const char* file_name)
{
    if (!program.quiet)
        console.print("Memory data %s file '%s'\r\n", what, printable(file_name).c_str());
}

/// Any other answer than yes is told on the question's line.
bool is_confirmed(const char* question)
{
    console.print("%s [y/n]: ", question);
    const YesNo answer = read_confirmation();
    console.print(answer == YesNo::no ? " - cancelled\r\n" : "\r\n");
    return answer == YesNo::yes;
}

} // namespace

bool write_block(OutputFile& file, const MemoryBlock& block)
{
    std::array<char, memory_block_size * line_length> text;
    char* end = text.data();
    for (const std::uint8_t value : block)
        end = std::copy(line_of[value].begin(), line_of[value].end(), end);
    return file.write({text.data(), text.size()});
}

bool read_block(InputFile& file, MemoryBlock& block)
{
    for (std::uint8_t& value : block) {
        if (!read_value(file, value))
            return false;
    }
    return true;
}

void back_memory_up(const Given& given)
{
    const Walk walk = {.whole = "Saving memory data",
                       .block = "Getting memory data",
                       .file_name = given.text,
                       .print_file_error = print_write_error};
    print_heading(walk);
    OutputFile file;
    if (!file.replace(given.text)) {
        print_open_error(given.text);
        return;
    }
    MemoryBlock block;
    const bool saved = walk_memory(walk, [&](std::uint32_t address) {
        Failure failed = attempt(LIB(GetMemoryData), address, memory_block_size, &block);
        return Moved{.failed = failed, .file_failed = !failed && !write_block(file, block)};
    });
    if (!saved)
        return;
    if (!file.complete())
        print_close_error(given.text);
    // Kept: said after a failed close, too, although the end of the file may be missing then.
    print_success("saved to", given.text);
}

void restore_memory(const Given& given)
{
    // A memory that is not updated at the end is neither the old one nor the new one.
    constexpr std::array needed = {LIB(SetMemoryData).row, LIB(UpdateMemoryData).row};
    if (!succeeded(first_missing(needed)))
        return;
    if (!is_confirmed("Restore memory data?") ||
        !is_confirmed("All memory data will be overwritten, proceed?"))
        return;
    const Walk walk = {.whole = "Loading memory data",
                       .block = "Setting memory data",
                       .file_name = given.text,
                       .print_file_error = print_read_error};
    print_heading(walk);
    InputFile file;
    if (!file.open(given.text)) {
        print_open_error(given.text);
        return;
    }
    MemoryBlock block;
    const bool loaded = walk_memory(walk, [&](std::uint32_t address) {
        if (!read_block(file, block))
            return Moved{.file_failed = true};
        const std::uint8_t* const data = block.data();
        return Moved{.failed = attempt(LIB(SetMemoryData), address, memory_block_size, data)};
    });
    if (!loaded)
        return;
    if (skip_blanks(file))
        print_warning("Warning: Data file '%s' too long", printable(given.text).c_str());
    if (!file.close())
        print_close_error(given.text);
    if (call(LIB(UpdateMemoryData)))
        print_success("loaded from", given.text);
}
