#include "frame/live_display.h"
#include "frame/program.h"
#include "frame/terminal/keys.h"
#include "tests/support/trial.h"
#include "tests/support/virtual_time.h"

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
        Place field;
        run_live_display<Counter>(
            options,
            [&](LiveFields& fields) {
                fields.place_rates(fine_rates_in_header);
                field = place_field("  Value: ");
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
                console.print_at(field, Color::value, "%d", counter.value);
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

} // namespace
