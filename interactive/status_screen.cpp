#include "interactive/status_screen.h"

#include "frame/device_call.h"
#include "frame/platform/platform.h"
#include "frame/program.h"
#include "frame/terminal/characters.h"
#include "frame/terminal/keys.h"
#include "instrument/device_types.h"
#include "interactive/drawing.h"
#include "interactive/layout.h"
#include "interactive/screen_readings.h"
#include "interactive/screen_reports.h"

#include <array>

namespace
{

/// Tries a call up to so many times, each with a purge hold of its own; the last failure is
/// reported in the message area.
template <class Try>
bool succeeds_on_screen(int tries, Try try_once)
{
    Failure failed;
    do {
        set_purge_hold();
        failed = try_once();
    } while (failed && --tries > 0);
    if (failed)
        report_on_screen_and_purge(failed);
    return !failed;
}

template <class... Arguments>
bool call_on_screen(Arguments... arguments)
{
    return succeeds_on_screen(1, [&] { return attempt(arguments...); });
}

template <class... Arguments>
bool call_on_screen_twice(Arguments... arguments)
{
    return succeeds_on_screen(2, [&] { return attempt(arguments...); });
}

/// A text, cut before it would reach the next column that is in use.
void print_cut(const std::string& text, int next_column)
{
    const int room = next_column - console.place().column - 1;
    std::string_view rest = text;
    std::string cut;
    for (int columns = 0; !rest.empty();) {
        const char32_t character = take_character(rest);
        columns += character_width(shown_character(character));
        if (columns > room)
            break;
        append_utf8(cut, character);
    }
    console.print(Color::value, "%s", cut.c_str());
}

/// Rows 5 to 7: the controller's identification. What cannot be read stays empty.
void draw_identification()
{
    const auto label = [](int row, int column, const char* text) {
        console.move_to(console.screen_place(row, column));
        console.print("%s", text);
    };
    constexpr int left = 9;
    constexpr int middle = 45;
    constexpr int right = 90;

    label(5, 1, "Device: ");
    ProductIdText identification;
    if (call_on_screen(LIB(GetProductID), &identification))
        print_cut(identification.text(), middle);
    label(5, middle, "Product number: ");
    std::int32_t number = 0;
    if (call_on_screen(LIB(GetProductNo), &number))
        console.print(Color::value, "%d", number);
    label(5, right, "Product manufacturing date: ");
    std::uint16_t year = 0;
    std::uint16_t week = 0;
    if (call_on_screen(LIB(GetManufDate), &year, &week))
        console.print(Color::value, "CW%d %d", week, year); // without the zero that -pm shows

    label(6, left, "Device type: ");
    std::uint16_t type = 0;
    if (call_on_screen(LIB(GetDevType), &type)) {
        console.print(Color::value, "%04Xh", type);
        if (type == controller_device_type) {
            console.print(" = ");
            console.print(Color::value, "%s", controller_type_name);
        }
    }
    label(6, middle, "Hardware type: ");
    std::uint32_t hardware_type = 0;
    if (call_on_screen(LIB(GetHwType), &hardware_type))
        console.print(Color::value, "%08Xh", hardware_type);

    label(7, left, "Hardware version: ");
    std::uint16_t version = 0;
    if (call_on_screen(LIB(GetHwVersion), &version))
        console.print(Color::value, "%s", version_text(version).c_str());
    label(7, middle, "Firmware version: ");
    if (call_on_screen(LIB(GetFwVersion), &version))
        console.print(Color::value, "%s", version_text(version).c_str());
    label(7, right, "Firmware date: ");
    FirmwareDateText date;
    if (call_on_screen(LIB(GetFwDate), &date))
        console.print(Color::value, "%s", date.text().c_str());
}

/// False, with a message, when the window cannot hold the screen.
bool is_large_enough(platform::WindowSize size)
{
    if (size.columns >= screen_columns && size.rows >= screen_rows)
        return true;
    console.move_to(console.screen_place(3, 1));
    console.print(Color::bad,
                  "In interactive mode, the utility requires a window with a width of at least %d "
                  "and a height of at least %d characters.\r\nAdjust the window size and restart "
                  "the utility.\r\n\r\n",
                  screen_columns, screen_rows);
    console.print(Color::bad, "This window has a width of %d and a height of %d characters.",
                  size.columns, size.rows);
    console.print("\r\n");
    return false;
}

bool read_screen_presence(ModulePresence& presence)
{
    progress("\r\nGetting module-presence flags:\r\n"); // below the firmware date
    if (!succeeds_on_screen(2, [&] { return attempt_presence(presence); }))
        return false;
    if (presence.valid == 0) {
        console.end_line();
        console.print(presence_flags_invalid);
        console.print("\r\n");
    }
    return presence.valid != 0;
}

/// The echo of the last key, blanked after a while.
class KeyEcho
{
public:
    explicit KeyEcho(Place place) : place_(place) {}

    void show(int key, std::int64_t now_ms)
    {
        shown_ms_ = now_ms;
        is_shown_ = true;
        if (key >= 33 && key <= 255)
            console.print_at(place_, Color::label, "%c  ", key);
        else
            console.print_at(place_, Color::label, "%3u", static_cast<unsigned>(key));
    }

    void blank_when_old(std::int64_t now_ms)
    {
        constexpr std::int64_t visible_ms = 250;
        if (!is_shown_ || now_ms - shown_ms_ < visible_ms)
            return;
        is_shown_ = false;
        console.print_at(place_, Color::label, "   ");
    }

private:
    Place place_;
    std::int64_t shown_ms_ = 0;
    bool is_shown_ = false;
};

/// A turning bar that shows that something goes on.
struct Spinner {
    Place place;
    unsigned divider; ///< turns once in so many steps
    unsigned steps = 0;

    void step()
    {
        constexpr std::array<const char*, 4> bars = {"-", "/", "|", "\\"};
        if (++steps % divider != 0)
            return;
        const unsigned turn = steps / divider;
        console.print_at(place, Color::label, "%s", bars[turn - 1]);
        if (turn == bars.size())
            steps = 0;
    }
};

/// Reads and shows until Esc.
void run_cycles(const ScreenLayout& layout, const ModulePresence& presence, InterlockMasks masks)
{
    constexpr unsigned spinner_divider = 8;
    ScreenReadings readings{presence};
    readings.cycles.start_ms = platform::tick_ms();
    Spinner spinner{.place = layout.port.spinner, .divider = spinner_divider};
    KeyEcho key_echo{layout.port.key};
    DrawPacer pacer;
    for (;;) {
        if (key_waiting()) {
            const int key = read_key();
            if (platform::stop_signal() != 0)
                break; // nobody pressed anything
            key_echo.show(key, platform::tick_ms());
            if (folded(key) == key::escape)
                break;
        }
        spinner.step();
        readings.read_cycle([&] { draw_values(layout, readings, presence, masks); });
        const std::int64_t now = platform::tick_ms();
        key_echo.blank_when_old(now);
        if (pacer.is_due(now)) {
            draw_values(layout, readings, presence, masks);
            fit_screen_reports();
            console.flush_without_waiting();
        }
    }
    draw_values(layout, readings, presence, masks);
    fit_screen_reports();
}

/// The screen below its title, in a window of that size when it was entered.
void run_screen(platform::WindowSize size)
{
    start_screen_reports();
    ScreenLayout layout;
    layout.port = draw_port_line();
    draw_identification();
    ModulePresence presence;
    if (!read_screen_presence(presence))
        return;
    draw_frame(presence, size.columns, layout);
    InterlockMasks masks;
    if (!call_on_screen_twice(LIB(GetHVsupplyInterlockEnable), &masks.hv_supply) ||
        !call_on_screen_twice(LIB(GetHeatCtrlInterlockEnable), &masks.heat_controller))
        return;
    draw_quit_prompt();
    run_cycles(layout, presence, masks);
}

} // namespace

void run_status_screen()
{
    if (!platform::output_is_terminal()) {
        console.print(Color::warning, "The interactive mode needs a terminal and is left out.");
        console.print("\r\n");
        return;
    }
    console.clear_screen();
    const platform::WindowSize size = console.size();
    draw_title();
    if (is_large_enough(size)) {
        const DisplayScope scope;
        run_screen(size);
    }
    console.leave_screen();
}

void show_status_screen(const Given&)
{
    run_status_screen();
}
