#include "frame/live_display.h"
#include "frame/program.h"
#include "frame/terminal/keys.h"
#include "tests/support/trial.h"
#include "tests/support/virtual_time.h"

#include <algorithm>
#include <optional>

namespace
{

struct Counter {
    int value = 0;
};

/// A display whose device answers in `answer_us`; counts what it reads and draws.
struct Display {
    LiveDisplay options;
    std::int64_t answer_us = 1000;
    int readings = 0;
    int drawings = 0;
    int shown = 0;
    int nothing_new_until = 0; ///< readings that bring nothing

    void run()
    {
        console.start();
        start_keys();
        program = {};
        Field field;
        run_live_display<Counter>(
            options,
            [&](LiveFields& fields) {
                fields.place_rates(fine_rates_in_header);
                field = place_field("  Value: ", 10);
            },
            [&](Counter& counter) -> Reading {
                EXPECT_EQ(counter.value, 0) << "every reading starts from zero";
                virtual_time::advance_us(answer_us);
                counter.value = ++readings;
                return readings <= nothing_new_until ? Reading::nothing_new() : Reading{Failure{}};
            },
            [&](const Counter& counter) {
                ++drawings;
                shown = counter.value;
                field.show(Color::value, counter.value, {});
            });
    }
};

TEST(LiveDisplay, DrawsAtMostEvery10MillisecondsButShowsTheLatest)
{
    Trial trial;
    trial.type(950, "\033"); // it takes 50 ms to be sure that Esc stands alone
    Display display{.options = {.title = "Test", .continuous = true}, .answer_us = 100};
    display.run();
    EXPECT_EQ(display.readings, 10'000);
    EXPECT_EQ(display.shown, display.readings);
    EXPECT_GE(display.drawings, 32 + 90);
    EXPECT_LE(display.drawings, 32 + 101);
    EXPECT_EQ(trial.screen(), "Test, press {W}Esc{.} to quit: Polling rate:{W}10000.00{.}cycles/s, "
                              "Mean response time:   {W}0.10{.} ms  Value: {W}10000{.}\n");
}

TEST(LiveDisplay, NeverWaitsForTheTerminal)
{
    Trial trial;
    trial.type(450, "\033");
    virtual_platform.output_room = 50; // from then on the terminal takes nothing
    Display display{.options = {.title = "Test", .continuous = true}, .answer_us = 1000};
    display.run();
    EXPECT_EQ(display.readings, 500);
    EXPECT_LT(virtual_platform.writes, 30U);
    EXPECT_THAT(trial.screen(), HasSubstr("Value: {W}500{.}")) << "the end is shown";
}

TEST(LiveDisplay, ASingleReadingWaitsForWhatIsNewUntilEsc)
{
    const struct {
        const char* what;
        bool attended; ///< somebody at a terminal presses Esc, before and after 10 ms
        int period_ms;
        int nothing_new_until; ///< readings
        int readings;
        const char* screen;
    } cases[] = {
        {"comes before Esc", true, 0, 50, 51, "Test:   Value: {W}51{.}\n"},
        {"at once, whatever was typed", true, 0, 0, 1, "Test:   Value: {W}1{.}\n"},
        {"comes after Esc", true, 0, 500, 60, "Test:   Value:\n"},
        {"comes to a pipe", false, 0, 50, 51, "Test:   Value: {W}51{.}\n"},
        {"never comes to a pipe", false, 0, 1'000'000, 10'000, "Test:   Value:\n"},
        {"at its time", false, 1000, 0, 1, "Test:   Value: {W}1{.}\n"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.what);
        Trial trial;
        if (c.attended) {
            trial.type(0, "\033\033y");
            trial.type(10, "\033");
        } else {
            trial.pipe_in("yn");
        }
        Display display{
            .options = {.title = "Test", .key_first = c.period_ms == 0, .period_ms = c.period_ms},
            .nothing_new_until = c.nothing_new_until};
        display.run();
        EXPECT_EQ(display.readings, c.readings);
        EXPECT_LE(display.drawings, 1);
        EXPECT_EQ(trial.screen(), c.screen);
        std::string left;
        while (const std::optional<char> answer = c.attended ? std::nullopt : read_answer())
            left += *answer;
        EXPECT_EQ(left, c.attended ? "" : "yn") << "for the questions to come";
    }
}

TEST(LiveDisplay, HandsKeysAsTypedToTheCommand)
{
    Trial trial;
    trial.type(5, "hn");
    trial.type(8, "\033[A");
    trial.type(20, "x");
    std::vector<int> keys;
    Display display{.options = {.title = "Test", .continuous = true}};
    display.options.on_key = [&](int key) -> Failure {
        keys.push_back(key);
        return key == 'x' ? Failure{"COM_KOV_CTRL_SetEnable"} : Failure{};
    };
    display.run();
    EXPECT_EQ(keys, (std::vector<int>{'h', 'n', 0x148, 'x'}));
    EXPECT_THAT(trial.screen(), HasSubstr("Error at COM_KOV_CTRL_SetEnable: "));
}

TEST(LiveDisplay, RowsThatAreTooWideGoOnInTheNextOne)
{
    const struct {
        int columns;
        const char* switches;
        const char* screen;
    } cases[] = {
        {80, "-hk",
         "Housekeeping of heat-controller:\n"
         "  Voltages: +3V3: {W}3.300V{.}     +5V0: {W}5.000V{.}     +24V: {W}24.000V{.}\n"
         "    Temperatures: CPU: {W}+30.0\u00B0C{.}    PSU: {W}+32.0\u00B0C{.}\n"},
        {80, "-sf",
         "Fan state: {W}0Fh{.}={W}0000 1111b{.},   Fan OK: {G}OK{.}    Switch Fan current:  "
         "{G}on{.}\n"
         "    last:  {G}on{.}   Fan enabled: {G}yes{.}\n"},
        {40, "-si", // a label with its value is wider than the window
         "Interlock state:\n"
         "  Heat controller: Interlock#1\n"
         "    current: {G}OK{.}    last: {G}OK{.}\n"
         "    Interlock#2 current: {G}OK{.}\n"
         "    last: {G}OK{.}\n"
         "  Controller: Interlock front\n"
         "    current: {G}OK{.}    last: {G}OK{.}\n"
         "    Interlock rear current: {G}OK{.}\n"
         "    last: {G}OK{.}\n"
         "  Resulting values: HTCTR#1: {G}OK{.}\n"
         "    HTCTR#2: {G}OK{.}      front: {G}OK{.}\n"
         "    rear: {G}OK{.}\n"},
        {40, "-S",
         "Overall state:\n"
         "    {W}0001h{.} = {G}Stand-by{.}\n"
         "    Polling rate: {W}100.00{.} cycles/s\n"
         "    Mean response time:  {W}10.0ms{.}\n"},
    };
    for (const auto& c : cases) {
        Trial trial{"latency 10"};
        virtual_platform.size = {.columns = c.columns, .rows = 50};
        trial.type(75, "\033");
        trial.run(std::string{"3 -q "} + c.switches + " -T");
        EXPECT_EQ(trial.display(), c.screen);
    }
}

TEST(LiveDisplay, IsLaidOutAgainWhenTheWindowChanges)
{
    const Trial trial;
    virtual_platform.size = {.columns = 40, .rows = 20};
    console.start();
    console.print("above\n");
    console.begin_display();
    const Field first = place_field("A first label: ", 9, 1);
    const Field second = place_field("and a second one: ", 9);
    console.print("\r\nlast row");
    const Place last = console.place();
    const auto screen_in = [&](int columns) {
        virtual_platform.window_events = {
            {0, platform::WindowChange::resized, {.columns = columns, .rows = 20}}};
        first.show(Color::value, columns, {.decimals = 1});
        second.show(Color::value, 1e8 * columns, {.decimals = 4});
        console.flush();
        return trial.screen();
    };
    EXPECT_EQ(screen_in(40), "above\nA first label: {W}40.0{.}\n"
                             "    and a second one: {W}4.000e+09{.}\nlast row\n");
    EXPECT_EQ(screen_in(100), "above\nA first label: {W}100.0{.}     and a second one: "
                              "{W}1.000e+10{.}\nlast row\n");
    EXPECT_EQ(screen_in(20), "above\nA first\nlabel: {W}20.0{.}\nand a second\n"
                             "one: {W}2.000e+09{.}\nlast row\n");
    console.move_to(last);
    console.end_display();
    console.print("\r\nbelow\n");
    EXPECT_THAT(trial.screen(), EndsWith("last row\nbelow\n"));
}

TEST(LiveDisplay, TellsHowToQuitAtOnceInAPipe)
{
    Trial trial;
    virtual_platform.output_is_terminal = false;
    trial.type(5, "k");
    trial.type(8, "\033");
    Display display{.options = {.title = "Test", .continuous = true}};
    display.options.on_key = [&](int) -> Failure {
        EXPECT_EQ(trial.output(), "Test, press Esc to quit:");
        return {};
    };
    display.run();
    EXPECT_THAT(trial.output(),
                StartsWith("Test, press Esc to quit: Polling rate:1000.00 cycles/s"));
    EXPECT_EQ(std::ranges::count(trial.output(), '\n'), 1);
}

} // namespace
