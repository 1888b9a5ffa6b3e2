/// The console: a model of the screen. Printing writes cells of the model; flush() sends to the
/// terminal only what differs from what it shows. Nobody else writes to standard output, and
/// nobody asks the terminal anything: where the cursor is, the model knows.
///
/// Places. Rows and columns count from 1. Before the screen is first cleared, rows count from the
/// row in which the program started, and whatever stands above it is never touched. After
/// clear_screen() screen_place() gives the rows of the screen itself. A Place stays where it is in
/// the text when the screen scrolls. Rows out of the terminal's reach swallow what is written.
///
/// Text. Bytes that form valid UTF-8 are shown as such, any other byte as code page 437 (byte F8h
/// is the degree sign). CR, LF, TAB, BS and BEL act; every other control character is shown as a
/// glyph. LF starts a new line at column 1, so does CR LF. Running text wraps at the right edge. A
/// row of a live display may be of any length: what does not fit goes on in the next row of the
/// screen, and is laid out again when the window changes (frame/terminal/folding.h). Only after
/// clear_screen() are long rows clipped.
///
/// When standard output is no terminal the model is the same, but what leaves it is plain text:
/// each line once, in its final form.
#pragma once

#include "frame/platform/platform.h"
#include "frame/terminal/cell.h"
#include "frame/terminal/colors.h"
#include "frame/terminal/folding.h"
#include "frame/text/printf_format.h"

#include <cstdarg>
#include <cstdint>
#include <deque>
#include <exception>
#include <limits>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

struct Place {
    int row = 0;
    int column = 0;

    /// The place that many columns further right.
    [[nodiscard]] Place right(int columns) const { return {row, column + columns}; }
    /// The same column, that many rows further up.
    [[nodiscard]] Place up(int rows) const { return {row - rows, column}; }

    bool operator==(const Place&) const = default;
};

class Console
{
public:
    /// A fresh console; asks the platform what standard output is.
    void start();

    // ---- Printing. A coloured print returns to grey. ----

    void print(const char* format, ...) PRINTF_FORMAT(2, 3);
    void print(Color color, const char* format, ...) PRINTF_FORMAT(3, 4);
    void vprint(Color color, const char* format, va_list arguments) PRINTF_FORMAT(3, 0);
    void print(const ColoredText& word);
    /// Prints a coloured text at a place; the cursor stays behind it.
    void print_at(Place place, Color color, const char* format, ...) PRINTF_FORMAT(4, 5);
    void print_at(Place place, const ColoredText& word);
    /// Prints bytes as they are, in the colour set last.
    void write(std::string_view bytes);
    void set_color(Color color) { color_ = color; }

    // ---- The cursor ----

    [[nodiscard]] Place place() const { return cursor_; }
    void move_to(Place place);
    /// Moves within the row.
    void move_to_column(int column) { cursor_.column = column; }
    /// Leaves that many columns free.
    void skip(int columns) { cursor_.column += columns; }
    void show_cursor(bool visible) { cursor_visible_ = visible; }
    [[nodiscard]] bool cursor_visible() const { return cursor_visible_; }

    // ---- Erasing ----

    /// Blanks the row from the cursor on; the cursor stays.
    void clear_to_end_of_line();
    /// Blanks from the cursor up to, not including, a column; does nothing beyond it.
    void blank_to_column(int column);
    /// Blanks the cursor's row and goes to its column 1.
    void clear_line();
    /// Starts a new line, unless the cursor stands at the beginning of one.
    void end_line();
    /// Goes to column 1 of a fresh row below everything that is printed.
    void move_below_text();
    /// Scrolls away what the terminal shows; from here on screen_place() counts from its top.
    void clear_screen();

    // ---- The screen after clear_screen() ----

    [[nodiscard]] platform::WindowSize size() const { return size_; }
    [[nodiscard]] Place screen_place(int row, int column) const { return {top_ + row - 1, column}; }
    /// Restricts printing to the screen's rows from `first_row` to the bottom row; that area then
    /// scrolls by itself. The cursor goes to its first row. A screen that does not reach down to it
    /// swallows what is printed there.
    void set_window(int first_row);
    /// Lifts the restriction; the cursor stays where it is.
    void clear_window() { window_first_ = 0; }
    /// Ends that: what is on the screen becomes rows like those from before clear_screen(), and the
    /// cursor goes below it.
    void leave_screen();

    // ---- Live displays ----

    /// From begin to end of a live display the cursor is hidden, rows may be of any length, and
    /// (when standard output is no terminal) nothing counts as final. Displays nest. Places that
    /// were noted in a display are of no use after its end.
    void begin_display();
    /// `restore_cursor` false leaves the cursor hidden.
    void end_display(bool restore_cursor = true);
    /// A part of the cursor's row that is not divided where the row goes on in the next one.
    void keep_together(UnbrokenPart part);
    /// In a pipe, tells at once what stands in the first row of a display that has just begun.
    void release_title();

    // ---- Sending ----

    /// Makes the terminal show what the model holds, in one write. Does nothing when it does.
    void flush();
    /// As flush(), but leaves out what a slow terminal does not take at once: a later flush sends
    /// the rest of it first. For displays whose cycles must not wait for the terminal.
    void flush_without_waiting();
    /// As flush(), but no more than every 10 ms: for a progress text that is rewritten in place.
    void flush_when_due();
    /// As flush(), also for a line without its end: somebody is about to wait for an answer.
    void flush_for_wait();
    /// The last flush: grey, cursor visible.
    void finish();

    // ---- What is on the screen ----

    [[nodiscard]] int first_row() const { return first_row_; }
    [[nodiscard]] int last_row() const { return first_row_ + static_cast<int>(rows_.size()) - 1; }
    /// The cells of a row of the screen without trailing blanks; those of a display since the last
    /// flush.
    [[nodiscard]] std::vector<Cell> cells(int row) const;
    /// Where the cursor is on the screen.
    [[nodiscard]] Place cursor_on_screen() const;

private:
    using Cells = std::vector<Cell>;

    struct Row {
        Cells wanted;
        Cells shown;
        int dirty_from = 0; ///< columns that may differ, 0 = none
        int dirty_to = 0;
        std::string released; ///< what plain output has of this row already
    };

    /// A row of the display, whatever rows of the screen it takes.
    struct DisplayRow {
        Row row;
        std::vector<UnbrokenPart> parts;
        std::vector<int> starts; ///< of its pieces; empty = not laid out
    };

    [[nodiscard]] Row* row_at(int row);
    [[nodiscard]] Row* screen_row_at(int row);
    /// True while the rows of a display are folded to the width of the window.
    [[nodiscard]] bool folds() const { return terminal_ && display_depth_ > 0 && !cleared_; }
    [[nodiscard]] Row& display_row_at(int row);
    /// Divides the rows of the display that have changed among those of the screen.
    void lay_out_display();
    void lay_out_row(const DisplayRow& folded, int first_row);
    void set_row(Row& row, Cells cells);
    /// The rows of the display become ordinary rows of the screen.
    void leave_display_rows();
    [[nodiscard]] int bottom_row() const; ///< last row of the screen or of the text so far
    [[nodiscard]] int first_reachable_row(int bottom) const;
    [[nodiscard]] bool wraps() const
    {
        return terminal_ && (display_depth_ == 0 || window_first_ > 0);
    }
    void put(char32_t character);
    /// Several characters that stand for themselves.
    void put_plain(std::string_view text);
    /// Sets the cells of a row from the cursor on.
    void set_cells(Row& row, std::string_view text);
    void set_cell(Row& row, int column, Cell cell);
    void line_feed();
    void scroll_window();
    void mark_dirty(Row& row, int from, int to);

    void flush_plain(bool for_wait);
    void release_final_rows();
    void release(Row& row);
    [[nodiscard]] std::string plain_text(const Row& row) const;
    void compose();
    /// False when the window is as it was.
    bool take_window_change();
    bool was_sent(std::size_t count);
    void repaint_from(int row, bool erase);
    void send_row(int row);
    void send_cells(const Row& sent, int row, int from, int to);
    /// Moves to a cell and sends it; writing those between rather than moving over a few of them,
    /// though none before column `from`. The column after it.
    int send_first_cell(const Row& sent, Place place, int from);
    /// Sends ASCII in one colour from where the terminal's cursor is; returns the column behind.
    int send_run(const Row& sent, int to);
    void send_cell(const Cell& cell);
    void move_terminal_to(int row, int column);
    void set_terminal_color(Color color);
    void forget_old_rows();

    /// Rows that a live display may still rewrite when standard output is no terminal, and rows
    /// that are kept at least.
    static constexpr int kept_rows = 200;

    // The model.
    std::deque<Row> rows_;
    int first_row_ = 1; ///< number of rows_.front()
    int floor_row_ = 1; ///< what stands above it on the terminal is not ours
    Place cursor_{1, 1};
    Color color_ = Color::label;
    bool cursor_visible_ = true;
    bool cleared_ = false; ///< rows are the screen's own, from top_ on
    int top_ = 1;
    int window_first_ = 0; ///< first row of the text window, 0 = none
    int window_last_ = 0;
    int display_depth_ = 0;
    int display_first_ = 0; ///< row in which the outermost display began
    std::deque<DisplayRow> display_rows_;
    bool bell_ = false;
    bool line_completed_ = false;
    std::int64_t due_flush_ms_ = 0; ///< of flush_when_due()

    // The terminal.
    bool terminal_ = false;
    bool colored_ = false;
    platform::WindowSize size_{80, 25};
    int sent_row_ = 1; ///< where the terminal's cursor is
    int sent_column_ = 1;
    int sent_bottom_ = 1; ///< the last row that the terminal has reached
    Color sent_color_ = Color::label;
    bool sent_cursor_visible_ = true;
    bool clear_pending_ = false;
    int rows_to_leave_ = 0; ///< behind the output: see platform::write_output
    std::string out_;
    static constexpr int none_unsent = std::numeric_limits<int>::max();
    int unsent_from_ = none_unsent; ///< the output holds rows from here on
};

/// The one console.
extern Console console;

/// Prints a finished line: the label, the value in bright white, the line's end.
void print_value_line(const char* label, const char* format, ...) PRINTF_FORMAT(2, 3);

/// Prints a finished line in light magenta.
void print_failure(const char* format, ...) PRINTF_FORMAT(1, 2);
/// Prints a finished line in yellow.
void print_warning(const char* format, ...) PRINTF_FORMAT(1, 2);

/// A live display for as long as it exists: see Console::begin_display.
class DisplayScope
{
public:
    DisplayScope() { console.begin_display(); }
    ~DisplayScope() { end_quietly(true); }
    DisplayScope(const DisplayScope&) = delete;
    DisplayScope& operator=(const DisplayScope&) = delete;

    void end(bool restore_cursor = true)
    {
        if (std::exchange(active_, false))
            console.end_display(restore_cursor);
    }

    /// The same for destructors: when memory has run out, the display stays as it is.
    void end_quietly(bool restore_cursor) noexcept
    {
        try {
            end(restore_cursor);
        } catch (const std::exception&) {
            console.show_cursor(restore_cursor);
        }
    }

private:
    bool active_ = true;
};
