/// Whatever is done with the console: after each flush a terminal shows what the model holds. Plays
/// sessions that somebody else's choices lead, and compares.
#pragma once

#include <algorithm>
#include <functional>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "frame/characters.h"
#include "frame/console.h"
#include "tests/support/terminal_emulator.h"
#include "tests/support/virtual_platform.h"

inline std::string numbered_line(int number)
{
    return std::string{"#"} + std::to_string(number);
}

/// A terminal with lines of somebody else on it, and the console that starts below them.
class RandomSession
{
public:
    /// `choose` gives one of the whole numbers from its first argument to its second.
    explicit RandomSession(std::function<int(int, int)> choose) : number_{std::move(choose)}
    {
        reset_virtual_platform();
        resize();
        terminal_size_ = virtual_platform.size;
        terminal_ = std::make_unique<TerminalEmulator>(emulated(terminal_size_));
        const int lines = number(0, terminal_size_.rows + 2);
        for (int line = 1; line <= lines; ++line)
            terminal_->feed(numbered_line(line) + "\r\n");
        older_lines_ = origin_ = lines;
        console.start();
    }

    /// Does something; false when the terminal then shows another screen than the model's.
    bool step()
    {
        do_something();
        if (number(0, 3) != 0)
            return true;
        flush();
        return is_right();
    }

    [[nodiscard]] const std::string& log() const { return log_; }

private:
    int number(int from, int to) { return number_(from, to); }

    static TerminalSize emulated(platform::WindowSize size)
    {
        return {.columns = size.columns, .rows = size.rows};
    }

    void note(const std::string& what) { log_ += what + '\n'; }

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
            text +=
                pieces[static_cast<std::size_t>(number(0, static_cast<int>(pieces.size()) - 1))];
        return text;
    }

    Place somewhere()
    {
        const int rows = virtual_platform.size.rows;
        const int bottom = cleared_ ? console.screen_place(rows, 1).row : console.last_row();
        return {.row = bottom - number(-1, rows),
                .column = number(1, virtual_platform.size.columns + 4)};
    }

    void do_something()
    {
        const auto shown = [](Place place) {
            return std::to_string(place.row) + ", " + std::to_string(place.column);
        };
        const auto color = [this] { return static_cast<Color>(number(0, 15)); };
        switch (number(0, 17)) {
        case 0:
        case 1:
        case 2:
        case 3: {
            const std::string printed = text();
            const Color its_color = color();
            note("print " + testing::PrintToString(printed));
            console.print(its_color, "%s", printed.c_str());
            break;
        }
        case 4: {
            const std::string printed = text();
            console.set_color(color());
            note("write " + testing::PrintToString(printed));
            console.write(printed);
            break;
        }
        case 5:
        case 6:
        case 7: {
            const std::string printed = text();
            const Place place = somewhere();
            note("print at " + shown(place) + ": " + testing::PrintToString(printed));
            console.print_at(place, color(), "%s", printed.c_str());
            break;
        }
        case 8: {
            const Place place = somewhere();
            note("move to " + shown(place));
            console.move_to(place);
            break;
        }
        case 9:
            note("skip");
            console.skip(number(0, 6));
            break;
        case 10:
            note("clear to end of line");
            console.clear_to_end_of_line();
            break;
        case 11:
            note("clear line");
            console.clear_line();
            break;
        case 12:
            if (number(0, 5) == 0) {
                note("clear screen");
                console.clear_screen();
                take_output();
                cleared_ = true;
                trusted_from_ = console.screen_place(1, 1).row;
            }
            break;
        case 13:
            if (cleared_) {
                const int first = number(1, virtual_platform.size.rows);
                note("window from " + std::to_string(first));
                console.set_window(first);
            }
            break;
        case 14:
            note("no window");
            console.clear_window();
            break;
        case 15:
            note("begin display");
            if (depth_++ == 0)
                display_first_ = console.place().row;
            console.begin_display();
            break;
        case 16:
            if (depth_ > 0) {
                note("end display");
                --depth_;
                console.end_display(number(0, 4) != 0);
            }
            break;
        default:
            if (number(0, 1) == 0) {
                const bool visible = number(0, 1) != 0;
                note(visible ? "show cursor" : "hide cursor");
                console.show_cursor(visible);
            } else if (number(0, 2) == 0) {
                change_window();
            } else if (number(0, 2) == 0) {
                stop_and_resume();
            } else {
                flush_to_slow_terminal();
            }
            break;
        }
        take_output();
    }

    void change_window()
    {
        flush();
        const int rows_before = virtual_platform.size.rows;
        resize();
        // Where a terminal leaves its cursor when the rows below it go is its own affair.
        if (!cleared_)
            virtual_platform.size.rows = std::max(virtual_platform.size.rows, rows_before);
        note("resize to " + testing::PrintToString(virtual_platform.size.columns) + "x" +
             std::to_string(virtual_platform.size.rows));
        terminal_->resize(emulated(virtual_platform.size));
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
        note("stop and resume");
        terminal_->feed("\033[0m\033[?25h\033[99B\r\n$ fg\r\n");
        if (!cleared_) {
            trusted_from_ = floor_ = display_first_;
            origin_ = scrolled_out() + terminal_->cursor_row() - display_first_;
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
        note("flush to a terminal that takes " + std::to_string(virtual_platform.output_room));
        console.flush_without_waiting();
        virtual_platform.output_room = std::string::npos;
        is_behind_ = true;
    }

    void flush()
    {
        note("flush");
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

    bool is_right()
    {
        bool right = true;
        for (int row = std::max(console.first_row(), trusted_from_); row <= console.last_row();
             ++row) {
            const int at = terminal_row(row);
            if (at < 1 || (cleared_ && at > terminal_->size().rows))
                continue;
            const std::vector<EmulatedCell> shown =
                at <= terminal_->size().rows ? terminal_->cells(at) : std::vector<EmulatedCell>{};
            if (shown == expected(row))
                continue;
            right = false;
            note("row " + std::to_string(row) + " of the model: " + text_of(expected(row)));
            note("row " + std::to_string(at) + " of the terminal: " + text_of(shown));
        }
        return right && cursor_is_right() && older_lines_are_right() && scrollback_is_right();
    }

    bool cursor_is_right()
    {
        if (terminal_->cursor_visible() != console.cursor_visible()) {
            note("the cursor's visibility is wrong");
            return false;
        }
        // Rows come into being when something is printed there.
        const int model_row = std::min(console.place().row, console.last_row());
        const int row = std::min(terminal_row(model_row), terminal_->size().rows);
        const int column = std::clamp(console.place().column, 1, terminal_->size().columns);
        if (!console.cursor_visible() || row < 1 || model_row < trusted_from_ ||
            model_row < console.first_row() ||
            (terminal_->cursor_row() == row && terminal_->cursor_column() == column))
            return true;
        note("cursor at " + std::to_string(terminal_->cursor_row()) + ", " +
             std::to_string(terminal_->cursor_column()) + " instead of " + std::to_string(row) +
             ", " + std::to_string(column));
        return false;
    }

    /// What scrolled out of the terminal has the form that the model kept.
    bool scrollback_is_right()
    {
        const int last = undisturbed_ && !cleared_ ? scrolled_out() - origin_ : 0;
        for (int row = console.first_row(); row <= last; ++row) {
            std::string text;
            for (const EmulatedCell& cell : expected(row)) {
                if (cell.character != 0)
                    append_utf8(text, cell.character);
            }
            const std::string& kept =
                terminal_->scrollback()[static_cast<std::size_t>(origin_ + row) - 1];
            if (kept == text)
                continue;
            note("row " + std::to_string(row) + " scrolled out as: " + kept + "\nnot as: " + text);
            return false;
        }
        return true;
    }

    bool older_lines_are_right()
    {
        const std::vector<std::string>& scrollback = terminal_->scrollback();
        for (int line = 1; line <= older_lines_; ++line) {
            const int at = line - scrolled_out();
            const std::string shown =
                at < 1 ? scrollback[static_cast<std::size_t>(line) - 1] : terminal_->row(at);
            if (shown != numbered_line(line)) {
                note("older line " + std::to_string(line) + " reads " + shown);
                return false;
            }
        }
        return true;
    }

    static std::string text_of(const std::vector<EmulatedCell>& cells)
    {
        std::string text;
        for (const EmulatedCell& cell : cells) {
            if (cell.character == 0)
                text += '<';
            else
                append_utf8(text, cell.character);
            if (cell.character != U' ')
                text += std::string{"("} + std::to_string(cell.color) + ")";
        }
        return text;
    }

    std::function<int(int, int)> number_;
    platform::WindowSize terminal_size_{};
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
