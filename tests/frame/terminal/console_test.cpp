#include "frame/program.h"
#include "frame/terminal/console.h"
#include "tests/support/trial.h"

namespace
{

/// A console on a terminal of that size, or on something else.
struct ConsoleTrial : Trial {
    explicit ConsoleTrial(platform::WindowSize size = {.columns = 160, .rows = 150},
                          bool terminal = true)
    {
        virtual_platform.size = size;
        virtual_platform.output_is_terminal = terminal;
        console.start();
    }
};

TEST(Console, CharactersOfBothEncodings)
{
    const ConsoleTrial trial;
    console.write("\xF8"
                  "C \xC2\xB0 \x1B[2J \xC2\x9B \x7F \xE2\x82\xAC \xC0\xAF \xE4\xB8\xAD! "
                  "\xE2\x80\xAE"
                  "e\xCC\x81");
    EXPECT_EQ(trial.screen(),
              "\u00B0C \u00B0 \u2190[2J \u00A2 \u2302 \u20AC \u2514\u00BB \u4E2D! \uFFFDe\uFFFD\n");
    console.flush();
    EXPECT_THAT(trial.output(), Not(HasSubstr("\x1B[2J")));
}

TEST(Console, ControlCharactersThatAct)
{
    const ConsoleTrial trial;
    console.print("one\ttwo\r\nthree\rT\nab\b\bA\a\n");
    EXPECT_EQ(trial.screen(), "one     two\nThree\nAb\n");
    EXPECT_THAT(trial.output(), HasSubstr("\a"));
    EXPECT_EQ(console.place(), (Place{4, 1}));
}

TEST(Console, RunningTextWrapsAndRowsOfDisplaysAreFolded)
{
    const ConsoleTrial trial{{.columns = 10, .rows = 5}};
    console.print("0123456789abc\n0123456789\n012345678\xE4\xB8\xAD\n");
    EXPECT_EQ(console.place().row, 6) << "a full line is followed by no empty one";
    console.begin_display();
    console.print("0123456789abc");
    const Place end = console.place();
    EXPECT_EQ(end, (Place{6, 14}));
    console.flush();
    EXPECT_EQ(trial.screen(), "0123456789\nabc\n0123456789\n012345678\n\u4E2D\n0123456789\nabc\n");
    virtual_platform.window_events = {
        {0, platform::WindowChange::resized, {.columns = 20, .rows = 5}}};
    console.flush();
    EXPECT_THAT(trial.output(), EndsWith("0123456789abc")) << "a wider window shows it in one row";
}

TEST(Console, SendsOnlyWhatDiffers)
{
    const ConsoleTrial trial;
    console.begin_display();
    console.print("Voltage: ");
    const Place field = console.place();
    const auto show = [&](const char* text) {
        const std::size_t before = trial.output().size();
        console.print_at(field, Color::value, "%s", text);
        console.flush();
        return trial.output().substr(before);
    };
    (void)show("24.000V");
    EXPECT_EQ(show("24.000V"), "");
    EXPECT_EQ(show("24.001V"), "\b\b1");
    EXPECT_EQ(show("25.002V"), "\033[11G5.002") << "a short gap is written over";
    const std::size_t writes = virtual_platform.writes;
    console.flush();
    EXPECT_EQ(virtual_platform.writes, writes);
}

TEST(Console, PlainOutputHasEachLineOnceInItsFinalForm)
{
    const ConsoleTrial trial{{.columns = 160, .rows = 150}, false};
    console.print("first\n");
    EXPECT_EQ(trial.output(), "first\n");
    for (int number = 1; number <= 3; ++number) {
        console.print("Processing #%d", number);
        console.move_to_column(1);
    }
    console.clear_line();
    console.print("done\n");
    EXPECT_EQ(trial.output(), "first\ndone\n");
    console.begin_display();
    console.print("Value: ");
    const Place field = console.place();
    console.print("\r\nend\r\n");
    console.print_at(field, Color::value, "1");
    console.flush();
    EXPECT_EQ(trial.output(), "first\ndone\n") << "a display may still change its lines";
    console.print_at(field, Color::value, "2");
    console.move_to({field.row + 2, 1});
    console.end_display();
    EXPECT_EQ(trial.output(), "first\ndone\nValue: 2\nend\n");
    console.print_at({1, 1}, Color::bad, "too late"); // has left already
    console.move_to({5, 1});
    console.print("Sure? ");
    console.flush_for_wait();
    EXPECT_THAT(trial.output(), EndsWith("end\nSure?")) << "a question comes before its answer";
    console.print("y\nlast");
    console.finish();
    EXPECT_EQ(trial.output(), "first\ndone\nValue: 2\nend\nSure? y\nlast\n");
}

TEST(Console, ALongDisplayInAPipeDoesNotPileUp)
{
    const ConsoleTrial trial{{.columns = 160, .rows = 150}, false};
    console.begin_display();
    for (int line = 0; line < 1000; ++line) {
        console.print("line %d\n", line);
        console.flush();
    }
    EXPECT_THAT(trial.output(), StartsWith("line 0\nline 1\n"));
    EXPECT_LT(console.last_row() - console.first_row(), 300);
    console.end_display();
    EXPECT_THAT(trial.output(), EndsWith("line 999\n"));
}

TEST(Console, ProgressLinesOfAnyLengthAreToldInDebugModeOnly)
{
    const ConsoleTrial trial;
    program = {};
    progress("unseen %d\n", 1);
    program.debug = true;
    progress("%s:\r\n", std::string(150, 'x').c_str());
    EXPECT_EQ(trial.screen(), std::string(150, 'x') + ":\n");
    program = {};
}

} // namespace
