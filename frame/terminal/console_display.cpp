// How the rows of a live display become rows of the screen.

#include "frame/terminal/console.h"

#include <algorithm>
#include <cstddef>
#include <utility>

void Console::begin_display()
{
    if (display_depth_ == 0)
        flush();
    if (display_depth_++ == 0) {
        display_first_ = cursor_.row;
        for (int row = display_first_; folds() && row <= last_row(); ++row)
            display_row_at(row).wanted = cells(row);
    }
    cursor_visible_ = false;
}

void Console::end_display(bool restore_cursor)
{
    if (display_depth_ == 1)
        leave_display_rows();
    --display_depth_;
    if (restore_cursor)
        cursor_visible_ = true;
    flush();
}

void Console::keep_together(UnbrokenPart part)
{
    if (!folds() || cursor_.row < display_first_)
        return;
    mark_dirty(display_row_at(cursor_.row), part.from, part.from);
    display_rows_[static_cast<std::size_t>(cursor_.row - display_first_)].parts.push_back(part);
}

void Console::lay_out_display()
{
    if (!folds())
        return;
    int screen_row = display_first_;
    bool moved = false; // the rows below
    for (DisplayRow& line : display_rows_) {
        const bool changed = line.row.dirty_from > 0 || line.starts.empty();
        if (changed) {
            std::vector<int> starts = folded_row(line.row.wanted, line.parts, size_.columns);
            moved = moved || starts.size() != line.starts.size();
            line.starts = std::move(starts);
            line.row.dirty_from = line.row.dirty_to = 0;
        }
        if (changed || moved)
            lay_out_row(line, screen_row);
        screen_row += static_cast<int>(line.starts.size());
    }
    for (; moved && screen_row <= last_row(); ++screen_row) {
        if (Row* left_over = screen_row_at(screen_row); left_over != nullptr)
            set_row(*left_over, {});
    }
}

void Console::lay_out_row(const DisplayRow& line, int first_row)
{
    const Cells& cells = line.row.wanted;
    const auto size = static_cast<std::ptrdiff_t>(cells.size());
    for (std::size_t piece = 0; piece < line.starts.size(); ++piece) {
        Row* row = screen_row_at(first_row + static_cast<int>(piece));
        if (row == nullptr)
            continue;
        const bool is_last = piece + 1 == line.starts.size();
        const std::ptrdiff_t from = std::min<std::ptrdiff_t>(line.starts[piece] - 1, size);
        const std::ptrdiff_t to =
            is_last ? size : std::min<std::ptrdiff_t>(line.starts[piece + 1] - 1, size);
        Cells text(piece == 0 ? 0U : static_cast<std::size_t>(folded_indent(size_.columns)));
        text.insert(text.end(), cells.begin() + from, cells.begin() + to);
        set_row(*row, std::move(text));
    }
}

void Console::set_row(Row& row, Cells cells)
{
    if (row.wanted == cells)
        return;
    mark_dirty(row, 1, static_cast<int>(std::max(row.wanted.size(), cells.size())));
    row.wanted = std::move(cells);
}

void Console::leave_display_rows()
{
    lay_out_display();
    cursor_ = cursor_on_screen();
    display_rows_.clear();
}

Place Console::cursor_on_screen() const
{
    if (!folds() || cursor_.row < display_first_)
        return cursor_;
    Place place = {display_first_, cursor_.column};
    int row = display_first_;
    for (const DisplayRow& line : display_rows_) {
        if (row++ < cursor_.row) {
            place.row += std::max(static_cast<int>(line.starts.size()), 1);
            continue;
        }
        for (std::size_t piece = line.starts.size(); piece-- > 1;) {
            if (cursor_.column >= line.starts[piece]) {
                place.row += static_cast<int>(piece);
                place.column += folded_indent(size_.columns) - line.starts[piece] + 1;
                break;
            }
        }
        return place;
    }
    place.row += cursor_.row - row;
    return place;
}
