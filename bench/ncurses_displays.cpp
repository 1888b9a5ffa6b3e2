// The displays as ncurses programs write them: all fields, a refresh and a look at the keyboard in
// every cycle.

#include "bench/displays.h"
#include "bench/library.h"

#include <clocale>
#include <cmath>
#include <cstdio>
#include <curses.h>

namespace bench
{

namespace
{

constexpr int escape_key = 27;

// Colour pairs and attributes of the values, as the program shows them.
constexpr short good_pair = 1, above_pair = 2, below_pair = 3, hot_pair = 4, cold_pair = 5;

chtype bright(short pair)
{
    return static_cast<chtype>(COLOR_PAIR(pair)) | A_BOLD;
}

chtype deviation_attribute(double value, double nominal)
{
    const double deviation = (value / nominal - 1.0) * 100.0;
    if (std::fabs(deviation) <= supply_tolerance_percent)
        return bright(good_pair);
    return bright(deviation > 0.0 ? above_pair : below_pair);
}

chtype range_attribute(double celsius)
{
    return bright(celsius > 40.0 ? hot_pair : celsius < 10.0 ? cold_pair : good_pair);
}

class Screen
{
public:
    Screen()
    {
        std::setlocale(LC_CTYPE, "C.UTF-8"); // for the degree sign
        screen_ = newterm(nullptr, stdout, stdin);
        cbreak();
        noecho();
        curs_set(0);
        nodelay(stdscr, TRUE);
        start_color();
        use_default_colors();
        init_pair(good_pair, COLOR_GREEN, -1);
        init_pair(above_pair, COLOR_MAGENTA, -1);
        init_pair(below_pair, COLOR_CYAN, -1);
        init_pair(hot_pair, COLOR_RED, -1);
        init_pair(cold_pair, COLOR_BLUE, -1);
    }
    ~Screen()
    {
        endwin();
        delscreen(screen_);
        std::setlocale(LC_CTYPE, "C");
    }
    Screen(const Screen&) = delete;
    Screen& operator=(const Screen&) = delete;

private:
    SCREEN* screen_ = nullptr;
};

/// The two rates on the header line, and the loop around a display's values.
template <class Values, class Draw>
void run(int rate_column, Draw draw)
{
    const double start = now_seconds();
    for (double cycles = 1.0;; ++cycles) {
        Values values{};
        if (!read_values(values))
            return;
        const double elapsed = now_seconds() - start;
        attrset(A_BOLD);
        mvprintw(2, rate_column, "%7.2lf", cycles / elapsed);
        mvprintw(2, rate_column + 37, "%6.1lfms", elapsed * 1000.0 / cycles);
        draw(values);
        refresh();
        if (getch() == escape_key)
            return;
    }
}

} // namespace

void show_housekeeping_with_ncurses()
{
    const Screen screen;
    mvprintw(2, 0, "Device housekeeping, press Esc to quit: Polling rate:");
    const int rate_column = getcurx(stdscr);
    mvprintw(2, rate_column + 8, "cycles/s, Mean response time:");
    mvprintw(3, 0, "  Voltages:  24V:          5V0:         3V3:         Temperature CPU:");
    mvprintw(3, 78, "  PSU:");
    run<Housekeeping>(rate_column, [&](const Housekeeping& values) {
        const auto show_voltage = [](int column, double volts, double nominal, int width) {
            attrset(static_cast<int>(deviation_attribute(volts, nominal)));
            mvprintw(3, column, "%*.3lfV", width, volts);
        };
        const auto show_temperature = [](int column, double celsius) {
            attrset(static_cast<int>(range_attribute(celsius)));
            mvprintw(3, column, "%+7.1lf\u00B0C", celsius);
        };
        show_voltage(17, values.voltage_24, 24.0, 7);
        show_voltage(31, values.voltage_5, 5.0, 6);
        show_voltage(44, values.voltage_33, 3.3, 6);
        show_temperature(69, values.temperature_cpu);
        show_temperature(84, values.temperature_psu);
        attrset(A_NORMAL);
        mvprintw(0, rate_column, "    "); // the last key
    });
}

void show_wide_with_ncurses()
{
    constexpr int field_columns = 16;
    const Screen screen;
    const auto row_of = [](int field) { return 3 + field / wide_fields_in_row; };
    const auto column_of = [](int field) { return field % wide_fields_in_row * field_columns; };
    mvprintw(2, 0, "Many values, press Esc to quit: Polling rate:");
    const int rate_column = getcurx(stdscr);
    mvprintw(2, rate_column + 8, "cycles/s, Mean response time:");
    for (int i = 0; i < static_cast<int>(wide_fields); ++i)
        mvprintw(row_of(i), column_of(i), "  %03d: ", i);
    run<Wide>(rate_column, [&](const Wide& wide) {
        for (int i = 0; i < static_cast<int>(wide_fields); ++i) {
            const auto field = static_cast<std::size_t>(i);
            const double value = wide.values[field];
            attrset(static_cast<int>(deviation_attribute(value, wide_nominal(field))));
            mvprintw(row_of(i), column_of(i) + 7, "%8.3lfV", value);
        }
    });
}

} // namespace bench
