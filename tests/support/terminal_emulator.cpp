#include "tests/support/terminal_emulator.h"

#include "frame/terminal/characters.h"

namespace
{

/// The terminal's order is blue, green, red from the highest bit on.
int console_color(int index)
{
    return (index & 8) | (index & 1) << 2 | (index & 2) | (index & 4) >> 2;
}

int color_of(const VTermScreenCell& cell, bool of_windows)
{
    const auto& attributes = cell.attrs;
    if (!VTERM_COLOR_IS_DEFAULT_BG(&cell.bg) || attributes.underline != 0 ||
        attributes.italic != 0 || attributes.blink != 0 || attributes.reverse != 0 ||
        attributes.strike != 0)
        return -1;
    if (VTERM_COLOR_IS_DEFAULT_FG(&cell.fg))
        return attributes.bold != 0 ? 15 : 7;
    int index = cell.fg.indexed.idx;
    if (!VTERM_COLOR_IS_INDEXED(&cell.fg) || index > 15)
        return -1;
    if (of_windows)
        return attributes.bold != 0 ? -1 : console_color(index);
    constexpr int white = 7; // the terminal's own white differs from its default foreground
    if ((index & 7) == white)
        return -1;
    constexpr int light = 8, light_green = 10, yellow = 3, cyan = 6;
    if (attributes.bold != 0 && (index == yellow || index == cyan))
        index += light;
    else if ((attributes.bold != 0) != (index > light && index != light_green))
        return -1; // what warns is bold, nothing else is
    return console_color(index);
}

EmulatedCell cell_from(const VTermScreenCell& cell, bool of_windows)
{
    constexpr std::uint32_t right_half = 0xFFFF'FFFF;
    if (cell.chars[0] == right_half)
        return {.character = 0, .color = color_of(cell, of_windows)};
    const bool blank = cell.chars[0] == 0 || cell.chars[0] == ' ';
    const int color = color_of(cell, of_windows);
    return {.character = blank ? U' ' : static_cast<char32_t>(cell.chars[0]),
            .color = blank && color >= 0 ? 7 : color};
}

void cut_trailing_blanks(std::vector<EmulatedCell>& cells)
{
    while (!cells.empty() && cells.back() == EmulatedCell{})
        cells.pop_back();
}

} // namespace

std::string text_of(const std::vector<EmulatedCell>& cells, bool marked)
{
    constexpr std::string_view marks = "?0123456.KBGCRMYW";
    std::string text;
    int color = 7;
    const auto change_to = [&](int next) {
        if (marked && next != color)
            text += std::string{"{"} + marks[static_cast<std::size_t>(next) + 1] + '}';
        color = next;
    };
    for (const EmulatedCell& cell : cells) {
        if (cell.character == 0)
            continue;
        if (cell != EmulatedCell{})
            change_to(cell.color);
        append_utf8(text, cell.character);
    }
    change_to(7);
    return text;
}

TerminalEmulator::TerminalEmulator(TerminalSize size)
    : terminal_{vterm_new(size.rows, size.columns)},
      screen_{vterm_obtain_screen(terminal_.get())},
      size_{size}
{
    static const VTermScreenCallbacks callbacks = {
        .settermprop =
            [](VTermProp property, VTermValue* value, void* user) {
                auto& self = *static_cast<TerminalEmulator*>(user);
                if (property == VTERM_PROP_CURSORVISIBLE) {
                    self.cursor_visible_ = value->boolean != 0;
                    self.cursor_hidings_ += value->boolean == 0 ? 1 : 0;
                }
                if (property == VTERM_PROP_ALTSCREEN)
                    self.used_alternate_screen_ |= value->boolean != 0;
                return 1;
            },
        .sb_pushline =
            [](int columns, const VTermScreenCell* pushed, void* user) {
                std::vector<EmulatedCell> cells;
                for (int column = 0; column < columns; ++column)
                    cells.push_back(cell_from(pushed[column], false));
                cut_trailing_blanks(cells);
                static_cast<TerminalEmulator*>(user)->scrollback_.push_back(text_of(cells, false));
                return 1;
            },
    };
    vterm_set_utf8(terminal_.get(), 1);
    vterm_screen_enable_altscreen(screen_, 1);
    vterm_screen_reset(screen_, 1);
    vterm_screen_set_callbacks(screen_, &callbacks, this);
}

void TerminalEmulator::feed(std::string_view bytes)
{
    vterm_input_write(terminal_.get(), bytes.data(), bytes.size());
}

void TerminalEmulator::resize(TerminalSize size)
{
    vterm_set_size(terminal_.get(), size.rows, size.columns);
    size_ = size;
}

std::vector<EmulatedCell> TerminalEmulator::cells(int row) const
{
    std::vector<EmulatedCell> cells;
    for (int column = 0; column < size_.columns;) {
        VTermScreenCell cell = {};
        vterm_screen_get_cell(screen_, {.row = row - 1, .col = column}, &cell);
        cells.push_back(cell_from(cell, shows_windows_console_));
        if (cells.back().character == 0)
            cells.back() = {}; // half a wide character that was overwritten
        if (cell.width == 2)
            cells.push_back({.character = 0, .color = cells.back().color});
        column += cell.width == 2 ? 2 : 1;
    }
    cut_trailing_blanks(cells);
    return cells;
}

std::string TerminalEmulator::screen() const
{
    std::string text;
    for (int number = 1; number <= size_.rows; ++number)
        text += row(number) + '\n';
    text.resize(text.find_last_not_of('\n') + 1);
    return text.empty() ? text : text + '\n';
}

int TerminalEmulator::row_of(std::string_view text) const
{
    for (int number = 1; number <= size_.rows; ++number) {
        if (row(number).find(text) != std::string::npos)
            return number;
    }
    return 0;
}

EmulatedCursor TerminalEmulator::cursor() const
{
    VTermPos position = {};
    vterm_state_get_cursorpos(vterm_obtain_state(terminal_.get()), &position);
    return {position.row + 1, position.col + 1};
}

bool TerminalEmulator::pen_is_neutral() const
{
    VTermState* state = vterm_obtain_state(terminal_.get());
    for (const VTermAttr attribute : {VTERM_ATTR_BOLD, VTERM_ATTR_UNDERLINE, VTERM_ATTR_ITALIC,
                                      VTERM_ATTR_BLINK, VTERM_ATTR_REVERSE, VTERM_ATTR_STRIKE}) {
        VTermValue value = {};
        vterm_state_get_penattr(state, attribute, &value);
        if (value.number != 0)
            return false;
    }
    VTermValue foreground = {};
    VTermValue background = {};
    vterm_state_get_penattr(state, VTERM_ATTR_FOREGROUND, &foreground);
    vterm_state_get_penattr(state, VTERM_ATTR_BACKGROUND, &background);
    return VTERM_COLOR_IS_DEFAULT_FG(&foreground.color) &&
           VTERM_COLOR_IS_DEFAULT_BG(&background.color);
}
