// How the console's model reaches the terminal.

#include "frame/terminal/characters.h"
#include "frame/terminal/color_sequences.h"
#include "frame/terminal/console.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstring>

namespace
{

/// Columns that look right already: no more of them are written over on the way to the next ones.
constexpr int worth_moving = 4;

void append_movement(std::string& out, int count, char direction)
{
    out += "\033[";
    if (count > 1)
        out += std::to_string(count);
    out += direction;
}

bool is_set(const char* variable)
{
    const char* value = platform::environment(variable);
    return value != nullptr && *value != '\0';
}

Cell cell_at(const std::vector<Cell>& cells, int column)
{
    const auto index = static_cast<std::size_t>(column) - 1;
    return index < cells.size() ? cells[index] : Cell{};
}

bool look_alike(const Cell& a, const Cell& b)
{
    return a == b || (a.is_blank() && b.is_blank());
}

/// An ASCII character: one byte, one column.
bool is_narrow(const Cell& cell)
{
    return cell.character != 0 && cell.character < 0x80;
}

/// Column of the last cell up to `limit` that is not blank, 0 when there is none.
int end_of_text(const std::vector<Cell>& cells, int limit)
{
    int column = std::min(static_cast<int>(cells.size()), limit);
    while (column > 0 && cell_at(cells, column).is_blank())
        --column;
    return column;
}

} // namespace

void Console::start()
{
    *this = Console{};
    terminal_ = platform::output_is_terminal();
    const char* force = platform::environment("CLICOLOR_FORCE");
    const bool forced = is_set("CLICOLOR_FORCE") && std::strcmp(force, "0") != 0;
    colored_ = !is_set("NO_COLOR") && (terminal_ || forced);
    if (terminal_)
        size_ = platform::window_size();
    else
        size_ = {.columns = 0, .rows = 0};
    rows_.emplace_back();
}

void Console::flush()
{
    if (!terminal_) {
        flush_plain(false);
        return;
    }
    do {
        compose();
        (void)was_sent(platform::write_output(out_, rows_to_leave_));
    } while (!out_.empty() && take_window_change());
}

void Console::flush_without_waiting()
{
    if (!terminal_) {
        flush_plain(false);
        return;
    }
    take_window_change();
    const auto send = [this] {
        return was_sent(platform::write_some_output(out_, rows_to_leave_));
    };
    if (send()) { // else what is shown by now is composed when the last picture is through
        compose();
        (void)send();
    }
}

/// Drops what the terminal has taken; true when it has everything.
bool Console::was_sent(std::size_t count)
{
    out_.erase(0, count);
    if (out_.empty())
        unsent_from_ = none_unsent;
    return out_.empty();
}

/// Adds to the output what makes the terminal show the model.
void Console::compose()
{
    take_window_change();
    lay_out_display();
    if (sent_cursor_visible_ && !cursor_visible_) {
        out_ += "\033[?25l";
        sent_cursor_visible_ = false;
    }
    if (clear_pending_) {
        clear_pending_ = false;
        move_terminal_to(sent_bottom_, 1);
        set_terminal_color(Color::label);
        out_ += "\033[" + std::to_string(size_.rows) + ";1H";
        out_.append(static_cast<std::size_t>(size_.rows), '\n');
        out_ += "\033[H";
        sent_row_ = top_;
        sent_column_ = 1;
        sent_bottom_ = bottom_row();
    }
    for (int row = first_row_; row <= std::min(last_row(), bottom_row()); ++row) {
        if (rows_[static_cast<std::size_t>(row - first_row_)].dirty_from == 0)
            continue;
        unsent_from_ = std::min(unsent_from_, row);
        send_row(row);
    }
    if (cleared_ && sent_bottom_ < bottom_row()) // scrolls, also for rows that stay empty
        move_terminal_to(bottom_row(), 1);
    const Place cursor = cursor_on_screen();
    const Place target = {std::min(cursor.row, bottom_row()),
                          std::clamp(cursor.column, 1, size_.columns)};
    const bool reachable = target.row >= first_reachable_row(sent_bottom_);
    if ((cursor_visible_ && reachable) || target.row > sent_bottom_)
        move_terminal_to(target.row, target.column);
    if (cursor_visible_ && !sent_cursor_visible_) {
        out_ += "\033[?25h";
        sent_cursor_visible_ = true;
    }
    if (bell_)
        out_ += '\a';
    bell_ = false;
    const int last = std::min(last_row(), bottom_row());
    rows_to_leave_ = display_depth_ > 0 ? last - sent_row_ + 1 : 0;
    forget_old_rows();
}

void Console::flush_when_due()
{
    constexpr std::int64_t interval_ms = 10;
    const std::int64_t now_ms = platform::tick_ms();
    if (now_ms < due_flush_ms_)
        return;
    due_flush_ms_ = now_ms + interval_ms;
    flush_without_waiting();
}

void Console::flush_for_wait()
{
    if (terminal_)
        flush();
    else
        flush_plain(true);
}

void Console::finish()
{
    color_ = Color::label;
    cursor_visible_ = true;
    leave_display_rows();
    display_depth_ = 0;
    if (terminal_) {
        set_terminal_color(Color::label);
        flush();
        return;
    }
    if (!cells(last_row()).empty())
        cursor_.row = last_row() + 1;
    flush_plain(false);
}

bool Console::take_window_change()
{
    const platform::WindowChange change = platform::take_window_change();
    if (change == platform::WindowChange::none)
        return false;
    const bool resumed = change == platform::WindowChange::resumed;
    if (resumed) {    // the shell found the terminal in its neutral state, and left it so
        out_.clear(); // the end of a picture that is not there any more
        sent_color_ = Color::label;
        sent_cursor_visible_ = true;
    }
    const int reached_before = first_reachable_row(sent_bottom_);
    size_ = platform::window_size();
    if (cleared_) {
        if (clear_pending_)
            return true;
        set_terminal_color(Color::label);
        out_ += "\033[H\033[2J";
        sent_row_ = top_;
        sent_column_ = 1;
        sent_bottom_ = bottom_row();
        (void)row_at(bottom_row());
        repaint_from(top_, false);
        return true;
    }
    // A higher window need not show again what had scrolled away.
    floor_row_ = std::max(reached_before, first_reachable_row(sent_bottom_));
    for (DisplayRow& line : display_rows_)
        line.starts.clear();
    lay_out_display();
    int row = display_depth_ > 0 ? display_first_ : cursor_.row;
    if (display_depth_ == 0 && cursor_.column == 1)
        --row; // the last line is most likely the question that waits for its answer
    row = std::max(row, first_reachable_row(bottom_row()));
    if (resumed) { // somebody else's text stands between us and our rows: show them again below it
        row = std::max(std::min(row, unsent_from_), first_row_);
        out_ += '\r';
        sent_row_ = sent_bottom_ = floor_row_ = row;
        sent_column_ = 1;
        repaint_from(row, false);
        return true;
    }
    sent_bottom_ = sent_row_; // a lower window may have lost the empty rows below the cursor
    if (display_depth_ > 0)
        repaint_from(std::min(row, sent_bottom_), true);
    return true;
}

void Console::repaint_from(int row, bool erase)
{
    if (erase) {
        move_terminal_to(row, 1);
        set_terminal_color(Color::label);
        out_ += "\033[J";
    }
    for (; row <= last_row(); ++row) {
        Row& repainted = rows_[static_cast<std::size_t>(row - first_row_)];
        repainted.shown.clear();
        if (!repainted.wanted.empty())
            mark_dirty(repainted, 1, static_cast<int>(repainted.wanted.size()));
    }
}

void Console::send_row(int row)
{
    Row& sent = rows_[static_cast<std::size_t>(row - first_row_)];
    const bool reachable = row >= first_reachable_row(sent_bottom_);
    int from = sent.dirty_from;
    int to = std::min(sent.dirty_to, size_.columns);
    const auto differs = [&sent](int column) {
        return !look_alike(cell_at(sent.wanted, column), cell_at(sent.shown, column));
    };
    while (from <= to && !differs(from))
        ++from;
    while (from <= to && !differs(to))
        --to;
    if (reachable && from <= to) {
        constexpr int worth_erasing = 4; // columns: below that, blanks are as short
        const int end = end_of_text(sent.wanted, size_.columns);
        if (to - std::max(end, from - 1) >= worth_erasing &&
            to == end_of_text(sent.shown, size_.columns)) {
            send_cells(sent, row, from, end);
            move_terminal_to(row, std::max(end + 1, from));
            out_ += "\033[K";
        } else {
            send_cells(sent, row, from, to);
        }
    }
    // What lies beyond the edge is kept as not shown, for a wider window.
    const int clip = std::min(sent.dirty_to, size_.columns);
    if (static_cast<int>(sent.shown.size()) < clip)
        sent.shown.resize(static_cast<std::size_t>(clip));
    const auto end = static_cast<std::size_t>(clip);
    auto index = static_cast<std::size_t>(sent.dirty_from) - 1;
    for (const std::size_t wanted_end = std::min(end, sent.wanted.size()); index < wanted_end;
         ++index)
        sent.shown[index] = sent.wanted[index];
    for (; index < end; ++index)
        sent.shown[index] = {};
    sent.dirty_from = sent.dirty_to = 0;
}

void Console::send_cells(const Row& sent, int row, int from, int to)
{
    int column = from;
    while (column <= to) {
        const Cell cell = cell_at(sent.wanted, column);
        if (look_alike(cell, cell_at(sent.shown, column))) {
            ++column;
            continue;
        }
        const bool follows = row == sent_row_ && column == sent_column_;
        column = follows && column < size_.columns && is_narrow(cell)
                     ? send_run(sent, std::min(to, size_.columns - 1))
                     : send_first_cell(sent, {row, column}, from);
    }
}

int Console::send_first_cell(const Row& sent, Place place, int from)
{
    int column = place.column;
    if (cell_at(sent.wanted, column).character == 0 && column > 1)
        --column; // a wide character is written whole
    const bool near = place.row == sent_row_ && column > sent_column_ &&
                      column - sent_column_ <= worth_moving && sent_column_ >= from;
    for (int gap = near ? sent_column_ : column; gap < column; ++gap)
        send_cell(cell_at(sent.wanted, gap));
    move_terminal_to(place.row, column);
    const Cell first = cell_at(sent.wanted, column);
    const bool cut = column == size_.columns && character_width(first.character) == 2;
    send_cell(cut ? Cell{} : first);
    return std::max(column + 1, std::min(sent_column_, size_.columns + 1));
}

int Console::send_run(const Row& sent, int to)
{
    const int from = sent_column_;
    if (const Cell first = cell_at(sent.wanted, from); !first.is_blank())
        set_terminal_color(first.color);
    std::array<char, 256> text;
    std::size_t looked_at = 0;
    std::size_t length = 0; // up to the last one that is not shown yet
    for (; looked_at < text.size() && looked_at - length <= worth_moving; ++looked_at) {
        const int column = from + static_cast<int>(looked_at);
        const Cell cell = cell_at(sent.wanted, column);
        if (column > to || !is_narrow(cell) || (!cell.is_blank() && cell.color != sent_color_))
            break;
        text[looked_at] = static_cast<char>(cell.character);
        if (!look_alike(cell, cell_at(sent.shown, column)))
            length = looked_at + 1;
    }
    out_.append(text.data(), length);
    sent_column_ += static_cast<int>(length);
    return sent_column_;
}

void Console::send_cell(const Cell& cell)
{
    if (cell.character == 0)
        return;
    if (!cell.is_blank())
        set_terminal_color(cell.color);
    if (is_narrow(cell)) {
        out_ += static_cast<char>(cell.character);
        ++sent_column_;
        return;
    }
    append_utf8(out_, cell.character);
    sent_column_ += character_width(cell.character);
}

void Console::move_terminal_to(int row, int column)
{
    // In the last column a terminal may or may not have wrapped already.
    if (sent_column_ > size_.columns && (row != sent_row_ || column != sent_column_)) {
        out_ += '\r';
        sent_column_ = 1;
    }
    if (row < sent_row_) {
        append_movement(out_, sent_row_ - row, 'A');
        sent_row_ = row;
    }
    if (const int down = std::min(row, sent_bottom_) - sent_row_; down > 2) {
        append_movement(out_, down, 'B');
        sent_row_ += down;
    }
    for (; sent_row_ < row; ++sent_row_) {
        out_ += "\r\n";
        sent_column_ = 1;
    }
    sent_bottom_ = std::max(sent_bottom_, sent_row_);
    const int right = column - sent_column_;
    if (column == 1 && right != 0)
        out_ += '\r';
    else if (right > 0)
        append_movement(out_, right, 'C');
    else if (right < 0 && right >= -3)
        out_.append(static_cast<std::size_t>(-right), '\b');
    else if (right < 0)
        append_movement(out_, column, 'G');
    sent_column_ = column;
}

void Console::set_terminal_color(Color color)
{
    if (colored_ && color != sent_color_)
        append_color_change(out_, sent_color_, color);
    sent_color_ = color;
}

void Console::forget_old_rows()
{
    const int keep_from = bottom_row() - std::max(size_.rows, kept_rows) + 1;
    while (first_row_ < keep_from && rows_.size() > 1) {
        rows_.pop_front();
        ++first_row_;
    }
}
