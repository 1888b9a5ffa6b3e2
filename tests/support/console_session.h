/// Whatever is done with the console: after each flush a terminal shows what the model holds. Plays
/// sessions that somebody else's choices lead, and compares.
#pragma once

#include "frame/terminal/console.h"
#include "frame/text/field.h"
#include "tests/support/terminal_emulator.h"
#include "tests/support/virtual_platform.h"

#include <algorithm>
#include <functional>
#include <gtest/gtest.h>
#include <memory>
#include <string>
#include <utility>
#include <vector>

/// A terminal with lines of somebody else on it, and the console that starts below them.
class RandomSession
{
public:
    /// `choose` gives one of the whole numbers from its first argument to its second.
    explicit RandomSession(std::function<int(int, int)> choose) : choose_{std::move(choose)}
    {
        reset_virtual_platform();
        resize();
        terminal_ = std::make_unique<TerminalEmulator>(
            TerminalSize{virtual_platform.size.columns, virtual_platform.size.rows});
        origin_ = older_lines_ = number(0, virtual_platform.size.rows + 2);
        for (int line = 1; line <= older_lines_; ++line)
            terminal_->feed(older_line(line) + "\r\n");
        console.start();
    }

    /// Does something; false when the terminal then shows another screen than the model's.
    bool step()
    {
        do_something();
        if (number(0, 3) != 0)
            return true;
        flush();
        return rows_are_right() && cursor_is_right() && scrollback_is_right();
    }

    /// What was done, with the numbers that were chosen, and what was wrong then.
    [[nodiscard]] const std::string& log() const { return log_; }

private:
    static std::string older_line(int number) { return std::string{"#"} + std::to_string(number); }

    int number(int from, int to)
    {
        const int chosen = choose_(from, to);
        log_ += ' ' + std::to_string(chosen);
        return chosen;
    }

    void note(const std::string& what) { log_ += '\n' + what; }

    bool is_wrong(const std::string& what)
    {
        note(what + '\n');
        return false;
    }

    void resize() { virtual_platform.size = {.columns = number(3, 30), .rows = number(2, 9)}; }

    std::string text()
    {
        // clang-format off
        static const std::vector<std::string> pieces = {
            "a", "Volt", "0123456789", " ", "     ", "\r", "\n", "\r\n", "\t", "\b", "\a",
            "\x1B[2J", "\x9B" "5A", "\x7F", "\xF8", "\xFF\xC4", "\xC2\xB0", "\xC2\x85",
            "\xE4\xB8\xAD", "\xF0\x9F\x98\x80", "\xE4\xB8\xAD\xE6\x96\x87", "e\xCC\x81",
            "\xE2\x80\xAE", "\xED\x95\x9C",
        };
        // clang-format on
        std::string text;
        for (int count = number(1, 5); count > 0; --count)
            text += pieces[static_cast<unsigned>(number(0, static_cast<int>(pieces.size()) - 1))];
        log_ += testing::PrintToString(text);
        return text;
    }

    Place somewhere()
    {
        const int rows = virtual_platform.size.rows;
        const int bottom = cleared_ ? console.screen_place(rows, 1).row : console.last_row();
        const int row = bottom - number(-1, rows);
        return {.row = row, .column = number(1, virtual_platform.size.columns + 4)};
    }

    void do_something()
    {
        note("print 0-3, write 4, at 5-7, move 8, skip 9, clear 10-12, window 13-14, display "
             "15-16, field 18:");
        const int kind = number(0, 18);
        if (kind <= 7) {
            const std::string printed = text();
            const Place place = kind <= 4 ? console.place() : somewhere();
            const auto color = static_cast<Color>(number(0, 15));
            if (kind == 4) {
                console.set_color(color);
                console.write(printed);
            } else if (kind < 4) {
                console.print(color, "%s", printed.c_str());
            } else {
                console.print_at(place, color, "%s", printed.c_str());
            }
        } else if (kind == 8) {
            console.move_to(somewhere());
        } else if (kind == 9) {
            console.skip(number(0, 6));
        } else if (kind == 10) {
            console.clear_to_end_of_line();
        } else if (kind == 11) {
            console.clear_line();
        } else if (kind == 12 && number(0, 5) == 0) {
            console.clear_screen();
            take_output();
            cleared_ = true;
            trusted_from_ = console.screen_place(1, 1).row;
        } else if (kind == 13 && cleared_) {
            console.set_window(number(1, virtual_platform.size.rows));
        } else if (kind == 14) {
            console.clear_window();
        } else if (kind == 15) {
            if (depth_++ == 0)
                display_first_ = console.place().row;
            console.begin_display();
        } else if (kind == 16 && depth_ > 0) {
            --depth_;
            console.end_display(number(0, 4) != 0);
        } else if (kind == 17) {
            do_something_rare();
        } else if (kind == 18) {
            const int columns = number(1, 8);
            const Field field = place_field(" Field, of:", columns, number(0, 2));
            field.show(Color::value, number(-100, 1000), {.width = 4, .decimals = number(0, 3)});
        }
        take_output();
    }

    void do_something_rare()
    {
        if (number(0, 1) == 0)
            console.show_cursor(number(0, 1) != 0);
        else if (number(0, 2) == 0)
            change_window();
        else if (number(0, 2) == 0)
            stop_and_resume();
        else
            flush_to_slow_terminal();
    }

    void change_window()
    {
        flush();
        const int rows_before = virtual_platform.size.rows;
        resize();
        // Where a terminal leaves its cursor when the rows below it go is its own affair.
        if (!cleared_)
            virtual_platform.size.rows = std::max(virtual_platform.size.rows, rows_before);
        terminal_->resize({virtual_platform.size.columns, virtual_platform.size.rows});
        // What the terminal made of the lines that are not repainted is its own affair.
        if (!cleared_) {
            floor_ = std::max(floor_, console.last_row() - rows_before + 1);
            trusted_from_ = depth_ > 0 ? std::max(floor_, display_first_) : console.last_row() + 1;
        }
        happened(platform::WindowChange::resized);
    }

    /// The user stops the program, does something else and brings it back.
    void stop_and_resume()
    {
        flush();
        const int first_on_screen = console.last_row() - virtual_platform.size.rows + 1;
        if (!cleared_ && (depth_ == 0 || display_first_ < std::max(first_on_screen, trusted_from_)))
            return; // that the program goes on below is all that can be said
        terminal_->feed("\033[0m\033[?25h\033[99B\r\n$ fg\r\n");
        if (!cleared_) {
            trusted_from_ = floor_ = display_first_;
            origin_ = scrolled_out() + terminal_->cursor().row - display_first_;
        }
        happened(platform::WindowChange::resumed);
    }

    void happened(platform::WindowChange change)
    {
        undisturbed_ = false;
        virtual_platform.window_events.push_back(
            {.at_ms = 0, .change = change, .size = virtual_platform.size});
        flush();
    }

    /// What the terminal does not take has to come with a later flush.
    void flush_to_slow_terminal()
    {
        virtual_platform.output_room = static_cast<std::size_t>(number(0, 40));
        console.flush_without_waiting();
        virtual_platform.output_room = std::string::npos;
        is_behind_ = true;
    }

    void flush()
    {
        console.flush();
        is_behind_ = false;
        take_output();
    }

    void take_output()
    {
        if (is_behind_)
            return; // the terminal emulator mistakes a character that comes in two parts
        terminal_->feed(std::string_view{virtual_platform.output}.substr(taken_));
        taken_ = virtual_platform.output.size();
    }

    [[nodiscard]] int terminal_row(int row) const
    {
        return cleared_ ? row - console.screen_place(1, 1).row + 1 : origin_ + row - scrolled_out();
    }

    [[nodiscard]] int scrolled_out() const
    {
        return static_cast<int>(terminal_->scrollback().size());
    }

    /// What a terminal shows of a row of the model.
    [[nodiscard]] std::vector<EmulatedCell> expected(int row) const
    {
        const auto columns = static_cast<std::size_t>(virtual_platform.size.columns);
        std::vector<EmulatedCell> cells;
        for (const Cell& cell : console.cells(row)) {
            const int color = cell.is_blank() ? 7 : static_cast<int>(cell.color);
            // Both halves of a wide character have the colour of the left one.
            cells.push_back({.character = cell.character,
                             .color = cell.character == 0 ? cells.back().color : color});
        }
        if (cells.size() > columns) {
            if (cells[columns].character == 0)
                cells[columns - 1] = {}; // half a wide character is not shown
            cells.resize(columns);
        }
        while (!cells.empty() && cells.back() == EmulatedCell{})
            cells.pop_back();
        return cells;
    }

    bool rows_are_right()
    {
        const int last = terminal_->size().rows;
        for (int row = std::max(console.first_row(), trusted_from_); row <= console.last_row();
             ++row) {
            const int at = terminal_row(row);
            if (at < 1 || (cleared_ && at > last))
                continue;
            if (at > last ? !expected(row).empty() : terminal_->cells(at) != expected(row))
                return is_wrong("row " + std::to_string(row) + ": " + text_of(expected(row), true) +
                                "\nshown in row " + std::to_string(at) + ": " +
                                terminal_->marked_row(at));
        }
        return true;
    }

    bool cursor_is_right()
    {
        if (terminal_->cursor_visible() != console.cursor_visible())
            return is_wrong("the cursor's visibility");
        // Rows come into being when something is printed there.
        const Place cursor = console.cursor_on_screen();
        const int model_row = std::min(cursor.row, console.last_row());
        const int row = std::min(terminal_row(model_row), terminal_->size().rows);
        const int column = std::clamp(cursor.column, 1, terminal_->size().columns);
        if (!console.cursor_visible() || row < 1 || model_row < trusted_from_ ||
            model_row < console.first_row() || terminal_->cursor() == EmulatedCursor{row, column})
            return true;
        return is_wrong("the cursor should be at " + std::to_string(row) + ", " +
                        std::to_string(column));
    }

    /// Older lines are not touched; what scrolled out has the form that the model kept.
    bool scrollback_is_right()
    {
        const std::vector<std::string>& scrollback = terminal_->scrollback();
        for (int line = 1; line <= older_lines_; ++line) {
            const int at = line - scrolled_out();
            if ((at < 1 ? scrollback[static_cast<std::size_t>(line) - 1] : terminal_->row(at)) !=
                older_line(line))
                return is_wrong("older line " + std::to_string(line));
        }
        const int last = undisturbed_ && !cleared_ ? scrolled_out() - origin_ : 0;
        for (int row = console.first_row(); row <= last; ++row) {
            const std::string& kept = scrollback[static_cast<std::size_t>(origin_ + row) - 1];
            if (kept != text_of(expected(row), false))
                return is_wrong("row " + std::to_string(row) + " scrolled out as: " + kept);
        }
        return true;
    }

    std::function<int(int, int)> choose_;
    std::unique_ptr<TerminalEmulator> terminal_;
    std::size_t taken_ = 0;
    int older_lines_ = 0;
    int origin_ = 0; ///< lines above row 1 of the model, until the screen is cleared
    int depth_ = 0;
    int display_first_ = 0;
    int trusted_from_ = 1;   ///< rows above may look otherwise
    int floor_ = 1;          ///< what stands above it is not touched
    bool is_behind_ = false; ///< a part of the output may not have been sent
    bool cleared_ = false;
    bool undisturbed_ = true; ///< the terminal shows and keeps all that it got
    std::string log_;
};
