/// A terminal on libvterm, independent of the program: it gets the bytes that a terminal would get
/// and tells what a user would see.
///
/// Colours are marks in the text: {W} bright white (the bold default), {M} light magenta, {C} light
/// cyan, {G} light green, {Y} yellow, {R} light red, {B} light blue, {K} dark grey, {.} back to
/// grey; {?} is any colour or attribute that the program never sets. Blanks at the end of a row do
/// not count.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>
#include <vterm.h>

struct TerminalSize {
    int columns = 80;
    int rows = 25;
};

/// One character on the screen. The colour is the console's number: 8 + 4 red + 2 green + blue for
/// the bright ones, 7 grey, 15 bright white, -1 none of its 16 colours.
struct EmulatedCell {
    char32_t character = U' '; ///< 0 = the right half of a wide character
    int color = 7;

    bool operator==(const EmulatedCell&) const = default;
};

struct EmulatedCursor {
    int row = 1;
    int column = 1;

    bool operator==(const EmulatedCursor&) const = default;
};

/// The text of such cells, with marks at the colours or without.
[[nodiscard]] std::string text_of(const std::vector<EmulatedCell>& cells, bool marked);

class TerminalEmulator
{
public:
    explicit TerminalEmulator(TerminalSize size);
    TerminalEmulator(const TerminalEmulator&) = delete;
    TerminalEmulator& operator=(const TerminalEmulator&) = delete;

    void feed(std::string_view bytes);
    void resize(TerminalSize size);
    /// What feeds it is a console of Windows, which shows its own sixteen colours, none in bold.
    void expect_windows_console() { shows_windows_console_ = true; }

    [[nodiscard]] TerminalSize size() const { return size_; }
    /// The cells of a row (from 1) without trailing blanks.
    [[nodiscard]] std::vector<EmulatedCell> cells(int row) const;
    [[nodiscard]] std::string row(int row) const { return text_of(cells(row), false); }
    [[nodiscard]] std::string marked_row(int row) const { return text_of(cells(row), true); }
    /// The rows down to the last one that is not blank, a line end behind each.
    [[nodiscard]] std::string screen() const;
    /// What was scrolled out at the top, oldest first.
    [[nodiscard]] const std::vector<std::string>& scrollback() const { return scrollback_; }
    /// The row (from 1) of the first line that holds the text, 0 when there is none.
    [[nodiscard]] int row_of(std::string_view text) const;

    [[nodiscard]] EmulatedCursor cursor() const;
    [[nodiscard]] bool cursor_visible() const { return cursor_visible_; }
    /// How often the cursor was switched off.
    [[nodiscard]] int cursor_hidings() const { return cursor_hidings_; }
    /// True when further text would have the terminal's default looks.
    [[nodiscard]] bool pen_is_neutral() const;
    /// True when the program left the screen for the alternate one.
    [[nodiscard]] bool used_alternate_screen() const { return used_alternate_screen_; }

private:
    struct Free {
        void operator()(VTerm* terminal) const { vterm_free(terminal); }
    };
    std::unique_ptr<VTerm, Free> terminal_;
    VTermScreen* screen_;
    TerminalSize size_;
    std::vector<std::string> scrollback_;
    bool cursor_visible_ = true;
    bool used_alternate_screen_ = false;
    bool shows_windows_console_ = false;
    int cursor_hidings_ = 0;
};
