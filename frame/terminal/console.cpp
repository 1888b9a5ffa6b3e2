#include "frame/terminal/console.h"

#include "frame/terminal/characters.h"

#include <algorithm>
#include <array>
#include <cstdarg>
#include <cstddef>
#include <cstdio>

Console console;

namespace
{

constexpr int tab_width = 8;
constexpr std::size_t usual_columns = 80; // room for them is made at once

/// Stands for itself in every encoding and is one column wide.
constexpr bool is_plain(char c)
{
    return c >= ' ' && c < 0x7F;
}

} // namespace

// ---- Printing ----

void Console::vprint(Color color, const char* format, va_list arguments)
{
    va_list again;
    va_copy(again, arguments);
    color_ = color;
    std::array<char, 8192> buffer; // enough for all but the longest texts
    const int length = std::vsnprintf(buffer.data(), buffer.size(), format, arguments);
    const auto size = static_cast<std::size_t>(std::max(length, 0));
    if (size < buffer.size()) {
        write({buffer.data(), size});
    } else {
        std::string text(size, ' ');
        std::vsnprintf(text.data(), size + 1, format, again);
        write({text.data(), size});
    }
    color_ = Color::label;
    va_end(again);
}

void Console::print(const char* format, ...)
{
    va_list arguments;
    va_start(arguments, format);
    vprint(Color::label, format, arguments);
    va_end(arguments);
}

void Console::print(Color color, const char* format, ...)
{
    va_list arguments;
    va_start(arguments, format);
    vprint(color, format, arguments);
    va_end(arguments);
}

void Console::print(const ColoredText& word)
{
    print(word.color, "%s", word.text);
}

void Console::print_at(Place place, Color color, const char* format, ...)
{
    va_list arguments;
    va_start(arguments, format);
    move_to(place);
    vprint(color, format, arguments);
    va_end(arguments);
}

void Console::print_at(Place place, const ColoredText& word)
{
    move_to(place);
    print(word);
}

void Console::write(std::string_view bytes)
{
    while (!bytes.empty()) {
        const auto end = std::find_if_not(bytes.begin(), bytes.end(), is_plain);
        const auto length = static_cast<std::size_t>(end - bytes.begin());
        put_plain(bytes.substr(0, length));
        bytes.remove_prefix(length);
        if (!bytes.empty())
            put(take_character(bytes));
        if (line_completed_ && !terminal_)
            release_final_rows(); // a long text needs no more than a row at a time
    }
    if (line_completed_ && display_depth_ == 0)
        flush();
    line_completed_ = false;
}

void Console::put_plain(std::string_view text)
{
    while (!text.empty()) {
        if (wraps() && cursor_.column > size_.columns && cursor_.column > 1)
            line_feed();
        std::size_t length = text.size();
        if (wraps()) { // in a window without columns character by character
            const int room = std::max(size_.columns - cursor_.column, 0);
            length = std::min(length, static_cast<std::size_t>(room) + 1);
        }
        if (Row* row = row_at(cursor_.row); row != nullptr)
            set_cells(*row, text.substr(0, length));
        cursor_.column += static_cast<int>(length);
        text.remove_prefix(length);
    }
}

void Console::set_cells(Row& row, std::string_view text)
{
    const auto first = static_cast<std::size_t>(std::max(cursor_.column, 1)) - 1;
    const int end = cursor_.column + static_cast<int>(text.size());
    row.wanted.reserve(usual_columns);
    if (cursor_.column >= 1 && row.wanted.size() <= first) { // behind all text: no looking
        row.wanted.resize(first + text.size());
        for (std::size_t i = 0; i < text.size(); ++i)
            row.wanted[first + i] = {static_cast<unsigned char>(text[i]), color_};
        mark_dirty(row, cursor_.column, end - 1);
        return;
    }
    for (int column = std::max(cursor_.column, 1); column < end; ++column) {
        const char character = text[static_cast<std::size_t>(column - cursor_.column)];
        set_cell(row, column, {static_cast<unsigned char>(character), color_});
    }
}

void Console::put(char32_t character)
{
    switch (character) {
    case U'\r':
        cursor_.column = 1;
        return;
    case U'\n':
        line_feed();
        return;
    case U'\t':
        cursor_.column += tab_width - (cursor_.column - 1) % tab_width;
        if (wraps())
            cursor_.column = std::min(cursor_.column, size_.columns);
        return;
    case U'\b':
        cursor_.column = std::max(cursor_.column - 1, 1);
        return;
    case U'\a':
        bell_ = true;
        return;
    default:
        break;
    }
    const char32_t shown = shown_character(character);
    const int width = character_width(shown);
    if (wraps() && cursor_.column + width - 1 > size_.columns && cursor_.column > 1)
        line_feed();
    if (Row* row = row_at(cursor_.row); row != nullptr && cursor_.column >= 1) {
        set_cell(*row, cursor_.column, {shown, color_});
        if (width == 2)
            set_cell(*row, cursor_.column + 1, {0, color_});
    }
    cursor_.column += width;
}

void Console::set_cell(Row& row, int column, Cell cell)
{
    const auto index = static_cast<std::size_t>(column) - 1;
    Cells& cells = row.wanted;
    if (cells.size() <= index) {
        if (cell.is_blank())
            return;
        cells.resize(index + 1);
    }
    if (cells[index] == cell)
        return;
    // Half a wide character cannot stay behind.
    if (cells[index].character == 0 && cell.character != 0 && index > 0) {
        cells[index - 1] = {};
        mark_dirty(row, column - 1, column - 1);
    }
    if (cells[index].character != 0 && index + 1 < cells.size() &&
        cells[index + 1].character == 0) {
        cells[index + 1] = {};
        mark_dirty(row, column + 1, column + 1);
    }
    cells[index] = cell;
    mark_dirty(row, column, column);
}

void Console::mark_dirty(Row& row, int from, int to)
{
    row.dirty_from = row.dirty_from == 0 ? from : std::min(row.dirty_from, from);
    row.dirty_to = std::max(row.dirty_to, to);
}

// ---- Finished lines ----

void print_value_line(const char* label, const char* format, ...)
{
    va_list arguments;
    va_start(arguments, format);
    console.print("%s", label);
    console.vprint(Color::value, format, arguments);
    console.print("\r\n");
    va_end(arguments);
}

void print_failure(const char* format, ...)
{
    va_list arguments;
    va_start(arguments, format);
    console.vprint(Color::bad, format, arguments);
    console.print("\r\n");
    va_end(arguments);
}

void print_warning(const char* format, ...)
{
    va_list arguments;
    va_start(arguments, format);
    console.vprint(Color::warning, format, arguments);
    console.print("\r\n");
    va_end(arguments);
}

// ---- The cursor and the rows ----

int Console::bottom_row() const
{
    return cleared_ && terminal_ ? top_ + size_.rows - 1 : last_row();
}

int Console::first_reachable_row(int bottom) const
{
    const int own = std::max(first_row_, floor_row_);
    return terminal_ ? std::max(own, bottom - size_.rows + 1) : own;
}

Console::Row* Console::row_at(int row)
{
    return folds() && row >= display_first_ ? &display_row_at(row) : screen_row_at(row);
}

Console::Row* Console::screen_row_at(int row)
{
    if (cleared_ && terminal_ && row > bottom_row())
        return nullptr;
    while (row > last_row())
        rows_.emplace_back();
    if (row < first_reachable_row(bottom_row()))
        return nullptr;
    return &rows_[static_cast<std::size_t>(row - first_row_)];
}

Console::Row& Console::display_row_at(int row)
{
    const auto index = static_cast<std::size_t>(row - display_first_);
    while (display_rows_.size() <= index)
        display_rows_.emplace_back();
    return display_rows_[index].row;
}

void Console::move_to(Place place)
{
    cursor_ = place;
    if (window_first_ > 0)
        cursor_.row = std::clamp(cursor_.row, window_first_, window_last_);
}

void Console::line_feed()
{
    line_completed_ = true;
    cursor_.column = 1;
    if (window_first_ > 0 && cursor_.row >= window_last_) {
        cursor_.row = window_last_;
        scroll_window();
        return;
    }
    ++cursor_.row;
    if (cleared_ && terminal_ && cursor_.row > bottom_row()) {
        while (last_row() < bottom_row())
            rows_.emplace_back();
        rows_.emplace_back();
        ++top_;
        cursor_.row = bottom_row();
        clear_to_end_of_line(); // a screen that was higher may have had text there
    }
    (void)row_at(cursor_.row); // makes the row
}

void Console::scroll_window()
{
    for (int row = window_first_; row <= window_last_; ++row) {
        Row* to = row_at(row);
        const Row* from = row < window_last_ ? row_at(row + 1) : nullptr;
        if (to == nullptr)
            continue;
        const int old_end = static_cast<int>(to->wanted.size());
        to->wanted = from != nullptr ? from->wanted : Cells{};
        const int new_end = static_cast<int>(to->wanted.size());
        if (std::max(old_end, new_end) > 0)
            mark_dirty(*to, 1, std::max(old_end, new_end));
    }
}

std::vector<Cell> Console::cells(int row) const
{
    if (row < first_row_ || row > last_row())
        return {};
    Cells cells = rows_[static_cast<std::size_t>(row - first_row_)].wanted;
    while (!cells.empty() && cells.back().is_blank())
        cells.pop_back();
    return cells;
}

// ---- Erasing ----

void Console::blank_to_column(int column)
{
    for (int blanks = column - cursor_.column; blanks > 0; --blanks)
        put(U' ');
}

void Console::clear_to_end_of_line()
{
    Row* row = row_at(cursor_.row);
    if (folds() && cursor_.row >= display_first_) {
        auto& parts = display_rows_[static_cast<std::size_t>(cursor_.row - display_first_)].parts;
        std::erase_if(parts, [this](const auto& part) { return part.from >= cursor_.column; });
    }
    const auto kept = static_cast<std::size_t>(std::max(cursor_.column - 1, 0));
    if (row == nullptr || row->wanted.size() <= kept)
        return;
    mark_dirty(*row, cursor_.column, static_cast<int>(row->wanted.size()));
    const bool cuts = kept > 0 && row->wanted[kept].character == 0; // a wide character
    row->wanted.resize(kept);
    if (cuts)
        set_cell(*row, cursor_.column - 1, {});
}

void Console::clear_line()
{
    cursor_.column = 1;
    clear_to_end_of_line();
}

void Console::end_line()
{
    if (cursor_.column > 1)
        write("\r\n");
}

void Console::move_below_text()
{
    int row = std::min(last_row(), bottom_row());
    while (row > first_row_ && cells(row).empty())
        --row;
    cursor_.row = row;
    line_feed();
    line_completed_ = false;
}

void Console::clear_screen()
{
    flush();
    leave_display_rows();
    cleared_ = true;
    clear_pending_ = terminal_;
    window_first_ = 0;
    const Row& last = rows_.back();
    top_ = last.wanted.empty() ? last_row() : last_row() + 1;
    floor_row_ = std::min(floor_row_, top_); // the whole screen is ours now
    cursor_ = {top_, 1};
    (void)row_at(bottom_row());
    (void)row_at(top_);
}

void Console::leave_screen()
{
    clear_window();
    move_below_text();
    flush();
    cleared_ = false;
}

void Console::set_window(int first_row)
{
    // A screen that has become too low for the window keeps its rows; nobody sees the window then.
    window_first_ = screen_place(first_row, 1).row;
    window_last_ = std::max(bottom_row(), window_first_);
    cursor_ = {window_first_, 1};
}
