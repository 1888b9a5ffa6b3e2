// How the console's model reaches a file or a pipe.

#include "frame/terminal/characters.h"
#include "frame/terminal/color_sequences.h"
#include "frame/terminal/console.h"

#include <cstddef>
#include <span>
#include <utility>

std::string Console::plain_text(const Row& row) const
{
    std::string text;
    Color color = Color::label;
    std::size_t end = row.wanted.size();
    while (end > 0 && row.wanted[end - 1].is_blank())
        --end;
    text.reserve(end + 1);
    for (const Cell& cell : std::span{row.wanted}.first(end)) {
        if (cell.character == 0)
            continue;
        if (colored_ && !cell.is_blank() && cell.color != color) {
            append_color_change(text, color, cell.color);
            color = cell.color;
        }
        if (cell.character < 0x80)
            text += static_cast<char>(cell.character);
        else
            append_utf8(text, cell.character);
    }
    if (color != Color::label)
        append_color_change(text, color, Color::label);
    return text;
}

/// Adds to the output what it does not have of a row yet.
void Console::release(Row& row)
{
    std::string text = plain_text(row);
    // A prompt went out before its line was finished; what follows it is only appended.
    if (text.starts_with(row.released))
        out_ += std::string_view{text}.substr(row.released.size());
    else
        out_ += '\n' + text;
    row.released = std::move(text);
}

/// Moves the rows that nobody can change any more to the output.
void Console::release_final_rows()
{
    const int open_row = display_depth_ > 0 ? last_row() - kept_rows : cursor_.row;
    while (first_row_ < open_row) {
        release(rows_.front());
        out_ += '\n';
        rows_.pop_front();
        ++first_row_;
        if (rows_.empty())
            rows_.emplace_back();
    }
}

void Console::flush_plain(bool for_wait)
{
    release_final_rows();
    if (for_wait && display_depth_ == 0 && cursor_.row == first_row_)
        release(rows_.front());
    if (!out_.empty())
        (void)was_sent(platform::write_output(out_, 0));
}

void Console::release_title()
{
    if (terminal_ || cursor_.row != first_row_)
        return;
    release(rows_.front());
    (void)was_sent(platform::write_output(out_, 0));
}
